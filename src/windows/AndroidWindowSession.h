#pragma once

#include "stream/AndroidStreamClient.h"
#include "windows/AndroidAppPanel.h"
#include "windows/AppSession.h"
#include "windows/BackWatch.h"
#include "windows/SessionSurroundings.h"
#include "windows/WindowServices.h"

#include <QObject>
#include <QRect>
#include <QUrl>
#include <QUuid>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace quillnest
{

/// One running Android app as a window: a panel with its content, bound to one stream. Turns window events into
/// protocol messages and decides what back, home, hide and close mean. Main thread.
class AndroidWindowSession : public QObject, public AppSession
{
    Q_OBJECT

public:
    /// What a session is made for.
    struct App {
        QUuid id;
        QString package;
        QString title;
    };
    /// The way to the device.
    struct Device {
        QString adb;
        QString serial;
        /// The stream server's file on this machine.
        QString server;
    };

    /// `anchor` is where the launcher stood, if it is on screen: the window takes its place. The surroundings outlive
    /// the session.
    AndroidWindowSession(
        const WindowServices &services, SessionSurroundings &surroundings, App app, const Device &device,
        std::optional<QRect> anchor);
    ~AndroidWindowSession() override;

    QUuid appID() const override { return m_app.id; }
    QString package() const override { return m_app.package; }
    QString title() const override { return m_app.title; }
    bool isVisible() const override { return m_panel->isVisible() && !m_closing; }
    bool isClosing() const override { return m_closing; }
    std::optional<int> displayID() const override { return m_client->displayID(); }
    SessionCounters counters() const override;
    AndroidAppPanel &panel() const { return *m_panel; }

    void start();
    void show() override;
    void hide() override;
    void close(const QString &reason) override;
    void handleBack() override;
    void paste() override;
    void copy() override;
    void sendMediaKey(MediaAction action) override;
    void send(const QByteArray &message) override { m_client->send(message); }
    void requestStill(std::function<void(const QImage &)> take) override;
    void attach(const std::shared_ptr<SampleConsumer> &consumer) override { m_client->samples().attach(consumer); }
    void detach(const std::shared_ptr<SampleConsumer> &consumer) override { m_client->samples().detach(consumer); }
    bool showMessage(const WindowMessage &message) override;
    void setMessageDisplay(std::function<void(const WindowMessage &)> display) override;
    void put(QWidget *overlay, WindowContent::Place place) override { m_content->put(overlay, place); }

    /// Takes files into the app.
    void receiveFiles(const QList<QUrl> &files);

    /// Sets the frame's size in points, keeping the top left corner where the screen allows it. A hidden window tells
    /// Android of it too.
    void setPanelSize(QSizeF size);

private:
    std::shared_ptr<AndroidStreamClient> makeClient(const Device &device, QSize panelSize) const;
    void configurePanel();
    void wire();
    void firstFrameCame();
    void stillCame(const QImage &still);
    void streamEnded(const std::optional<QString> &error);
    void leftByBack();
    void goHome();
    void togglePinned();
    void saveFrame();
    void showSizeMenu(QWidget *from);
    void noteSeenIfLocked();
    std::optional<QRect> visibleFrame() const;
    void windowDidResignKey();
    void windowDidBecomeKey();
    void windowDidResize();
    void sendDisplaySize();

    const WindowServices m_services;
    SessionSurroundings &m_surroundings;
    const App m_app;
    const std::shared_ptr<QuillnestLog> m_log;
    std::chrono::nanoseconds m_startedAt{};
    bool m_pinned = false;
    bool m_closing = false;
    /// The change count of the pasteboard that was last acted on.
    int m_lastPasteboardChange = -1;
    bool m_isConnected = false;
    bool m_isResized = false;
    /// When the window was given a size that its user hasn't dragged it to.
    std::optional<std::chrono::nanoseconds> m_sizedAt;
    std::unique_ptr<Timer> m_resizeWork;
    std::unique_ptr<AndroidAppPanel> m_panel;
    WindowContent *m_content = nullptr;
    std::shared_ptr<AndroidStreamClient> m_client;
    BackWatch m_backWatch;
    /// Those who wait for the next still.
    std::vector<std::function<void(const QImage &)>> m_stillsWanted;
    std::function<void(const WindowMessage &)> m_messageDisplay;
};

} // namespace quillnest
