#include "core/QuillnestApp.h"

#include "base/FireAndForget.h"
#include "base/PlainText.h"
#include "core/CoreCommands.h"
#include "core/CoreSettings.h"
#include "core/DiagnosticsReport.h"
#include "core/LaunchArguments.h"
#include "core/LoginItem.h"
#include "platform/DescribedError.h"
#include "platform/LeftOverProcesses.h"
#include "runtime/AndroidHardware.h"
#include "runtime/AndroidRuntimeError.h"
#include "runtime/DeviceTweaks.h"
#include "runtime/RuntimeSettings.h"
#include "windows/AndroidPlayerView.h"

#include <QDir>
#include <QJsonDocument>
#include <QPointer>
#include <QVBoxLayout>

#include <cstdio>

namespace quillnest
{

namespace
{
using namespace std::chrono_literals;

const auto serverClass = QStringLiteral("com.genymobile.scrcpy.Server");
constexpr auto playerDelay = 250ms;
constexpr auto openAppDelay = 500ms;
constexpr auto snapshotDelay = 1000ms;
} // namespace

QuillnestApp::QuillnestApp(Platform platform)
    : m_platform(std::move(platform))
    , m_log(std::make_shared<QuillnestLog>(
          m_platform.clock, m_platform.folders.logs, QStringLiteral("quillnest.log"), false))
    , m_icons(m_platform, m_log)
    , m_notifications(std::make_shared<ChangeNotifications>())
    , m_runtime(m_platform, m_log)
    , m_provisioner(m_platform)
    , m_locks(std::make_shared<NoAppLocking>())
    , m_windowServices{m_platform, m_log, m_notifications, m_runtime.commands(), m_locks}
    , m_windows(m_windowServices)
    , m_commands(m_log)
    , m_services{m_platform, m_log, m_notifications, m_runtime, m_windows, m_provisioner, m_deviceCleaned, m_locks}
{
}

QuillnestApp::~QuillnestApp()
{
    m_deviceCleaned.fail(std::make_exception_ptr(AndroidRuntimeCancelled()));
}

void QuillnestApp::start(const QStringList &arguments, Interface interface)
{
    m_interface = std::move(interface);
    if (const auto damaged = m_platform.settings->damagedFile())
        tellOfDamagedSettings(*damaged);
    connect(m_platform.settings.get(), &SettingsStore::setAside, this, &QuillnestApp::tellOfDamagedSettings);
    takeOrders(arguments, QDir::currentPath());

    m_store = std::make_unique<AppLibraryStore>(m_services);
    m_store->paintPanel = m_interface.paintPanel;
    m_store->paintGlyph = m_interface.paintGlyph;
    connect(&m_provisioner, &AndroidRuntimeProvisioner::changed, m_store.get(), [this] {
        if (!std::holds_alternative<AndroidRuntimeProvisioner::Ready>(m_provisioner.phase()))
            return;
        m_store->refreshAndroidState();
        // Whoever has just waited for the download is about to open an app.
        m_store->prewarmAndroid();
    });
    handleCoreCommands(m_commands, *m_store, m_windows);
    followHardwareSettings();
    endHostSideServers();
    fireAndForget(m_log, cleanDevice());
    connect(m_platform.commands.get(), &CommandChannel::received, this, [this](const QString &command) {
        m_commands.run(command);
    });
    if (!m_platform.commands->listen())
        m_log->write(QStringLiteral("command channel unavailable"));
    m_platform.diagnostics->serve([this] {
        auto report = diagnosticsReport(*m_store, m_windows, m_provisioner);
        report.insert(QStringLiteral("tiles"), m_interface.reportTiles ? m_interface.reportTiles() : QJsonArray());
        return QJsonDocument(report).toJson();
    });
    if (CoreSettings::snapshots.value(*m_platform.settings))
        later(snapshotDelay, [this] { m_store->writeMenuSnapshot(); });
    m_windows.homePanel().makeContent = m_interface.makePanel;
    LoginItem::enableByDefaultOnce(m_platform);
    const auto status = m_platform.loginItems->status();
    m_log->write(QStringLiteral("open at login enabled=%1 status=%2")
                     .arg(
                         status == LoginItems::Status::enabled ? QStringLiteral("true") : QStringLiteral("false"),
                         QString::number(static_cast<int>(status))));
    if (const auto text = LaunchArguments::value(QStringLiteral("--open-app"), arguments))
        later(openAppDelay, [this, text = *text] { openApp(text); });
    addFiles(LaunchArguments::files(arguments, QDir::currentPath()));
    connect(m_platform.door.get(), &InstanceDoor::knocked, this, &QuillnestApp::obey);
}

void QuillnestApp::takeOrders(const QStringList &arguments, const QString &folder)
{
    const auto launch = QStringLiteral("--launch-apk");
    const bool launches = LaunchArguments::has(launch, arguments);
    if (launches || LaunchArguments::has(QStringLiteral("--android-player"), arguments))
        later(playerDelay, [this] { openPlayer(); });
    if (const auto path = LaunchArguments::value(launch, arguments))
        fireAndForget(m_log, launchAPK(QDir(folder).absoluteFilePath(*path)));
}

void QuillnestApp::obey(const QStringList &arguments, const QString &folder)
{
    if (m_terminated)
        return;
    // On one line, whatever the arguments hold.
    const auto words = arguments.mid(1).join(QLatin1Char(' ')).replace(QLatin1Char('\n'), QLatin1Char(' '));
    m_log->write(QStringLiteral("another start asks: %1").arg(words.left(500)));
    takeOrders(arguments, folder);
    const auto files = LaunchArguments::files(arguments, folder);
    const auto app = LaunchArguments::value(QStringLiteral("--open-app"), arguments);
    addFiles(files);
    if (app)
        openApp(*app);
    // Whoever starts the program without a word wants to see it; what was added, too.
    const bool opensPlayer = LaunchArguments::has(QStringLiteral("--launch-apk"), arguments)
        || LaunchArguments::has(QStringLiteral("--android-player"), arguments);
    if (!files.isEmpty() || !(app || opensPlayer))
        m_windows.showMenuBarPopup(std::nullopt);
}

void QuillnestApp::addFiles(const QStringList &files)
{
    QList<QUrl> urls;
    for (const auto &file : files)
        urls.append(QUrl::fromLocalFile(file));
    if (!urls.isEmpty())
        m_store->addFiles(urls);
}

void QuillnestApp::later(std::chrono::milliseconds delay, std::function<void()> work)
{
    m_platform.clock->later(delay, [self = QPointer<QuillnestApp>(this), work = std::move(work)] {
        if (self)
            work();
    });
}

void QuillnestApp::tellOfDamagedSettings(const QString &path)
{
    m_log->write(QStringLiteral("settings unreadable, kept aside as %1").arg(path));
}

void QuillnestApp::openPlayer()
{
    if (m_player) {
        m_player->orderFront();
        return;
    }
    m_player = std::make_unique<AndroidAppPanel>(m_platform, AndroidAppPanel::Resizing::atEdges);
    m_player->setWindowTitle(QStringLiteral("Quillnest Android"));
    constexpr QSize smallest(360, 620);
    m_player->setMinimumFrameSize(smallest);
    QRect frame(0, 0, 430, 820);
    if (const auto screen = m_platform.screens->main()) {
        frame.setSize(frame.size().boundedTo(screen->visibleFrame.size()).expandedTo(smallest));
        frame.moveCenter(screen->visibleFrame.center());
    }
    m_player->setFrame(frame);
    auto *content = new AndroidPlayerView(m_windowServices, m_store->activeAndroidName(), m_player.get());
    connect(content, &AndroidPlayerView::closeRequested, this, [this] {
        m_player->orderOut();
        m_windows.showMenuBarPopup(m_player->frame().topLeft());
    });
    auto *layout = new QVBoxLayout(m_player.get());
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(content);
    connect(m_player.get(), &AndroidAppPanel::closeRequested, m_player.get(), &AndroidAppPanel::orderOut);
    m_player->orderFront();
}

void QuillnestApp::openApp(const QString &text)
{
    if (const auto app = m_store->firstMatchInNameOrPath(text))
        m_store->launch(*app);
    else
        m_log->write(QStringLiteral("open-app: no library entry matches %1").arg(text));
}

void QuillnestApp::endHostSideServers()
{
    // What an earlier run that was killed has left behind on this side of the tunnel.
    // Only that of our own device: whoever mirrors another one goes on with it.
    endLeftOverProcesses(
        *m_platform.processes, {QStringLiteral("-s %1 shell ").arg(AndroidCommands::serial()), serverClass});
}

Task<> QuillnestApp::cleanDevice()
{
    const QPointer<QuillnestApp> self(this);
    auto endServers = [commands = m_runtime.commands()] {
        const bool isBooted = commands->deviceIsBooted();
        if (isBooted)
            commands->runADB({QStringLiteral("shell"), QStringLiteral("pkill"), QStringLiteral("-f"), serverClass});
        return isBooted;
    };
    try {
        auto ending = background(*m_platform.executor, std::move(endServers));
        const bool isBooted = co_await ending;
        if (!self)
            co_return;
        if (isBooted) {
            auto applying = m_runtime.tweaks().applyAll();
            co_await applying;
        }
    } catch (const AndroidRuntimeCancelled &) {
        // The program ends, and what this stands on goes with it.
        co_return;
    } catch (const std::exception &error) {
        // Whoever waits for this finds a device that isn't quite clean, which is better than none.
        if (self)
            m_log->write(QStringLiteral("cleaning the device failed error=%1").arg(descriptionOf(error)));
    }
    if (!self)
        co_return;
    m_deviceCleaned.finish();
    // A click that came meanwhile has stopped the count, and its launch goes on now.
    if (self && m_windows.sessions().empty() && !m_store->launchingAppID())
        m_windows.scheduleIdleShutdown();
}

void QuillnestApp::followHardwareSettings()
{
    // The emulator reads its configuration when it starts.
    m_runtime.tweaks().whenChanged({RuntimeSettings::micCamera.key()}, [this] {
        const auto paths = AndroidRuntimePaths::current(m_platform);
        AndroidHardware::apply(paths, *m_platform.settings, m_platform.folders);
        if (paths.isComplete())
            m_windows.stopAndroid(QStringLiteral("microphone/camera setting changed"), false);
    });
}

Task<> QuillnestApp::launchAPK(QString path)
{
    const QPointer<QuillnestApp> self(this);
    try {
        const auto deviceCleaned = m_deviceCleaned;
        co_await deviceCleaned;
        if (!self)
            co_return;
        auto installing = m_runtime.installAndLaunch(path);
        const auto package = co_await installing;
        std::printf("Quillnest installed and launched %s\n", qUtf8Printable(package));
        std::fflush(stdout);
    } catch (const AndroidRuntimeCancelled &) {
        // The program ends.
    } catch (const std::exception &error) {
        std::fprintf(stderr, "Quillnest APK launch failed: %s\n", qUtf8Printable(plainLine(descriptionOf(error))));
    }
}

void QuillnestApp::terminate()
{
    if (std::exchange(m_terminated, true))
        return;
    // Whatever adb is still waiting for then, the end doesn't.
    m_platform.processes->endRunsWithin(8s);
    if (m_player)
        m_player->orderOut();
    m_windows.closeAll();
    if (CoreSettings::stopAndroidOnQuit.value(*m_platform.settings)) {
        m_windows.stopAndroid(QStringLiteral("Quillnest quit"), true);
        m_runtime.endUnfinishedBoot();
    }
}

} // namespace quillnest
