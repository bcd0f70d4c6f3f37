#include "core/QuillnestApp.h"

#include "base/FireAndForget.h"
#include "base/QuillnestSettings.h"
#include "core/DiagnosticsReport.h"
#include "core/LaunchArguments.h"
#include "runtime/AndroidAdBlock.h"
#include "runtime/AndroidDarkMode.h"
#include "runtime/AndroidVolume.h"

#include <QJsonDocument>
#include <QPointer>

#include <cstdio>

namespace quillnest
{

namespace
{
const auto serverClass = QStringLiteral("com.genymobile.scrcpy.Server");
}

QuillnestApp::QuillnestApp(Platform platform)
    : m_platform(std::move(platform))
    , m_log(std::make_shared<QuillnestLog>(
          m_platform.clock, m_platform.folders.logs, QStringLiteral("quillnest.log"), false))
    , m_notifications(std::make_shared<ChangeNotifications>())
    , m_runtime(m_platform, m_log)
    , m_windows(WindowServices{m_platform, m_log, m_notifications, m_runtime.commands()})
    , m_services{m_platform, m_log, m_notifications, m_runtime, m_windows}
{
}

QuillnestApp::~QuillnestApp() = default;

void QuillnestApp::start(const QStringList &arguments, std::function<QWidget *()> makePanel)
{
    if (LaunchArguments::has(QStringLiteral("--launch-apk"), arguments)) {
        if (const auto path = LaunchArguments::value(QStringLiteral("--launch-apk"), arguments))
            fireAndForget(m_log, launchAPK(*path));
    }

    m_store = std::make_unique<AppLibraryStore>(m_services);
    m_commands = std::make_unique<CommandDispatcher>(m_services, *m_store);
    endHostSideServers();
    fireAndForget(m_log, cleanDevice());
    connect(m_platform.commands.get(), &CommandChannel::received, this, [this](const QString &command) {
        m_commands->run(command);
    });
    if (!m_platform.commands->listen())
        m_log->write(QStringLiteral("command channel unavailable"));
    m_platform.diagnostics->serve([this] { return QJsonDocument(diagnosticsReport(*m_store, m_windows)).toJson(); });
    AndroidDarkMode::startObserving(m_runtime.commands());
    m_windows.homePanel().makeContent = std::move(makePanel);

    if (const auto text = LaunchArguments::value(QStringLiteral("--open-app"), arguments)) {
        const QPointer<QuillnestApp> self(this);
        m_platform.clock->later(std::chrono::milliseconds(500), [self, text = *text] {
            if (!self)
                return;
            if (const auto app = self->m_store->firstMatchInNameOrPath(text))
                self->m_store->launch(*app);
            else
                self->m_log->write(QStringLiteral("open-app: no library entry matches %1").arg(text));
        });
    }
}

void QuillnestApp::endHostSideServers()
{
    // What an earlier run that was killed has left behind on this side of the tunnel.
    ChildCommand command{.program = QStringLiteral("/usr/bin/pkill"), .arguments = {QStringLiteral("-f"), serverClass}};
    command.output = ChildCommand::Output::Null;
    try {
        m_platform.processes->start(command);
    } catch (const LaunchError &) {
    }
}

Task<> QuillnestApp::cleanDevice()
{
    const QPointer<QuillnestApp> self(this);
    auto clean = [commands = m_runtime.commands()] {
        if (!commands->deviceIsBooted())
            return;
        commands->runADB({QStringLiteral("shell"), QStringLiteral("pkill"), QStringLiteral("-f"), serverClass});
        commands->stopAllApps();
        AndroidDarkMode::apply(*commands);
        AndroidVolume::maximize(*commands);
        AndroidAdBlock::apply(*commands);
    };
    *m_services.cleaningDevice = true;
    auto cleaning = background(*m_platform.executor, std::move(clean));
    co_await cleaning;
    if (!self)
        co_return;
    *m_services.cleaningDevice = false;
    if (m_windows.sessions().empty())
        m_windows.scheduleIdleShutdown();
}

Task<> QuillnestApp::launchAPK(QString path)
{
    try {
        auto installing = m_runtime.installAndLaunch(path);
        const auto package = co_await installing;
        std::printf("Quillnest installed and launched %s\n", qUtf8Printable(package));
        std::fflush(stdout);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "Quillnest APK launch failed: %s\n", error.what());
    }
}

void QuillnestApp::terminate()
{
    if (std::exchange(m_terminated, true))
        return;
    m_windows.closeAll();
    if (QuillnestSettings::flag(*m_platform.settings, QStringLiteral("QuillnestStopAndroidOnQuit"), true))
        m_windows.stopAndroid(QStringLiteral("Quillnest quit"), true);
}

} // namespace quillnest
