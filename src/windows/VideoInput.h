#pragma once

#include "platform/Platform.h"
#include "stream/ControlSender.h"
#include "stream/ScrcpyControl.h"

#include <QObject>
#include <QPointF>

#include <functional>
#include <memory>
#include <optional>

class QInputMethodEvent;
class QKeyEvent;
class QMouseEvent;
class QWheelEvent;
class QWidget;

namespace quillnest
{

/// Turns mouse, wheel, keyboard and input methods over a view into control messages. It takes the view's events before
/// the view does, and knows of the view only its size: touches go by where the picture lies in that. It keeps no state
/// of the stream: without a device, or before the video's size is known, the mouse does nothing. Main thread.
///
/// "Command" is the key that the desktop's own shortcuts use: Control on Linux, Command on a Mac. The modifier that
/// keeps a key from being typed is the other one: Super on Linux, Control on a Mac.
class VideoInput : public QObject
{
    Q_OBJECT

public:
    /// `view` becomes the owner.
    VideoInput(const Platform &platform, QWidget *view);

    void setSender(std::weak_ptr<ControlSender> sender) { m_sender = std::move(sender); }

    /// Asked in place of sending back when the user wants to go back.
    std::function<void()> onBackRequest;

    void sendBack();
    void pasteFromMac();

    bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    /// The keyboard is to go on to what comes after the view.
    void leaveRequested();

private:
    struct Position {
        QPointF point;
        QSizeF video;
    };
    bool handle(QEvent *event);
    void mousePressed(const QMouseEvent &event);
    void mouseMoved(const QMouseEvent &event);
    void mouseReleased(const QMouseEvent &event);
    void wheelTurned(const QWheelEvent &event);
    void keyPressed(const QKeyEvent &event);
    void textComposed(const QInputMethodEvent &event);
    std::optional<Position> androidPoint(QPointF position) const;
    void sendTouch(ScrcpyControl::MotionAction action, QPointF position);
    void sendKey(std::uint32_t keycode, std::uint32_t meta);
    void sendText(const QString &text);
    void send(const QByteArray &message);
    void requestBack();
    void handleCommand(int key);

    const Platform &m_platform;
    QWidget &m_view;
    std::weak_ptr<ControlSender> m_sender;
    /// While an input event is handled, when it came.
    std::optional<std::chrono::nanoseconds> m_inputSince;
};

} // namespace quillnest
