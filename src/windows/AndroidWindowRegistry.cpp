#include "windows/AndroidWindowRegistry.h"

#include "base/QuillnestSettings.h"

#include <QLocale>

namespace quillnest
{

AndroidWindowRegistry::AndroidWindowRegistry(WindowServices services)
    : m_services(std::move(services)), m_locator(m_services.platform), m_homePanel(m_services)
{
}

AndroidWindowRegistry::~AndroidWindowRegistry() = default;

AndroidWindowSession &AndroidWindowRegistry::open(
    QUuid appID, const QString &package, const QString &title, std::function<void(std::optional<QString>)> onEnded)
{
    if (auto *present = session(appID)) {
        setUnread(appID, false);
        present->show();
        return *present;
    }
    const auto components = m_locator.androidBridge();
    cancelIdleShutdown();
    const auto anchor = pendingAnchor ? pendingAnchor : menuBarPopupFrame();
    pendingAnchor.reset();
    auto created = std::make_unique<AndroidWindowSession>(
        m_services, *this, appID, package, title, m_services.commands->paths().adb(), AndroidCommands::serial(),
        components.server, anchor);
    auto &opened = *created;
    opened.onEnded
        = [this, onEnded = std::move(onEnded)](AndroidWindowSession *ended, const std::optional<QString> &error) {
              // The session goes with its callback, which is this very closure.
              const auto told = onEnded;
              sessionEnded(ended, error, told);
          };
    m_sessions.insert_or_assign(appID, std::move(created));
    Q_EMIT m_services.notifications->sessionsChanged();
    closeMenuBarPopup();
    m_services.log->write(QStringLiteral("native window open package=%1 server=%2").arg(package, components.server));
    opened.start();
    return opened;
}

void AndroidWindowRegistry::sessionEnded(
    AndroidWindowSession *session, const std::optional<QString> &error,
    const std::function<void(std::optional<QString>)> &onEnded)
{
    const auto package = session->package();
    const auto found = m_sessions.find(session->appID());
    // A newer session for the same app stays.
    if (found != m_sessions.end() && found->second.get() == session) {
        // The session is still on the stack of this call.
        found->second.release()->deleteLater();
        m_sessions.erase(found);
    }
    Q_EMIT m_services.notifications->sessionsChanged();
    if (m_sessions.empty())
        scheduleIdleShutdown();
    m_services.log->write(
        QStringLiteral("native window ended package=%1 error=%2").arg(package, error.value_or(QStringLiteral("none"))));
    if (onEnded)
        onEnded(error);
}

AndroidWindowSession *AndroidWindowRegistry::session(QUuid appID) const
{
    const auto found = m_sessions.find(appID);
    return found == m_sessions.end() ? nullptr : found->second.get();
}

AndroidWindowSession *AndroidWindowRegistry::firstSession() const
{
    return m_sessions.empty() ? nullptr : m_sessions.begin()->second.get();
}

void AndroidWindowRegistry::closeOthers(QUuid except)
{
    for (const auto &[appID, session] : m_sessions) {
        if (appID == except)
            continue;
        const auto package = session->package();
        session->close(QStringLiteral("another app opened"));
        m_services.log->write(QStringLiteral("single-app mode: closed %1").arg(package));
        // A second force-stop, apart from the window's own, for an app that comes back while its stream ends.
        m_services.runADBInBackground(
            {QStringLiteral("shell"), QStringLiteral("am"), QStringLiteral("force-stop"), package});
    }
}

void AndroidWindowRegistry::closeAll()
{
    for (const auto &[appID, session] : m_sessions)
        session->close(QStringLiteral("close all"));
}

bool AndroidWindowRegistry::singleAppMode() const
{
    return QuillnestSettings::flag(*m_services.platform.settings, QStringLiteral("QuillnestSingleApp"), true);
}

double AndroidWindowRegistry::idleShutdownMinutes() const
{
    return QuillnestSettings::number(
        *m_services.platform.settings, QStringLiteral("QuillnestIdleShutdownMinutes"), 5.0);
}

void AndroidWindowRegistry::scheduleIdleShutdown()
{
    m_idleTimer.reset();
    const double minutes = idleShutdownMinutes();
    if (!(minutes > 0))
        return;
    auto shown = QString::number(minutes, 'f', QLocale::FloatingPointShortest);
    if (!shown.contains(QLatin1Char('.')))
        shown += QStringLiteral(".0");
    m_services.log->write(QStringLiteral("idle: Android stops in %1 min unless an app is opened").arg(shown));
    const auto delay = std::chrono::duration_cast<Clock::Duration>(std::chrono::duration<double>(minutes * 60));
    m_idleTimer = m_services.platform.clock->after(delay, [this, shown] {
        if (m_sessions.empty())
            stopAndroid(QStringLiteral("idle %1 min").arg(shown), false);
    });
}

void AndroidWindowRegistry::cancelIdleShutdown()
{
    if (!m_idleTimer)
        return;
    m_services.log->write(QStringLiteral("idle: shutdown cancelled (app opened)"));
    m_idleTimer.reset();
}

void AndroidWindowRegistry::stopAndroid(const QString &reason, bool wait)
{
    m_services.log->write(QStringLiteral("stopping Android runtime (%1)").arg(reason));
    Q_EMIT m_services.notifications->runtimeChanged();
    const auto stop = [commands = m_services.commands] {
        commands->stopAllApps();
        commands->runADB({QStringLiteral("emu"), QStringLiteral("kill")});
    };
    if (wait)
        stop();
    else
        m_services.platform.executor->inBackground(stop);
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
    for (const auto &[appID, session] : m_sessions)
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
