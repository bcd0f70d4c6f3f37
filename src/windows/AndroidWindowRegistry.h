#pragma once

#include "base/QuillnestLayout.h"
#include "runtime/RuntimeComponentLocator.h"
#include "windows/AndroidMedia.h"
#include "windows/AndroidWindowSession.h"
#include "windows/HomePanelController.h"
#include "windows/WindowServices.h"

#include <QSet>
#include <QUuid>

#include <functional>
#include <map>
#include <memory>
#include <optional>

namespace quillnest
{

/// The open app windows, and what belongs to no single window: unread marks, where the launcher stands, the idle
/// shutdown of the device. Main thread.
class AndroidWindowRegistry
{
public:
    explicit AndroidWindowRegistry(WindowServices services);
    ~AndroidWindowRegistry();

    using Sessions = std::map<QUuid, std::unique_ptr<AndroidWindowSession>>;
    const Sessions &sessions() const { return m_sessions; }
    const QSet<QUuid> &unreadAppIDs() const { return m_unreadAppIDs; }

    /// Opens a window for the app, or raises the one it has; then `onEnded` is dropped and the first one stays.
    /// `onEnded` gets the error text of an end that nobody asked for. Throws AndroidBridgeError.
    AndroidWindowSession &open(
        QUuid appID, const QString &package, const QString &title, std::function<void(std::optional<QString>)> onEnded);

    AndroidWindowSession *session(QUuid appID) const;
    /// The window that commands without a name are for.
    AndroidWindowSession *firstSession() const;
    void closeOthers(QUuid except);
    void closeAll();

    bool singleAppMode() const;
    /// 0 or less means never.
    double idleShutdownMinutes() const;
    void scheduleIdleShutdown();
    void cancelIdleShutdown();

    /// Tells the device to stop; with `wait` blocks until it has been told.
    void stopAndroid(const QString &reason, bool wait);

    void setUnread(QUuid appID, bool unread);
    struct NowPlaying {
        QUuid appID;
        AndroidMedia media;
    };
    /// The app whose media was last reported.
    const std::optional<NowPlaying> &nowPlaying() const { return m_nowPlaying; }
    /// What an app plays, or that it plays nothing, which counts only for the app that is shown as playing.
    void setNowPlaying(const std::optional<AndroidMedia> &media, QUuid appID);

    void applySize(const WindowSizePreset &preset);

    HomePanelController &homePanel() { return m_homePanel; }
    void showMenuBarPopup(std::optional<QPoint> origin);
    void closeMenuBarPopup();
    std::optional<QRect> menuBarPopupFrame() const;

    /// Where the next window is to open.
    std::optional<QRect> pendingAnchor;

private:
    void sessionEnded(
        AndroidWindowSession *session, const std::optional<QString> &error,
        const std::function<void(std::optional<QString>)> &onEnded);

    const WindowServices m_services;
    RuntimeComponentLocator m_locator;
    HomePanelController m_homePanel;
    Sessions m_sessions;
    QSet<QUuid> m_unreadAppIDs;
    std::optional<NowPlaying> m_nowPlaying;
    std::unique_ptr<Timer> m_idleTimer;
};

} // namespace quillnest
