#include "driver/ProgramUnderTest.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTcpSocket>

#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace quillnest::driver
{

namespace
{
constexpr quint16 consolePort = 5556;
}

ProgramUnderTest::ProgramUnderTest(TestDesktop &desktop, Runtime runtime) : m_desktop(desktop)
{
    if (isDeviceRunning())
        TestDesktop::endDevicesLeftBehind();
    waitFor(QStringLiteral("the port %1 to be free").arg(consolePort), 10, [this] { return !isDeviceRunning(); });
    if (runtime == Runtime::none)
        return;
    m_desktop.run(program(QStringLiteral("standin-sdk")), {dataFolder() + QStringLiteral("/Runtime/sdk")});
    const auto written = m_desktop.run(program(QStringLiteral("quillnest-avd")), {QStringLiteral("35")});
    if (!written.contains("Quillnest complete"))
        throw DriverError(QStringLiteral("the managed runtime is not complete"));
}

ProgramUnderTest::~ProgramUnderTest()
{
    kill();
    // The device outlives its program, and may be about to start.
    m_desktop.endAll(QByteArrayLiteral("emulator"));
}

QString ProgramUnderTest::sample(const QString &name)
{
    return QStringLiteral(QUILLNEST_SAMPLES "/%1.apk").arg(name);
}

QString ProgramUnderTest::program(const QString &name)
{
    return QStringLiteral(QUILLNEST_BIN "/%1").arg(name);
}

void ProgramUnderTest::writeTide(const QString &path, const QString &package, const QString &label) const
{
    const auto bytes
        = [](const QString &text) { return QByteArray(reinterpret_cast<const char *>(text.utf16()), 2 * text.size()); };
    const auto tide = sample(QStringLiteral("tide"));
    auto manifest
        = m_desktop.run(QStringLiteral("unzip"), {QStringLiteral("-p"), tide, QStringLiteral("AndroidManifest.xml")});
    const auto exchange = [&](const QString &old, const QString &fresh) {
        // The text with its length before it and the zero behind.
        const auto whole
            = [&](const QString &text) { return QChar(static_cast<char16_t>(text.size())) + text + QChar(u'\0'); };
        if (fresh.size() != old.size() || manifest.count(bytes(whole(old))) != 1)
            throw DriverError(QStringLiteral("%1 can't be put in the place of %2").arg(fresh, old));
        manifest.replace(bytes(whole(old)), bytes(whole(fresh)));
    };
    exchange(QStringLiteral("app.quillnest.samples.tide"), package);
    exchange(QStringLiteral("Tide"), label);

    // "zip" has its own ideas about names, so it gets plain ones.
    const QTemporaryDir work(m_desktop.home() + QStringLiteral("/XXXXXX"));
    const auto apk = work.filePath(QStringLiteral("a.apk"));
    const auto entry = work.filePath(QStringLiteral("AndroidManifest.xml"));
    QFile file(entry);
    if (!file.open(QIODevice::WriteOnly) || file.write(manifest) != manifest.size() || !file.flush())
        throw DriverError(QStringLiteral("a manifest can't be written"));
    QFile::copy(tide, apk);
    m_desktop.run(QStringLiteral("zip"), {QStringLiteral("-q"), QStringLiteral("-j"), apk, entry});
    if (!QFile::rename(apk, path))
        throw DriverError(QStringLiteral("%1 can't be written").arg(path));
}

QString ProgramUnderTest::dataFolder() const
{
    return m_desktop.environment().value(QStringLiteral("XDG_DATA_HOME")) + QStringLiteral("/Quillnest");
}

QString ProgramUnderTest::logFolder() const
{
    return m_desktop.environment().value(QStringLiteral("XDG_STATE_HOME")) + QStringLiteral("/Quillnest/Logs");
}

QString ProgramUnderTest::deviceFolder() const
{
    return dataFolder() + QStringLiteral("/Runtime/avd/Quillnest.avd");
}

QString ProgramUnderTest::deviceSocket() const
{
    return deviceFolder() + QStringLiteral("/standin.sock");
}

void ProgramUnderTest::start(const QStringList &arguments)
{
    m_process = m_desktop.start(program(QStringLiteral("quillnest")), arguments);
    waitForAnswer();
}

void ProgramUnderTest::startThrough(const QString &wrapper, const QStringList &arguments)
{
    m_process = m_desktop.start(wrapper, arguments + QStringList{program(QStringLiteral("quillnest"))});
    waitForAnswer();
}

void ProgramUnderTest::waitForAnswer()
{
    waitFor(QStringLiteral("the program to answer"), 30, [this] {
        if (!isRunning())
            throw DriverError(QStringLiteral("the program ended at start: %1").arg(QString::fromUtf8(output())));
        return !state().isEmpty();
    });
}

bool ProgramUnderTest::isRunning() const
{
    if (!m_process)
        return false;
    m_process->waitForFinished(0);
    return m_process->state() == QProcess::Running;
}

qint64 ProgramUnderTest::processId() const
{
    return m_process ? m_process->processId() : 0;
}

qint64 ProgramUnderTest::memory() const
{
    QFile file(QStringLiteral("/proc/%1/status").arg(processId()));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const auto status = QString::fromLatin1(file.readAll());
    return status.section(QStringLiteral("RssAnon:"), 1).trimmed().section(QLatin1Char(' '), 0, 0).toLongLong() * 1024;
}

QStringList ProgramUnderTest::descriptors() const
{
    QStringList result;
    const QDir folder(QStringLiteral("/proc/%1/fd").arg(processId()));
    for (const auto &name : folder.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)) {
        char target[256];
        const auto size = ::readlink(QFile::encodeName(folder.filePath(name)).constData(), target, sizeof target);
        const auto text = QString::fromLocal8Bit(target, std::max<qsizetype>(size, 0));
        // One that has been closed meanwhile is none.
        if (size > 0 && text != QStringLiteral("anon_inode:[eventfd]"))
            result += text;
    }
    return result;
}

