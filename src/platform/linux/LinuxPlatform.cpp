#include "platform/HostPlatform.h"

#include "platform/desktop/DesktopAlerts.h"
#include "platform/desktop/DesktopFilePanels.h"
#include "platform/desktop/DesktopPasteboard.h"
#include "platform/desktop/FFmpegStillDecoder.h"
#include "platform/desktop/QtClock.h"
#include "platform/desktop/QtDrawing.h"
#include "platform/desktop/QtExecutor.h"
#include "platform/desktop/QtNetwork.h"
#include "platform/desktop/TrayStatusItems.h"
#include "platform/linux/BaseFolders.h"
#include "platform/linux/DBusFileManager.h"
#include "platform/linux/EwmhWindows.h"
#include "platform/linux/PortalAppearance.h"
#include "platform/linux/PulseAudioEngine.h"
#include "platform/linux/ThemeSymbols.h"
#include "platform/linux/X11Screens.h"
#include "platform/linux/XdgLoginItems.h"
#include "platform/posix/PosixInstanceDoor.h"
#include "platform/posix/ZipArchives.h"

#include <QCoreApplication>
#include <QGuiApplication>

namespace quillnest
{

namespace
{

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

std::shared_ptr<AudioOutput> hostAudio()
{
    return std::make_shared<PulseAudioOutput>();
}

std::shared_ptr<Symbols> hostSymbols()
{
    return std::make_shared<ThemeSymbols>();
}

std::shared_ptr<InstanceDoor> hostDoor()
{
    // The one that was entered is the one that is heard.
    static const auto door = std::make_shared<PosixInstanceDoor>();
    return door;
}

Platform hostPlatform()
{
    Platform platform;
    platform.profile = hostProfile();
    if (const auto repository = repositoryFromEnvironment())
        platform.profile.sdkRepository = *repository;
    platform.folders = hostFolders();
    platform.clock = std::make_shared<QtClock>();
    platform.executor = std::make_shared<QtExecutor>();
    platform.settings = hostSettings();
    platform.processes = hostChildProcesses();
    platform.sockets = hostSockets();
    platform.network = std::make_shared<QtNetwork>(platform.executor);
    platform.archives = std::make_shared<ZipArchives>();
    platform.door = hostDoor();
    platform.commands = hostCommandChannel();
    platform.pasteboard = std::make_shared<DesktopPasteboard>();
    platform.screens = std::make_shared<X11Screens>();
    platform.video = std::make_shared<FFmpegVideoDecoding>();
    platform.audio = hostAudio();
    platform.diagnostics = hostDiagnostics();
    platform.statusItems = std::make_shared<TrayStatusItems>();
    platform.drawing = std::make_shared<QtDrawing>();
    platform.symbols = hostSymbols();
    platform.appearance = std::make_shared<PortalAppearance>();
    platform.alerts = std::make_shared<DesktopAlerts>();
    platform.filePanels = std::make_shared<DesktopFilePanels>();
    platform.fileManager = std::make_shared<DBusFileManager>();
    platform.loginItems = std::make_shared<XdgLoginItems>(configFolder(), QCoreApplication::applicationFilePath());
    platform.foreignWindows = std::make_shared<EwmhWindows>(nullptr, qGuiApp->devicePixelRatio());
    return platform;
}

} // namespace quillnest
