#pragma once

#include "base/QuillnestLayout.h"
#include "platform/Tasks.h"
#include "runtime/RuntimeComponentLocator.h"
#include "windows/AndroidMedia.h"
#include "windows/AppSession.h"
#include "windows/HomePanelController.h"
#include "windows/SessionEvents.h"
#include "windows/SessionSurroundings.h"
#include "windows/WindowServices.h"

#include <QSet>
#include <QUuid>

#include <coroutine>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace quillnest
{

/// The open app windows, and what belongs to no single window: unread marks, where the launcher stands, the idle
/// shutdown of the device. Main thread.
class AndroidWindowRegistry : private SessionSurroundings
{
public:
    explicit AndroidWindowRegistry(WindowServices services);
    /// Ends all windows, and waits a moment for their streams' threads.
    ~AndroidWindowRegistry() override;
    AndroidWindowRegistry(const AndroidWindowRegistry &) = delete;
    AndroidWindowRegistry &operator=(const AndroidWindowRegistry &) = delete;

    /// Told of every window.
    const SessionEvents &events() const { return m_events; }

    using Sessions = std::map<QUuid, AppSession *>;
    /// By their apps, those that are closing among them.
    Sessions sessions() const;
    const QSet<QUuid> &unreadAppIDs() const { return m_unreadAppIDs; }

    /// How a window ended.
    struct End {
        /// For a failure, which the user never asks for.
        std::optional<QString> error;
        /// By the window's own close, not by the device.
        bool wasAsked = false;
    };
    using OnEnded = std::function<void(const End &)>;

    /// Opens a window for the app, or raises the one it has; then `onEnded` is dropped and the first one stays. A
    /// window that is closing isn't raised any more, the app gets a new one. Throws AndroidBridgeError.
    AppSession &open(QUuid appID, const QString &package, const QString &title, OnEnded onEnded);

    AppSession *session(QUuid appID) const;
    /// The window that commands without a name are for.
    AppSession *firstSession() const;
    void closeOthers(QUuid except);
    void closeAll();

    /// Comes back when none of the app's windows is closing and the device has been told of its end: an app that is
    /// opened before that would end with its old window. At once when there is nothing to wait for.
    Task<> untilEnded(QUuid appID);

    bool singleAppMode() const;
    /// 0 or less means never.
    double idleShutdownMinutes() const;
    void scheduleIdleShutdown();
    void cancelIdleShutdown();

    /// Tells the device to stop; with `wait` blocks until it has been told, or ended because it doesn't listen.
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

    void applySize(const WindowSizePreset &preset) override;

    HomePanelController &homePanel() { return m_homePanel; }
    void showMenuBarPopup(std::optional<QPoint> origin);
    void closeMenuBarPopup();
    std::optional<QRect> menuBarPopupFrame() const;

    /// Where the next window is to open.
    std::optional<QRect> pendingAnchor;

private:
    /// An open window and whom to tell of its end.
    struct Window {
        std::unique_ptr<AndroidWindowSession> session;
        OnEnded onEnded;
    };

    void setRead(QUuid appID) override { setUnread(appID, false); }
    void setSilent(QUuid appID) override { setNowPlaying(std::nullopt, appID); }
    void forceStop(QUuid appID, const QString &package) override;
    std::vector<QPoint> windowCorners() const override;
    void showLauncher(QPoint origin) override { showMenuBarPopup(origin); }
    void sessionShown(AndroidWindowSession &session) override;
    void sessionHidden(AndroidWindowSession &session) override;
    void sessionEnded(AndroidWindowSession &session, const std::optional<QString> &error) override;

    Window take(const AndroidWindowSession &session);
    std::vector<AndroidWindowSession *> openSessions() const;
    bool isEnding(QUuid appID) const;
    void resumeWaiting();

    const WindowServices m_services;
    RuntimeComponentLocator m_locator;
    HomePanelController m_homePanel;
    SessionEvents m_events;
    std::map<QUuid, Window> m_windows;
    /// Windows that are closing while their apps have newer ones.
    std::vector<Window> m_outlived;
    /// How often each app is being stopped on the device.
    std::map<QUuid, int> m_forceStops;
    /// The next end of a window, or of a stop on the device.
    Completion<> m_anEnding;
    QSet<QUuid> m_unreadAppIDs;
    std::optional<NowPlaying> m_nowPlaying;
    std::unique_ptr<Timer> m_idleTimer;
    /// A shutdown was scheduled and hasn't been cancelled, though its timer may have run out or been taken back.
    bool m_hasIdleTimer = false;
    /// Gone with the registry.
    std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
};

} // namespace quillnest
