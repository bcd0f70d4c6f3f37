#include "core/AndroidLaunch.h"

#include "base/FireAndForget.h"
#include "core/CoreSettings.h"
#include "platform/DescribedError.h"
#include "runtime/AndroidRuntimeCLI.h"
#include "runtime/AndroidRuntimeError.h"
#include "windows/AndroidWindowRegistry.h"

#include <QPointer>

namespace quillnest
{

namespace
{

QString secondsText(double seconds, int decimals)
{
    return QString::number(seconds, 'f', decimals);
}

} // namespace

AndroidLaunch::AndroidLaunch(const StoreServices &services, AndroidStatus &android, StatusLine &status)
    : m_services(services), m_android(android), m_status(status)
{
}

void AndroidLaunch::launch(const MobileApp &app)
{
    if (app.platform != MobilePlatform::android)
        return;
    if (!m_services.locks->needsUnlock(app.id)) {
        launchAndroid(app);
        return;
    }
    m_services.locks->unlockIfNeeded(app, [self = QPointer<AndroidLaunch>(this), app] {
        if (self)
            self->launchAndroid(app);
    });
}

void AndroidLaunch::launchAndroid(const MobileApp &app)
{
    auto &windows = m_services.windows;
    windows.cancelIdleShutdown();
    if (auto *session = windows.session(app.id); session && !session->isClosing()) {
        windows.setUnread(app.id, false);
        session->show();
        windows.closeMenuBarPopup();
        m_status.say(QStringLiteral("%1 is open").arg(app.name));
        return;
    }
    if (windows.singleAppMode())
        windows.closeOthers(app.id);
    m_status.say(QStringLiteral("Starting %1…").arg(app.name));
    setLaunching(app.id);
    if (m_android.state() != AndroidStatus::State::ready)
        m_android.set(AndroidStatus::State::starting);
    m_services.log->write(QStringLiteral("open requested app=%1").arg(app.name));
    fireAndForget(m_services.log, run(app, m_services.platform.clock->monotonic()));
}

Task<> AndroidLaunch::run(MobileApp app, std::chrono::nanoseconds openedAt)
{
    const QPointer<AndroidLaunch> self(this);
    std::optional<QString> failure;
    try {
        const auto deviceCleaned = m_services.deviceCleaned;
        co_await deviceCleaned;
        if (!self)
            co_return;
        // A window of the app that is just closing takes the app down with it.
        auto ending = m_services.windows.untilEnded(app.id);
        co_await ending;
        if (!self)
            co_return;
        auto installing = m_services.runtime.installAndLaunch(app.sourcePath);
        const auto package = co_await installing;
        if (!self)
            co_return;
        openWindow(app, package, openedAt);
    } catch (const AndroidRuntimeCancelled &) {
        co_return;
    } catch (const std::exception &error) {
        failure = descriptionOf(error);
    }
    if (!self)
        co_return;
    if (failure) {
        fail(app, *failure);
        co_return;
    }
    m_failures.erase(app.id);
    clearLaunching(app.id);
}

void AndroidLaunch::openWindow(const MobileApp &app, const QString &package, std::chrono::nanoseconds openedAt)
{
    const QPointer<AndroidLaunch> self(this);
    m_services.windows.open(app.id, package, app.name, [self, app](const AndroidWindowRegistry::End &end) {
        if (!self)
            return;
        if (end.wasAsked)
            self->m_status.say(QStringLiteral("Closed %1").arg(app.name));
        else
            fireAndForget(self->m_services.log, self->tellEnd(app, end.error));
    });
    const double elapsed = secondsBetween(openedAt, m_services.platform.clock->monotonic());
    m_services.log->write(
        QStringLiteral("native window started app=%1 sinceOpen=%2s").arg(app.name, secondsText(elapsed, 2)));
    m_status.say(QStringLiteral("Opened %1").arg(app.name));
    m_android.set(AndroidStatus::State::ready);
}

Task<> AndroidLaunch::tellEnd(MobileApp app, std::optional<QString> error)
{
    const QPointer<AndroidLaunch> self(this);
    auto look = [commands = m_services.runtime.commands()] { return commands->deviceIsBooted(); };
    auto looking = background(*m_services.platform.executor, std::move(look));
    const bool booted = co_await looking;
    if (!self)
        co_return;
    // Whoever has begun to open it again is told of that.
    if (m_launchingAppID == app.id || m_services.windows.session(app.id))
        co_return;
    const auto &name = app.name;
    if (!booted) {
        // Whoever has begun to start it again meanwhile says so.
        if (m_android.state() == AndroidStatus::State::ready)
            m_android.set(AndroidStatus::State::sleeping);
        m_status.say(QStringLiteral("Android stopped, and %1 with it. Open %1 again to restart it.").arg(name));
    } else if (error) {
        m_status.say(QStringLiteral("%1 stopped: %2").arg(name, *error));
    } else {
        m_status.say(QStringLiteral("Closed %1").arg(name));
    }
}

void AndroidLaunch::fail(const MobileApp &app, const QString &description)
{
    m_failures.insert_or_assign(app.id, description);
    clearLaunching(app.id);
    m_android.refresh();
    m_services.log->write(QStringLiteral("open failed app=%1 error=%2").arg(app.name, description));
    m_status.say(QStringLiteral("Android launch failed: %1").arg(description));
}

void AndroidLaunch::clearLaunching(QUuid id)
{
    // A later launch may have taken the field over, and its tile must keep its spinner.
    if (m_launchingAppID == id)
        m_launchingAppID.reset();
    Q_EMIT launchingChanged();
}

void AndroidLaunch::setLaunching(std::optional<QUuid> id)
{
    m_launchingAppID = id;
    Q_EMIT launchingChanged();
}

void AndroidLaunch::prewarm()
{
    const bool wanted = CoreSettings::prewarm.value(*m_services.platform.settings) && !m_prewarming && !m_launchingAppID
        && AndroidRuntimePaths::current(m_services.platform).isComplete() && m_services.windows.sessions().empty();
    if (!wanted)
        return;
    m_prewarming = true;
    fireAndForget(m_services.log, runPrewarm());
}

Task<> AndroidLaunch::runPrewarm()
{
    const QPointer<AndroidLaunch> self(this);
    const auto &clock = *m_services.platform.clock;
    const auto startedAt = clock.monotonic();
    auto look = [commands = m_services.runtime.commands()] { return commands->deviceIsBooted(); };
    auto looking = background(*m_services.platform.executor, std::move(look));
    const bool booted = co_await looking;
    if (!self)
        co_return;
    if (booted) {
        m_android.set(AndroidStatus::State::ready);
        m_prewarming = false;
        co_return;
    }
    m_android.set(AndroidStatus::State::starting);
    m_services.log->write(QStringLiteral("warm-up: starting Android in the background"));
    std::optional<QString> failure;
    try {
        auto booting = m_services.runtime.ensureRuntime();
        co_await booting;
    } catch (const AndroidRuntimeCancelled &) {
        co_return;
    } catch (const std::exception &error) {
        failure = descriptionOf(error);
    }
    if (!self)
        co_return;
    if (failure) {
        m_services.log->write(QStringLiteral("warm-up failed: %1").arg(*failure));
        m_android.refresh();
    } else {
        m_services.log->write(QStringLiteral("warm-up: Android ready after %1s")
                                  .arg(secondsText(secondsBetween(startedAt, clock.monotonic()), 1)));
        m_android.set(AndroidStatus::State::ready);
        if (m_services.windows.sessions().empty())
            m_services.windows.scheduleIdleShutdown();
    }
    m_prewarming = false;
}

} // namespace quillnest