int ProgramUnderTest::threads() const
{
    return static_cast<int>(
        QDir(QStringLiteral("/proc/%1/task").arg(processId())).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size());
}

QStringList ProgramUnderTest::children() const
{
    const auto read = [](const QString &path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    QStringList result;
    const QDir tasks(QStringLiteral("/proc/%1/task").arg(processId()));
    for (const auto &task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const auto list = read(tasks.filePath(task) + QStringLiteral("/children"));
        for (const auto &child : list.split(' ')) {
            const auto line = read(QStringLiteral("/proc/%1/cmdline").arg(QString::fromLatin1(child)));
            const auto words = QString::fromUtf8(line).split(QChar(u'\0'), Qt::SkipEmptyParts);
            if (!child.isEmpty() && !words.value(0).endsWith(QStringLiteral("/emulator")))
                result += words.join(QLatin1Char(' '));
        }
    }
    return result;
}

void ProgramUnderTest::kill()
{
    if (!m_process)
        return;
    m_process->kill();
    m_process->waitForFinished(5000);
    output();
    m_process.reset();
}

int ProgramUnderTest::quit(double seconds)
{
    m_process->terminate();
    return waitForEnd(seconds);
}

int ProgramUnderTest::waitForEnd(double seconds)
{
    if (m_process->state() != QProcess::NotRunning && !m_process->waitForFinished(static_cast<int>(seconds * 1000)))
        throw DriverError(QStringLiteral("the program does not end"));
    output();
    return m_process->exitStatus() == QProcess::NormalExit ? m_process->exitCode() : -1;
}

QByteArray ProgramUnderTest::output()
{
    if (m_process)
        m_output += m_process->readAllStandardOutput() + m_process->readAllStandardError();
    return m_output;
}

void ProgramUnderTest::post(const QString &command) const
{
    ctl({QStringLiteral("post"), command});
}

QByteArray ProgramUnderTest::ctl(const QStringList &arguments) const
{
    return m_desktop.run(program(QStringLiteral("quillnestctl")), arguments);
}

void ProgramUnderTest::setSetting(const QString &key, const QJsonValue &value) const
{
    const auto list = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    ctl({QStringLiteral("settings"), QStringLiteral("set"), key, QString::fromUtf8(list.sliced(1, list.size() - 2))});
}

QJsonObject ProgramUnderTest::state() const
{
    const auto asking = m_desktop.start(program(QStringLiteral("quillnestctl")), {QStringLiteral("state")});
    asking->waitForFinished(15000);
    return QJsonDocument::fromJson(asking->readAllStandardOutput()).object();
}

QJsonObject ProgramUnderTest::window() const
{
    return state().value(QStringLiteral("windows")).toArray().first().toObject();
}

QString ProgramUnderTest::statusMessage() const
{
    return state().value(QStringLiteral("statusMessage")).toString();
}

QString ProgramUnderTest::log() const
{
    QFile file(logFolder() + QStringLiteral("/quillnest.log"));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QString ProgramUnderTest::windowLog(const QString &package) const
{
    QFile file(logFolder() + QStringLiteral("/native-%1.log").arg(package));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

void ProgramUnderTest::waitForState(
    const QString &what, double seconds, const std::function<bool(const QJsonObject &)> &test) const
{
    QJsonObject last;
    try {
        waitFor(what, seconds, [this, &test, &last] {
            last = state();
            return test(last);
        });
    } catch (const DriverError &error) {
        throw DriverError(QStringLiteral("%1\nthe program says: %2")
                              .arg(
                                  QString::fromUtf8(error.what()),
                                  QString::fromUtf8(QJsonDocument(last).toJson(QJsonDocument::Compact))));
    }
}

void ProgramUnderTest::addApps(const QStringList &paths)
{
    for (const auto &path : paths) {
        post(QStringLiteral("add:") + path);
        waitForState(QStringLiteral("%1 to be added").arg(path), 20, [&path](const QJsonObject &report) {
            const auto apps = report.value(QStringLiteral("apps")).toArray();
            return std::any_of(apps.begin(), apps.end(), [&path](const QJsonValue &app) {
                return app[QStringLiteral("sourcePath")].toString() == path;
            });
        });
    }
}

QRectF ProgramUnderTest::waitForTile(const QString &name, double seconds) const
{
    QRectF area;
    waitForState(QStringLiteral("the tile of %1").arg(name), seconds, [&](const QJsonObject &report) {
        for (const auto &tile : report.value(QStringLiteral("tiles")).toArray()) {
            if (tile[QStringLiteral("name")].toString() == name)
                area = rectangle(tile.toObject());
        }
        return !area.isEmpty();
    });
    return area;
}

QJsonObject ProgramUnderTest::waitForPicture(double seconds) const
{
    waitForState(QStringLiteral("a window with a picture"), seconds, [](const QJsonObject &report) {
        const auto window = report.value(QStringLiteral("windows")).toArray().first();
        return window[QStringLiteral("visible")].toBool() && window[QStringLiteral("framesShown")].toInt() > 0;
    });
    return window();
}

QJsonObject ProgramUnderTest::device() const
{
    const auto asking = m_desktop.start(
        program(QStringLiteral("standinctl")), {QStringLiteral("--socket"), deviceSocket(), QStringLiteral("state")});
    asking->waitForFinished(15000);
    return QJsonDocument::fromJson(asking->readAllStandardOutput()).object();
}

void ProgramUnderTest::deviceControl(const QStringList &arguments) const
{
    m_desktop.run(
        program(QStringLiteral("standinctl")), QStringList{QStringLiteral("--socket"), deviceSocket()} + arguments);
}

QImage ProgramUnderTest::deviceScreenshot() const
{
    const auto file = m_desktop.home() + QStringLiteral("/device.png");
    deviceControl({QStringLiteral("screenshot"), file});
    return QImage(file);
}

bool ProgramUnderTest::isDeviceRunning() const
{
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.0.1"), consolePort);
    return socket.waitForConnected(2000);
}

void ProgramUnderTest::endDevice() const
{
    // It goes without an answer.
    const auto end = m_desktop.start(
        program(QStringLiteral("standinctl")), {QStringLiteral("--socket"), deviceSocket(), QStringLiteral("die")});
    end->waitForFinished(5000);
}

void ProgramUnderTest::configureDevice(const QJsonObject &configuration) const
{
    QFile file(deviceFolder() + QStringLiteral("/standin.json"));
    if (!file.open(QIODevice::WriteOnly) || file.write(QJsonDocument(configuration).toJson()) < 0)
        throw DriverError(QStringLiteral("the device can't be configured"));
}

QString ProgramUnderTest::adbPath() const
{
    return dataFolder() + QStringLiteral("/Runtime/sdk/platform-tools/adb");
}

void ProgramUnderTest::replaceAdb(const QString &script) const
{
    const auto real = adbPath() + QStringLiteral(".real");
    // A second name, since the program may be about to start it.
    if (!QFileInfo::exists(real)
        && ::link(QFile::encodeName(adbPath()).constData(), QFile::encodeName(real).constData()) != 0)
        throw DriverError(QStringLiteral("adb can't be replaced"));
    // Renamed into its place, as a shell may be reading the one before.
    const auto fresh = adbPath() + QStringLiteral(".new");
    QFile file(fresh);
    if (!file.open(QIODevice::WriteOnly))
        throw DriverError(QStringLiteral("adb can't be replaced"));
    file.write(QStringLiteral("#!/bin/bash\nadb='%1'\n%2\n").arg(real, script).toUtf8());
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    file.close();
    if (::rename(QFile::encodeName(fresh).constData(), QFile::encodeName(adbPath()).constData()) != 0)
        throw DriverError(QStringLiteral("adb can't be replaced"));
}

void ProgramUnderTest::noteAdbCalls() const
{
    replaceAdb(QStringLiteral("printf '%s %s\\n' \"$EPOCHREALTIME\" \"${*//$'\\n'/ }\" >> '%1'\n"
                              "exec \"$adb\" \"$@\"")
                   .arg(adbPath() + QStringLiteral(".calls")));
}

std::vector<ProgramUnderTest::AdbCall> ProgramUnderTest::adbCalls() const
{
    std::vector<AdbCall> calls;
    QFile file(adbPath() + QStringLiteral(".calls"));
    if (!file.open(QIODevice::ReadOnly))
        return calls;
    for (const auto &line : QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts))
        calls.push_back({line.section(QLatin1Char(' '), 0, 0).toDouble(), line.section(QLatin1Char(' '), 1)});
    return calls;
}

QRect rectangle(const QJsonObject &object)
{
    return {
        object.value(QStringLiteral("x")).toInt(), object.value(QStringLiteral("y")).toInt(),
        object.value(QStringLiteral("width")).toInt(), object.value(QStringLiteral("height")).toInt()};
}

} // namespace quillnest::driver
