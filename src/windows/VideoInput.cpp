#include "windows/VideoInput.h"

#include "windows/PicturePlace.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>
#include <QWidget>

#include <algorithm>
#include <utility>

namespace quillnest
{

namespace
{

constexpr Qt::KeyboardModifier commandModifier = Qt::ControlModifier;
constexpr Qt::KeyboardModifier controlModifier = Qt::MetaModifier;

constexpr std::uint32_t letterA = 29;
constexpr std::uint32_t controlMeta = 0x3000;
constexpr std::uint32_t shiftMeta = 1;

/// The keys that travel as key events, with their Android codes.
std::optional<std::uint32_t> androidKeyCode(int key)
{
    switch (key) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return 66;
    case Qt::Key_Backspace:
        return 67;
    case Qt::Key_Delete:
        return 112;
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        return 61;
    case Qt::Key_Left:
        return 21;
    case Qt::Key_Right:
        return 22;
    case Qt::Key_Down:
        return 20;
    case Qt::Key_Up:
        return 19;
    case Qt::Key_Home:
        return 122;
    case Qt::Key_End:
        return 123;
    case Qt::Key_PageUp:
        return 92;
    case Qt::Key_PageDown:
        return 93;
    default:
        return std::nullopt;
    }
}

/// Whether a key together with Command means something here.
bool isCommand(int key)
{
    switch (key) {
    case Qt::Key_V:
    case Qt::Key_C:
    case Qt::Key_X:
    case Qt::Key_A:
    case Qt::Key_W:
    case Qt::Key_Tab:
        return true;
    default:
        return false;
    }
}

/// Whether text is something that a person typed: no control characters and no function keys.
bool isTypedText(const QString &text)
{
    const auto scalars = text.toUcs4();
    return !scalars.isEmpty() && std::none_of(scalars.begin(), scalars.end(), [](char32_t scalar) {
        return scalar < 32 || scalar == 127 || (scalar >= 0xF700 && scalar <= 0xF8FF);
    });
}

/// Whether a key does something here. A shortcut of the program may have all others.
bool isWanted(const QKeyEvent &event)
{
    if (event.modifiers() & commandModifier)
        return isCommand(event.key());
    return event.key() == Qt::Key_Escape || androidKeyCode(event.key())
        || (!(event.modifiers() & controlModifier) && isTypedText(event.text()));
}

} // namespace

VideoInput::VideoInput(const Platform &platform, QWidget *view) : QObject(view), m_platform(platform), m_view(*view)
{
    view->setAttribute(Qt::WA_InputMethodEnabled);
    view->setFocusPolicy(Qt::StrongFocus);
    view->installEventFilter(this);
}

bool VideoInput::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != &m_view)
        return QObject::eventFilter(watched, event);
    if (!event->isInputEvent() && event->type() != QEvent::InputMethod)
        return false;
    // How long a message takes counts from here on, where the toolkit hands over what it comes from.
    const auto before = std::exchange(m_inputSince, m_platform.clock->monotonic());
    const bool done = handle(event);
    m_inputSince = before;
    return done;
}

bool VideoInput::handle(QEvent *event)
{
    switch (event->type()) {
    case QEvent::ShortcutOverride:
        if (!isWanted(*static_cast<QKeyEvent *>(event)))
            return false;
        break;
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        mousePressed(*static_cast<QMouseEvent *>(event));
        break;
    case QEvent::MouseMove:
        mouseMoved(*static_cast<QMouseEvent *>(event));
        break;
    case QEvent::MouseButtonRelease:
        mouseReleased(*static_cast<QMouseEvent *>(event));
        break;
    case QEvent::Wheel:
        wheelTurned(*static_cast<QWheelEvent *>(event));
        break;
    case QEvent::KeyPress:
        keyPressed(*static_cast<QKeyEvent *>(event));
        break;
    case QEvent::InputMethod:
        textComposed(*static_cast<QInputMethodEvent *>(event));
        break;
    default:
        return false;
    }
    event->accept();
    return true;
}

std::optional<VideoInput::Position> VideoInput::androidPoint(QPointF position) const
{
    const auto sender = m_sender.lock();
    const auto video = sender ? sender->videoSize() : QSizeF();
    // A message has sixteen bits for each side.
    const auto isSide = [](double length) { return length > 0 && length <= 0xFFFF; };
    if (!isSide(video.width()) || !isSide(video.height()))
        return std::nullopt;
    return Position{PicturePlace::pixelAt(position, m_view.size(), m_view.devicePixelRatioF(), video.toSize()), video};
}

