#include "core/AppLibraryStore.h"

#include "base/FireAndForget.h"
#include "core/CoreSettings.h"
#include "runtime/AndroidBridgeError.h"
#include "runtime/AndroidRuntimeError.h"

#include <QPointer>

// What a click on an app does, the warm-up before it, and what the interface is told about Android.

namespace quillnest
{

namespace
{

/// What the user is told of an error, or nothing for the end of the program.
QString description(const std::exception &error)
{
    return QString::fromUtf8(error.what());
}

QString secondsText(double seconds, int decimals)
{
    return QString::number(seconds, 'f', decimals);
}

} // namespace

void AppLibraryStore::launch(const MobileApp &app)
{
    if (app.platform != MobilePlatform::android)
        return;
    if (!m_services.locks->needsUnlock(app.id)) {
        launchAndroid(app);
        return;
    }
    m_services.locks->unlockIfNeeded(app, [self = QPointer<AppLibraryStore>(this), app] {
        if (self)
            self->launchAndroid(app);
    });
}

void AppLibraryStore::close(const MobileApp &app)
{
    if (auto *session = m_services.windows.session(app.id))
        session->close(QStringLiteral("menu"));
}

void AppLibraryStore::launchAndroid(const MobileApp &app)
{
    auto &windows = m_services.windows;
    windows.cancelIdleShutdown();
    if (auto *session = windows.session(app.id)) {
        windows.setUnread(app.id, false);
        session->show();
        windows.closeMenuBarPopup();
        setStatus(QStringLiteral("%1 is open").arg(app.name));
        return;
    }
    if (windows.singleAppMode())
        windows.closeOthers(app.id);
    m_launchingAppID = app.id;
    if (m_androidState != AndroidState::ready)
        m_androidState = AndroidState::starting;
    setStatus(QStringLiteral("Starting %1…").arg(app.name));
    m_services.log->write(QStringLiteral("open requested app=%1").arg(app.name));
    fireAndForget(m_services.log, runLaunch(app, m_services.platform.clock->monotonic()));
}

Task<> AppLibraryStore::runLaunch(MobileApp app, std::chrono::nanoseconds openedAt)
{
    const QPointer<AppLibraryStore> self(this);
    std::optional<QString> failure;
    try {
        const auto deviceCleaned = m_services.deviceCleaned;
        co_await deviceCleaned;
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
        failure = description(error);
    }
    if (!self)
        co_return;
    if (failure)
        launchFailed(app, *failure);
    else
        clearLaunching(app.id);
}

void AppLibraryStore::openWindow(const MobileApp &app, const QString &package, std::chrono::nanoseconds openedAt)
{
    const QPointer<AppLibraryStore> self(this);
    m_services.windows.open(app.id, package, app.name, [self, name = app.name](const std::optional<QString> &error) {
        if (!self)
            return;
        self->setStatus(
            error ? QStringLiteral("%1 stopped: %2").arg(name, *error) : QStringLiteral("Closed %1").arg(name));
    });
    const double elapsed = secondsBetween(openedAt, m_services.platform.clock->monotonic());
    m_services.log->write(
        QStringLiteral("native window started app=%1 sinceOpen=%2s").arg(app.name, secondsText(elapsed, 2)));
    m_androidState = AndroidState::ready;
    setStatus(QStringLiteral("Opened %1").arg(app.name));
    Q_EMIT m_services.notifications->windowOpened();
}

void AppLibraryStore::launchFailed(const MobileApp &app, const QString &description)
{
    clearLaunching(app.id);
    refreshAndroidState();
    m_services.log->write(QStringLiteral("open failed app=%1 error=%2").arg(app.name, description));
    setStatus(QStringLiteral("Android launch failed: %1").arg(description));
}

void AppLibraryStore::clearLaunching(QUuid id)
{
    // A later launch may have taken the field over, and its tile must keep its spinner.
    if (m_launchingAppID != id)
        return;
    m_launchingAppID.reset();
    Q_EMIT changed();
}

void AppLibraryStore::refreshAndroidState()
{
    if (!AndroidRuntimePaths::current(m_services.platform).isComplete()) {
        setAndroidState(AndroidState::notSetUp);
        return;
    }
    fireAndForget(m_services.log, runRefresh());
}

Task<> AppLibraryStore::runRefresh()
{
    const QPointer<AppLibraryStore> self(this);
    auto look = [commands = m_services.runtime.commands()] { return commands->deviceIsBooted(); };
    auto looking = background(*m_services.platform.executor, std::move(look));
    const bool booted = co_await looking;
    if (self && m_androidState != AndroidState::starting)
        setAndroidState(booted ? AndroidState::ready : AndroidState::sleeping);
}

void AppLibraryStore::prewarmAndroid()
{
    const bool wanted = CoreSettings::prewarm.value(*m_services.platform.settings) && !m_prewarming && !m_launchingAppID
        && AndroidRuntimePaths::current(m_services.platform).isComplete() && m_services.windows.sessions().empty();
    if (!wanted)
        return;
    m_prewarming = true;
    fireAndForget(m_services.log, runPrewarm());
}

Task<> AppLibraryStore::runPrewarm()
{
    const QPointer<AppLibraryStore> self(this);
    const auto &clock = *m_services.platform.clock;
    const auto startedAt = clock.monotonic();
    auto look = [commands = m_services.runtime.commands()] { return commands->deviceIsBooted(); };
    auto looking = background(*m_services.platform.executor, std::move(look));
    const bool booted = co_await looking;
    if (!self)
        co_return;
    if (booted) {
        setAndroidState(AndroidState::ready);
        m_prewarming = false;
        co_return;
    }
    setAndroidState(AndroidState::starting);
    m_services.log->write(QStringLiteral("warm-up: starting Android in the background"));
    std::optional<QString> failure;
    try {
        auto booting = m_services.runtime.ensureRuntime();
        co_await booting;
    } catch (const AndroidRuntimeCancelled &) {
        co_return;
    } catch (const std::exception &error) {
        failure = description(error);
    }
    if (!self)
        co_return;
    if (failure) {
        m_services.log->write(QStringLiteral("warm-up failed: %1").arg(*failure));
        refreshAndroidState();
    } else {
        m_services.log->write(QStringLiteral("warm-up: Android ready after %1s")
                                  .arg(secondsText(secondsBetween(startedAt, clock.monotonic()), 1)));
        setAndroidState(AndroidState::ready);
        if (m_services.windows.sessions().empty())
            m_services.windows.scheduleIdleShutdown();
    }
    m_prewarming = false;
}

} // namespace quillnest
