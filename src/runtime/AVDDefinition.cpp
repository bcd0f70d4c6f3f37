#include "runtime/AVDDefinition.h"

#include "runtime/AndroidVersions.h"

#include <QDir>
#include <QSaveFile>

#include <stdexcept>
#include <utility>
#include <vector>

namespace quillnest
{

namespace
{
using Lines = std::vector<std::pair<QString, QString>>;

void writeLines(const QString &path, const Lines &lines)
{
    QString text;
    for (const auto &[key, value] : lines)
        text += key + QLatin1Char('=') + value + QLatin1Char('\n');
    QSaveFile file(path);
    const auto bytes = text.toUtf8();
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        throw std::runtime_error((path + QStringLiteral(": ") + file.errorString()).toStdString());
}

Lines deviceLines(const AndroidRuntimePaths &paths)
{
    return {
        {QStringLiteral("avd.ini.encoding"), QStringLiteral("UTF-8")},
        {QStringLiteral("path"), QStringLiteral("%1/%2.avd").arg(*paths.avdHome, paths.avdName)},
        {QStringLiteral("path.rel"), QStringLiteral("avd/%1.avd").arg(paths.avdName)},
        {QStringLiteral("target"), QStringLiteral("android-%1").arg(paths.api)},
    };
}

Lines configLines(const AndroidRuntimePaths &paths, const HostProfile &profile)
{
    const auto fixed
        = [](const char *key, const char *value) { return std::pair(QLatin1String(key), QLatin1String(value)); };
    return {
        {QStringLiteral("AvdId"), paths.avdName},
        {QStringLiteral("avd.ini.displayname"), QStringLiteral("Quillnest ") + AndroidVersions::name(paths.api)},
        fixed("avd.ini.encoding", "UTF-8"),
        fixed("PlayStore.enabled", "false"),
        {QStringLiteral("abi.type"), profile.imageAbi},
        // 6 GiB: room for some forty apps and their data.
        fixed("disk.dataPartition.size", "6442450944"),
        fixed("fastboot.forceColdBoot", "no"),
        fixed("fastboot.forceFastBoot", "yes"),
        fixed("hw.accelerometer", "no"),
        fixed("hw.audioInput", "no"),
        fixed("hw.audioOutput", "yes"),
        fixed("hw.battery", "yes"),
        fixed("hw.camera.back", "none"),
        fixed("hw.camera.front", "none"),
        {QStringLiteral("hw.cpu.arch"), profile.cpuArchitecture},
        fixed("hw.cpu.ncore", "4"),
        fixed("hw.dPad", "no"),
        fixed("hw.gps", "no"),
        fixed("hw.gpu.enabled", "yes"),
        fixed("hw.gpu.mode", "host"),
        fixed("hw.keyboard", "yes"),
        fixed("hw.lcd.density", "420"),
        fixed("hw.lcd.height", "2400"),
        fixed("hw.lcd.width", "1080"),
        fixed("hw.mainKeys", "no"),
        // MiB; the emulator's command line says it again.
        fixed("hw.ramSize", "2048"),
        fixed("hw.sdCard", "no"),
        fixed("hw.sensors.orientation", "no"),
        fixed("hw.sensors.proximity", "no"),
        fixed("hw.trackBall", "no"),
        {QStringLiteral("image.sysdir.1"),
         QStringLiteral("system-images/android-%1/default/%2/").arg(QString::number(paths.api), profile.imageAbi)},
        fixed("tag.display", "Default Android System Image"),
        fixed("tag.id", "default"),
        fixed("vm.heapSize", "256"),
    };
}
} // namespace

void AVDDefinition::write(const AndroidRuntimePaths &paths, const HostProfile &profile)
{
    if (!paths.avdHome)
        return;
    const auto stem = *paths.avdHome + QLatin1Char('/') + paths.avdName;
    const auto folder = stem + QStringLiteral(".avd");
    if (!QDir().mkpath(folder))
        throw std::runtime_error((folder + QStringLiteral(": can't be made")).toStdString());
    writeLines(stem + QStringLiteral(".ini"), deviceLines(paths));
    writeLines(folder + QStringLiteral("/config.ini"), configLines(paths, profile));
}

} // namespace quillnest
