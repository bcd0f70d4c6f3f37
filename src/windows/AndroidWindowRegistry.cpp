#include "windows/AndroidWindowRegistry.h"

#include "windows/AndroidWindowSession.h"
#include "windows/WindowSettings.h"

#include <QLocale>

#include <algorithm>
#include <utility>

namespace quillnest
{

namespace
{
/// How long the end of the program waits for the streams' threads; they end at once but for a device that is stuck.
constexpr std::chrono::seconds threadsEnd(5);
/// More than that nobody can mean, and a timer can't count.
constexpr double mostIdleMinutes = 14.0 * 24 * 60;
} // namespace

AndroidWindowRegistry::AndroidWindowRegistry(WindowServices services)
    : m_services(std::move(services)), m_locator(m_services.platform), m_homePanel(m_services)
{
}

AndroidWindowRegistry::~AndroidWindowRegistry()
{
    m_alive.reset();
    m_outlived.clear();
    m_windows.clear();
    if (!m_services.streamThreads->waitForEnd(threadsEnd))
        m_services.log->write(QStringLiteral("a stream has not ended"));
    resumeWaiting();
}

AppSession &AndroidWindowRegistry::open(QUuid appID, const QString &package, const QString &title, OnEnded onEnded)
{
    auto *present = session(appID);
    if (present && !present->isClosing()) {
        setUnread(appID, false);
        present->show();
        return *present;
    }
    const auto components = m_locator.androidBridge();
    cancelIdleShutdown();
    const auto anchor = pendingAnchor ? pendingAnchor : menuBarPopupFrame();
    pendingAnchor.reset();
    SessionSurroundings &surroundings = *this;
    Window window{
        std::make_unique<AndroidWindowSession>(
            m_services, surroundings, AndroidWindowSession::App{appID, package, title},
            AndroidWindowSession::Device{
                m_services.commands->paths().adb(), AndroidCommands::serial(), components.server},
            anchor),
        std::move(onEnded)};
    auto &opened = *window.session;
    if (present)
        m_outlived.push_back(std::exchange(m_windows.at(appID), std::move(window)));
    else
        m_windows.emplace(appID, std::move(window));
    Q_EMIT m_services.notifications->sessionsChanged();
    Q_EMIT m_events.opened(&opened);
    closeMenuBarPopup();
    m_services.log->write(QStringLiteral("native window open package=%1 server=%2").arg(package, components.server));
    opened.start();
    return opened;
}

AndroidWindowRegistry::Window AndroidWindowRegistry::take(const AndroidWindowSession &session)
{
    // A newer window of the same app stays.
    const auto current = m_windows.find(session.appID());
    if (current != m_windows.end() && current->second.session.get() == &session) {
        auto window = std::move(current->second);
        m_windows.erase(current);
        return window;
    }
    const auto outlived = std::find_if(m_outlived.begin(), m_outlived.end(), [&session](const Window &window) {
        return window.session.get() == &session;
    });
    if (outlived == m_outlived.end())
        return {};
    auto window = std::move(*outlived);
    m_outlived.erase(outlived);
    return window;
}

void AndroidWindowRegistry::sessionEnded(AndroidWindowSession &session, const std::optional<QString> &error)
{
    auto window = take(session);
    if (!window.session)
        return;
    // The session is still on the stack of this call.
    window.session.release()->deleteLater();
    Q_EMIT m_services.notifications->sessionsChanged();
    Q_EMIT m_events.ended(&session, error);
    if (m_windows.empty())
        scheduleIdleShutdown();
    m_services.log->write(QStringLiteral("native window ended package=%1 error=%2")
                              .arg(session.package(), error.value_or(QStringLiteral("none"))));
    if (window.onEnded)
        window.onEnded({error, session.isClosing()});
    resumeWaiting();
}

void AndroidWindowRegistry::sessionShown(AndroidWindowSession &session)
{
    Q_EMIT m_events.shown(&session);
}

void AndroidWindowRegistry::sessionHidden(AndroidWindowSession &session)
{
    Q_EMIT m_events.hidden(&session);
}

void AndroidWindowRegistry::forceStop(QUuid appID, const QString &package)
{
    ++m_forceStops[appID];
    const auto &services = m_services;
    services.platform.executor->inBackground([this, alive = std::weak_ptr(m_alive), appID, package,
                                              executor = services.platform.executor, commands = services.commands] {
        commands->runADB({QStringLiteral("shell"), QStringLiteral("am"), QStringLiteral("force-stop"), package});
        executor->onMain([this, alive, appID] {
            if (alive.expired())
                return;
            if (--m_forceStops[appID] == 0)
                m_forceStops.erase(appID);
            resumeWaiting();
        });
    });
}

bool AndroidWindowRegistry::isEnding(QUuid appID) const
{
    const auto *current = session(appID);
    return m_forceStops.contains(appID) || (current && current->isClosing())
        || std::any_of(m_outlived.begin(), m_outlived.end(), [appID](const Window &window) {
               return window.session->appID() == appID;
           });
}

Task<> AndroidWindowRegistry::untilEnded(QUuid appID)
{
    const std::weak_ptr<bool> alive = m_alive;
    while (!alive.expired() && isEnding(appID)) {
        const auto next = m_anEnding;
        co_await next;
    }
}

void AndroidWindowRegistry::resumeWaiting()
{
    std::exchange(m_anEnding, {}).finish();
}

AndroidWindowRegistry::Sessions AndroidWindowRegistry::sessions() const
{
    Sessions result;
    for (const auto &[appID, window] : m_windows)
        result.emplace(appID, window.session.get());
    return result;
}

std::vector<AndroidWindowSession *> AndroidWindowRegistry::openSessions() const
{
    std::vector<AndroidWindowSession *> result;
    for (const auto &[appID, window] : m_windows)
        result.push_back(window.session.get());
    return result;
}

std::vector<QPoint> AndroidWindowRegistry::windowCorners() const
{
    std::vector<QPoint> result;
    for (const auto *session : openSessions()) {
        if (session->isVisible())
            result.push_back(session->panel().frame().topLeft());
    }
    return result;
}

AppSession *AndroidWindowRegistry::session(QUuid appID) const
{
    const auto found = m_windows.find(appID);
    return found == m_windows.end() ? nullptr : found->second.session.get();
}

AppSession *AndroidWindowRegistry::firstSession() const
{
    return m_windows.empty() ? nullptr : m_windows.begin()->second.session.get();
}

void AndroidWindowRegistry::closeOthers(QUuid except)
{
    for (auto *session : openSessions()) {
        if (session->appID() == except)
            continue;
        session->close(QStringLiteral("another app opened"));
        m_services.log->write(QStringLiteral("single-app mode: closed %1").arg(session->package()));
        // A second force-stop, apart from the window's own, for an app that comes back while its stream ends.
        forceStop(session->appID(), session->package());
    }
}

void AndroidWindowRegistry::closeAll()
{
    for (auto *session : openSessions())
        session->close(QStringLiteral("close all"));
}

bool AndroidWindowRegistry::singleAppMode() const
{
    return WindowSettings::singleApp.value(*m_services.platform.settings);
}

double AndroidWindowRegistry::idleShutdownMinutes() const
{
    return WindowSettings::idleShutdownMinutes.value(*m_services.platform.settings);
}

void AndroidWindowRegistry::scheduleIdleShutdown()
{
    // What was scheduled before doesn't come, but was scheduled all the same.
    m_idleTimer.reset();
    const double minutes = idleShutdownMinutes();
    if (!(minutes > 0))
        return;
    auto shown = QString::number(minutes, 'f', QLocale::FloatingPointShortest);
    if (!shown.contains(QLatin1Char('.')))
        shown += QStringLiteral(".0");
    m_services.log->write(QStringLiteral("idle: Android stops in %1 min unless an app is opened").arg(shown));
    const auto delay = std::chrono::duration_cast<Clock::Duration>(
        std::chrono::duration<double>(std::min(minutes, mostIdleMinutes) * 60));
    m_hasIdleTimer = true;
    m_idleTimer = m_services.platform.clock->after(delay, [this, shown] {
        if (m_windows.empty())
            stopAndroid(QStringLiteral("idle %1 min").arg(shown), false);
    });
}

void AndroidWindowRegistry::cancelIdleShutdown()
{
    if (!std::exchange(m_hasIdleTimer, false))
        return;
    m_services.log->write(QStringLiteral("idle: shutdown cancelled (app opened)"));
    m_idleTimer.reset();
}

void AndroidWindowRegistry::stopAndroid(const QString &reason, bool wait)
{
    m_services.log->write(QStringLiteral("stopping Android runtime (%1)").arg(reason));
    Q_EMIT m_services.notifications->runtimeChanged();
    if (wait)
        m_services.commands->stopDeviceAtOnce();
    else
        m_services.platform.executor->asUtility([commands = m_services.commands] { commands->stopDevice(); });
}

void AndroidWindowRegistry::setUnread(QUuid appID, bool unread)
{
    if (m_unreadAppIDs.contains(appID) == unread)
        return;
    if (unread)
        m_unreadAppIDs.insert(appID);
    else
        m_unreadAppIDs.remove(appID);
    Q_EMIT m_services.notifications->unreadChanged();
}

void AndroidWindowRegistry::setNowPlaying(const std::optional<AndroidMedia> &media, QUuid appID)
{
    if (!media && (!m_nowPlaying || m_nowPlaying->appID != appID))
        return;
    m_nowPlaying = media ? std::optional(NowPlaying{appID, *media}) : std::nullopt;
    Q_EMIT m_services.notifications->mediaChanged();
}

void AndroidWindowRegistry::applySize(const WindowSizePreset &preset)
{
    const QSizeF size(preset.width, preset.height + QuillnestLayout::headerHeight);
    QuillnestLayout::setSize(*m_services.platform.settings, size);
    for (auto *session : openSessions())
        session->setPanelSize(size);
    m_services.log->write(QStringLiteral("window size preset %1").arg(preset.label()));
}

void AndroidWindowRegistry::showMenuBarPopup(std::optional<QPoint> origin)
{
    m_homePanel.show(origin);
}

void AndroidWindowRegistry::closeMenuBarPopup()
{
    m_homePanel.orderOut();
}

std::optional<QRect> AndroidWindowRegistry::menuBarPopupFrame() const
{
    return m_homePanel.visibleFrame();
}

} // namespace quillnest
