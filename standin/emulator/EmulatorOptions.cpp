#include "emulator/EmulatorOptions.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QRegularExpression>

namespace standin
{

using namespace Qt::StringLiterals;

namespace
{

std::optional<QMap<QString, QString>> readIni(const QString &path)
{
    QFile file(path);
    if (!file.open(QFile::ReadOnly))
        return std::nullopt;
    QMap<QString, QString> values;
    for (const QString &line : QString::fromUtf8(file.readAll()).split(u'\n')) {
        if (const auto equals = line.indexOf(u'='); equals > 0)
            values[line.left(equals).trimmed()] = line.mid(equals + 1).trimmed();
    }
    return values;
}

QString avdHome()
{
    const QString chosen = qEnvironmentVariable("ANDROID_AVD_HOME");
    return chosen.isEmpty() ? QDir::homePath() + u"/.android/avd"_s : chosen;
}

QString sdkRoot()
{
    const QString root = qEnvironmentVariable("ANDROID_SDK_ROOT");
    return root.isEmpty() ? qEnvironmentVariable("ANDROID_HOME") : root;
}

} // namespace

bool EmulatorOptions::read(const QStringList &arguments, QString *problem)
{
    return readArguments(arguments, problem) && readAvd(problem);
}

bool EmulatorOptions::readArguments(const QStringList &arguments, QString *problem)
{
    const QStringList withValue
        = {u"-gpu"_s,        u"-memory"_s,         u"-cores"_s,       u"-skin"_s,        u"-accel"_s,
           u"-dns-server"_s, u"-partition-size"_s, u"-camera-back"_s, u"-camera-front"_s};
    const QStringList alone
        = {u"-no-window"_s, u"-no-boot-anim"_s, u"-no-snapshot"_s, u"-no-snapshot-save"_s, u"-no-snapshot-load"_s,
           u"-no-audio"_s,  u"-wipe-data"_s,    u"-verbose"_s,     u"-no-metrics"_s,       u"-read-only"_s};
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString &argument = arguments[i];
        if (argument.startsWith(u'@')) {
            avdName = argument.mid(1);
        } else if (argument == u"-avd") {
            avdName = arguments.value(++i);
        } else if (argument == u"-port") {
            bool ok = false;
            const int port = arguments.value(++i).toInt(&ok);
            if (!ok || port < 1024 || port > 65534 || port % 2 != 0) {
                *problem = u"invalid -port '%1': an even number is wanted"_s.arg(arguments.value(i));
                return false;
            }
            consolePort = static_cast<quint16>(port);
        } else if (withValue.contains(argument)) {
            ++i;
        } else if (!alone.contains(argument)) {
            *problem = u"unknown option: %1"_s.arg(argument);
            return false;
        }
    }
    if (avdName.isEmpty())
        *problem = u"No AVD specified. Use '@foo' or '-avd foo' to launch a virtual device named 'foo'"_s;
    return !avdName.isEmpty();
}

bool EmulatorOptions::readAvd(QString *problem)
{
    const auto pointer = readIni(avdHome() + u'/' + avdName + u".ini"_s);
    if (!pointer) {
        *problem = u"Unknown AVD name [%1], use -list-avds to see valid list. Searched in %2"_s.arg(avdName, avdHome());
        return false;
    }
    avdFolder = pointer->value(u"path"_s);
    if (!QFileInfo(avdFolder).isDir())
        avdFolder = avdHome() + u'/' + avdName + u".avd"_s;
    const auto config = readIni(avdFolder + u"/config.ini"_s);
    if (!config) {
        *problem = u"Cannot read %1/config.ini"_s.arg(avdFolder);
        return false;
    }
    const QString folder = config->value(u"image.sysdir.1"_s);
    static const QRegularExpression form(u"^system-images/android-(\\d+)[^/]*/[^/]+/([^/]+)/?$"_s);
    const auto match = form.match(folder);
    if (!match.hasMatch()) {
        *problem = u"Broken AVD system path: image.sysdir.1 is '%1'"_s.arg(folder);
        return false;
    }
    api = match.captured(1).toInt();
    abi = match.captured(2);
    systemImage = sdkRoot() + u'/' + folder;
    if (!QFileInfo(systemImage + u"/system.img"_s).isFile()) {
        *problem = u"Cannot find AVD system path: no system.img in %1. Is ANDROID_SDK_ROOT right?"_s.arg(systemImage);
        return false;
    }
    return true;
}

} // namespace standin
