#include "platform/linux/LinuxPlatform.h"

#include "platform/desktop/DesktopAlerts.h"
#include "platform/desktop/DesktopFilePanels.h"
#include "platform/desktop/DesktopPasteboard.h"
#include "platform/desktop/DesktopScreens.h"
#include "platform/desktop/FFmpegStillDecoder.h"
#include "platform/desktop/FileSettingsStore.h"
#include "platform/desktop/QtClock.h"
#include "platform/desktop/QtDrawing.h"
#include "platform/desktop/QtExecutor.h"
#include "platform/desktop/QtNetwork.h"
#include "platform/desktop/ThemeSymbols.h"
#include "platform/desktop/TrayStatusItems.h"
#include "platform/linux/DBusCommandChannel.h"
#include "platform/linux/DBusDiagnostics.h"
#include "platform/linux/DBusFileManager.h"
#include "platform/linux/EwmhWindows.h"
#include "platform/linux/PortalAppearance.h"
#include "platform/linux/PosixChildProcesses.h"
#include "platform/linux/PulseAudioEngine.h"
#include "platform/linux/XdgLoginItems.h"
#include "platform/posix/ZipArchives.h"

#include <QCoreApplication>
#include <QDir>
#include <QGuiApplication>

namespace quillnest
{

namespace
{

/// One of the XDG base directories: the variable if it holds an absolute path, else the default.
QString baseFolder(const char *variable, const QString &fallback)
{
    const auto value = qEnvironmentVariable(variable);
    return QDir::isAbsolutePath(value) ? QDir::cleanPath(value) : QDir::homePath() + fallback;
}

QString configFolder()
{
    return baseFolder("XDG_CONFIG_HOME", QStringLiteral("/.config"));
}

/// Another place for the package lists than Google's, for tests and demonstrations.
std::optional<QUrl> repositoryFromEnvironment()
{
    auto text = qEnvironmentVariable("QUILLNEST_SDK_REPOSITORY");
    if (text.isEmpty())
        return std::nullopt;
    // Addresses in a list are relative to a folder.
    if (!text.endsWith(u'/'))
        text += u'/';
    const QUrl url(text, QUrl::StrictMode);
    return url.isValid() && !url.isRelative() ? std::optional(url) : std::nullopt;
}

} // namespace

Folders linuxFolders()
{
    return {
        .home = QDir::homePath(),
        .applicationSupport = baseFolder("XDG_DATA_HOME", QStringLiteral("/.local/share")),
        .logs = baseFolder("XDG_STATE_HOME", QStringLiteral("/.local/state")) + QStringLiteral("/Quillnest/Logs"),
        .temporary = QDir::tempPath(),
        .bundle = QDir::cleanPath(QCoreApplication::applicationDirPath() + QStringLiteral("/../share/quillnest")),
    };
}

std::shared_ptr<SettingsStore> linuxSettings()
{
    return std::make_shared<FileSettingsStore>(configFolder() + QStringLiteral("/Quillnest/settings.json"));
}

std::shared_ptr<CommandChannel> linuxCommandChannel()
{
    return std::make_shared<DBusCommandChannel>();
}

std::shared_ptr<DiagnosticsPort> linuxDiagnostics()
{
    return std::make_shared<DBusDiagnostics>();
}

Platform linuxPlatform()
{
    Platform platform;
    platform.profile = HostProfile::linuxX86_64();
    if (const auto repository = repositoryFromEnvironment())
        platform.profile.sdkRepository = *repository;
    platform.folders = linuxFolders();
    platform.clock = std::make_shared<QtClock>();
    platform.executor = std::make_shared<QtExecutor>();
    platform.settings = linuxSettings();
    platform.processes = std::make_shared<PosixChildProcesses>();
    platform.network = std::make_shared<QtNetwork>(platform.executor);
    platform.archives = std::make_shared<ZipArchives>();
    platform.commands = linuxCommandChannel();
    platform.pasteboard = std::make_shared<DesktopPasteboard>();
    platform.screens = std::make_shared<DesktopScreens>();
    platform.video = std::make_shared<FFmpegVideoDecoding>();
    platform.audio = std::make_shared<PulseAudioOutput>();
    platform.diagnostics = linuxDiagnostics();
    platform.statusItems = std::make_shared<TrayStatusItems>();
    platform.drawing = std::make_shared<QtDrawing>();
    platform.symbols = std::make_shared<ThemeSymbols>();
    platform.appearance = std::make_shared<PortalAppearance>();
    platform.alerts = std::make_shared<DesktopAlerts>();
    platform.filePanels = std::make_shared<DesktopFilePanels>();
    platform.fileManager = std::make_shared<DBusFileManager>();
    platform.loginItems = std::make_shared<XdgLoginItems>(configFolder(), QCoreApplication::applicationFilePath());
    platform.foreignWindows = std::make_shared<EwmhWindows>(nullptr, qGuiApp->devicePixelRatio());
    return platform;
}

} // namespace quillnest
