#pragma once

#include "stream/AndroidStreamClient.h"
#include "windows/AndroidAppPanel.h"
#include "windows/AndroidMedia.h"
#include "windows/AndroidVideoView.h"
#include "windows/BackWatch.h"
#include "windows/HeaderView.h"
#include "windows/WindowServices.h"

#include <QObject>
#include <QRect>
#include <QUuid>

#include <functional>
#include <memory>
#include <optional>

namespace quillnest
{

class AndroidWindowRegistry;

/// One running Android app as a window: a panel with a header and the video view, bound to one stream. Turns window
/// events into protocol messages and decides what back, home, hide and close mean. Main thread.
class AndroidWindowSession : public QObject
{
    Q_OBJECT

public:
    /// `anchor` is where the launcher stood, if it is on screen: the window takes its place.
    AndroidWindowSession(
        const WindowServices &services, AndroidWindowRegistry &registry, QUuid appID, QString package, QString title,
        const QString &adb, const QString &serial, const QString &server, std::optional<QRect> anchor);
    ~AndroidWindowSession() override;

    QUuid appID() const { return m_appID; }
    QString package() const { return m_package; }
    AndroidAppPanel &panel() const { return *m_panel; }
    AndroidVideoView &videoView() const { return *m_videoView; }
    AndroidStreamClient &client() const { return *m_client; }
    bool isClosing() const { return m_closing; }
    bool isPinned() const { return m_pinned; }
    /// From `start` to the first picture on the screen.
    std::optional<double> firstShownSeconds() const;

    /// The session's end, with the error text of an end that nobody asked for. Set by the registry.
    std::function<void(AndroidWindowSession *, std::optional<QString>)> onEnded;

    void start();
    /// Raises the window and gives it the keyboard.
    void show();
    /// Takes the window off the screen; the stream goes on.
    void hide();
    void close(const QString &reason);
    void handleBack();
    /// Presses one of the media keys.
    void sendMediaKey(MediaAction action);
    /// Takes files into the app.
    void receiveFiles(const QList<QUrl> &files);

    /// Sets the frame's size in points, keeping the top left corner where the screen allows it.
    void setPanelSize(QSizeF size);
    void showSizeMenu(QWidget *from);

    /// Where a frame of `wanted` size goes that keeps `frame`'s top left corner inside `visible`.
    static QRect fittedFrame(QRect frame, QSize wanted, QRect visible);

private:
    QPoint initialOrigin(QSize size, std::optional<QRect> anchor) const;
    std::shared_ptr<AndroidStreamClient>
    makeClient(const QString &adb, const QString &serial, const QString &server, QSize panelSize) const;
    void configurePanel();
    void wire();
    void streamEnded(const std::optional<QString> &error);
    void leftByBack();
    void goHome();
    void togglePinned();
    void saveFrame();
    void noteSeenIfLocked();
    void windowDidResignKey();
    void windowDidBecomeKey();
    void windowDidResize();
    void sendDisplaySize();
    QString recordKey() const;

    const WindowServices m_services;
    AndroidWindowRegistry &m_registry;
    const QUuid m_appID;
    const QString m_package;
    const QString m_title;
    const std::shared_ptr<QuillnestLog> m_log;
    std::chrono::nanoseconds m_startedAt{};
    bool m_pinned = false;
    bool m_closing = false;
    /// The change count of the pasteboard that was last acted on.
    int m_lastPasteboardChange = -1;
    std::unique_ptr<Timer> m_resizeWork;
    std::unique_ptr<AndroidAppPanel> m_panel;
    HeaderView *m_header = nullptr;
    AndroidVideoView *m_videoView = nullptr;
    std::shared_ptr<AndroidStreamClient> m_client;
    BackWatch m_backWatch;
};

} // namespace quillnest