void VideoInput::send(const QByteArray &message)
{
    if (const auto sender = m_sender.lock())
        sender->send(message, m_inputSince);
}

void VideoInput::sendTouch(ScrcpyControl::MotionAction action, QPointF position)
{
    if (const auto at = androidPoint(position))
        send(ScrcpyControl::touch(action, at->point, at->video));
}

void VideoInput::sendKey(std::uint32_t keycode, std::uint32_t meta)
{
    send(ScrcpyControl::key(ScrcpyControl::KeyAction::down, keycode, meta));
    send(ScrcpyControl::key(ScrcpyControl::KeyAction::up, keycode, meta));
}

void VideoInput::sendText(const QString &text)
{
    if (isTypedText(text))
        send(ScrcpyControl::text(text));
}

void VideoInput::sendBack()
{
    send(ScrcpyControl::backDown());
    send(ScrcpyControl::backUp());
}

void VideoInput::requestBack()
{
    if (onBackRequest)
        onBackRequest();
    else
        sendBack();
}

void VideoInput::mousePressed(const QMouseEvent &event)
{
    if (event.button() == Qt::RightButton) {
        requestBack();
    } else if (event.button() == Qt::LeftButton) {
        m_view.setFocus(Qt::MouseFocusReason);
        sendTouch(ScrcpyControl::MotionAction::down, event.position());
    }
}

void VideoInput::mouseMoved(const QMouseEvent &event)
{
    if (event.buttons() & Qt::LeftButton)
        sendTouch(ScrcpyControl::MotionAction::move, event.position());
}

void VideoInput::mouseReleased(const QMouseEvent &event)
{
    if (event.button() == Qt::LeftButton)
        sendTouch(ScrcpyControl::MotionAction::up, event.position());
}

void VideoInput::wheelTurned(const QWheelEvent &event)
{
    const auto at = androidPoint(event.position());
    if (!at)
        return;
    // A trackpad tells pixels; a wheel tells eighths of a degree, 120 for a notch.
    const bool precise = !event.pixelDelta().isNull();
    const auto delta = precise ? QPointF(event.pixelDelta()) * 0.08 : QPointF(event.angleDelta()) / 120.0;
    const auto dx = static_cast<float>(delta.x());
    const auto dy = static_cast<float>(delta.y());
    if (dx == 0 && dy == 0)
        return;
    // Only the horizontal axis runs the other way on the device.
    send(ScrcpyControl::scroll(at->point, at->video, dx * -0.0625F, dy * 0.0625F));
}

void VideoInput::keyPressed(const QKeyEvent &event)
{
    const auto modifiers = event.modifiers();
    if (modifiers & commandModifier) {
        handleCommand(event.key());
        return;
    }
    if (event.key() == Qt::Key_Escape) {
        requestBack();
        return;
    }
    if (const auto code = androidKeyCode(event.key())) {
        sendKey(*code, modifiers & Qt::ShiftModifier ? shiftMeta : 0);
        return;
    }
    if (!(modifiers & controlModifier))
        sendText(event.text());
}

void VideoInput::handleCommand(int key)
{
    switch (key) {
    case Qt::Key_V:
        pasteFromMac();
        break;
    case Qt::Key_C:
        send(ScrcpyControl::getClipboardCopy());
        break;
    case Qt::Key_X:
        send(ScrcpyControl::getClipboardCut());
        break;
    case Qt::Key_A:
        sendKey(letterA, controlMeta);
        break;
    case Qt::Key_W:
        m_view.window()->close();
        break;
    case Qt::Key_Tab:
        // The way out of the app to the header, since Tab alone is the app's.
        Q_EMIT leaveRequested();
        break;
    default:
        break;
    }
}

void VideoInput::pasteFromMac()
{
    const auto text = m_platform.pasteboard->string().value_or(QString());
    const auto sender = m_sender.lock();
    if (!text.isEmpty() && sender)
        sender->send(ScrcpyControl::setClipboard(text, true, sender->nextClipboardSequence()), m_inputSince);
}

void VideoInput::textComposed(const QInputMethodEvent &event)
{
    sendText(event.commitString());
}

} // namespace quillnest
