#include "runtime/AndroidRuntimeCLI.h"

#include "runtime/AndroidVolume.h"
#include "runtime/AppInstaller.h"
#include "runtime/DeviceTweaks.h"
#include "runtime/EmulatorBoot.h"
#include "runtime/InstallRecords.h"

#include <QFileInfo>

#include <functional>

namespace quillnest
{

namespace
{
/// Holds all that it uses, so that it may go on when the facade has gone.
Task<QString> installOnDevice(
    std::shared_ptr<const AndroidCommands> commands, std::shared_ptr<EmulatorBoot> boot,
    std::shared_ptr<const AppInstaller> installer, QString apkPath)
{
    const auto &platform = commands->platform();
    const auto begin = platform.clock->monotonic();
    auto check = [commands] { return commands->deviceIsBooted(); };
    const bool booted = co_await background(*platform.executor, std::move(check));
    commands->log().write(
        QStringLiteral("launch begin apk=%1 runtimeBooted=%2")
            .arg(QFileInfo(apkPath).fileName(), booted ? QStringLiteral("true") : QStringLiteral("false")));
    co_await EmulatorBoot::ensure(boot, booted);
    const double waited = secondsBetween(begin, platform.clock->monotonic());
    commands->log().write(QStringLiteral("runtime ready after=%1s").arg(waited, 0, 'f', 2));

    auto install = [installer, apkPath] { return installer->install(apkPath); };
    auto package = co_await background(*platform.executor, std::move(install));
    boot->throwIfCancelled();
    co_return package;
}
} // namespace

AndroidRuntimeCLI::AndroidRuntimeCLI(const Platform &platform, std::shared_ptr<QuillnestLog> log)
    : m_commands(std::make_shared<const AndroidCommands>(platform, std::move(log)))
    , m_tweaks(std::make_unique<DeviceTweaks>(m_commands))
    , m_boot(std::make_shared<EmulatorBoot>(m_commands, *m_tweaks))
    , m_installer(std::make_shared<const AppInstaller>(m_commands))
{
    m_tweaks->add({.stage = DeviceTweaks::Stage::apps, .apply = std::mem_fn(&AndroidCommands::stopAllApps)});
    m_tweaks->add({.stage = DeviceTweaks::Stage::sound, .apply = &AndroidVolume::maximize});
}

AndroidRuntimeCLI::~AndroidRuntimeCLI()
{
    m_boot->cancel();
}

void AndroidRuntimeCLI::endUnfinishedBoot() const
{
    m_boot->endUnfinished();
}

Task<> AndroidRuntimeCLI::ensureRuntime()
{
    return EmulatorBoot::ensure(m_boot);
}

Task<QString> AndroidRuntimeCLI::installAndLaunch(QString apkPath)
{
    return installOnDevice(m_commands, m_boot, m_installer, std::move(apkPath));
}

QString AndroidRuntimeCLI::packageIdentifier(const QString &apkPath) const
{
    return m_installer->packageIdentifier(apkPath);
}

std::optional<QString> AndroidRuntimeCLI::knownPackage(const QString &apkPath) const
{
    return InstallRecords::package(*m_commands->platform().settings, apkPath);
}

void AndroidRuntimeCLI::rememberInstalled(const QString &apkPath, const QString &package) const
{
    InstallRecords::write(*m_commands->platform().settings, apkPath, InstallRecords::fingerprint(apkPath), package);
}

} // namespace quillnest
