#include "windows/AndroidVideoView.h"

#include <QDragEnterEvent>
#include <QFileInfo>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QWheelEvent>

#include <algorithm>

// What the view makes of mouse, wheel, keyboard, input methods and dropped files.

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

/// Whether text is something that a person typed: no control characters and no function keys.
bool isTypedText(const QString &text)
{
    const auto scalars = text.toUcs4();
    return !scalars.isEmpty() && std::none_of(scalars.begin(), scalars.end(), [](char32_t scalar) {
        return scalar < 32 || scalar == 127 || (scalar >= 0xF700 && scalar <= 0xF8FF);
    });
}

QList<QUrl> droppedFiles(const QMimeData *data)
{
    QList<QUrl> files;
    for (const auto &url : data->urls()) {
        if (url.isLocalFile() && !QFileInfo(url.toLocalFile()).isDir())
            files.append(url);
    }
    return files;
}

} // namespace

QPointF AndroidVideoView::videoPoint(QPointF point, QSizeF view, QSizeF video)
{
    const double scale = std::min(view.width() / video.width(), view.height() / video.height());
    const double x = (point.x() - (view.width() - video.width() * scale) / 2) / scale;
    const double y = (point.y() - (view.height() - video.height() * scale) / 2) / scale;
    return {std::clamp(x, 0.0, video.width() - 1), std::clamp(y, 0.0, video.height() - 1)};
}

std::optional<AndroidVideoView::Position> AndroidVideoView::androidPoint(QPointF position) const
{
    const auto client = m_client.lock();
    const auto video = client ? client->videoSize() : QSizeF();
    if (!(video.width() > 0 && video.height() > 0))
        return std::nullopt;
    return Position{videoPoint(position, size(), video), video};
}

void AndroidVideoView::send(const QByteArray &message)
{
    if (const auto client = m_client.lock())
        client->send(message, m_inputSince);
}

void AndroidVideoView::sendTouch(ScrcpyControl::MotionAction action, QPointF position)
{
    if (const auto at = androidPoint(position))
        send(ScrcpyControl::touch(action, at->point, at->video));
}

void AndroidVideoView::sendKey(std::uint32_t keycode, std::uint32_t meta)
{
    send(ScrcpyControl::key(ScrcpyControl::KeyAction::down, keycode, meta));
    send(ScrcpyControl::key(ScrcpyControl::KeyAction::up, keycode, meta));
}

void AndroidVideoView::sendText(const QString &text)
{
    if (isTypedText(text))
        send(ScrcpyControl::text(text));
}

void AndroidVideoView::sendBack()
{
    send(ScrcpyControl::backDown());
    send(ScrcpyControl::backUp());
}

void AndroidVideoView::requestBack()
{
    if (onBackRequest)
        onBackRequest();
    else
        sendBack();
}

void AndroidVideoView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::RightButton) {
        requestBack();
    } else if (event->button() == Qt::LeftButton) {
        setFocus(Qt::MouseFocusReason);
        sendTouch(ScrcpyControl::MotionAction::down, event->position());
    }
}

void AndroidVideoView::mouseMoveEvent(QMouseEvent *event)
{
    if (event->buttons() & Qt::LeftButton)
        sendTouch(ScrcpyControl::MotionAction::move, event->position());
}

void AndroidVideoView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        sendTouch(ScrcpyControl::MotionAction::up, event->position());
}

void AndroidVideoView::wheelEvent(QWheelEvent *event)
{
    event->accept();
    const auto at = androidPoint(event->position());
    if (!at)
        return;
    // A trackpad tells pixels; a wheel tells eighths of a degree, 120 for a notch.
    const bool precise = !event->pixelDelta().isNull();
    const auto delta = precise ? QPointF(event->pixelDelta()) * 0.08 : QPointF(event->angleDelta()) / 120.0;
    const auto dx = static_cast<float>(delta.x());
    const auto dy = static_cast<float>(delta.y());
    if (dx == 0 && dy == 0)
        return;
    // Only the horizontal axis runs the other way on the device.
    send(ScrcpyControl::scroll(at->point, at->video, dx * -0.0625F, dy * 0.0625F));
}

bool AndroidVideoView::event(QEvent *event)
{
    // Nothing else may take a key that the app is to have.
    if (event->type() == QEvent::ShortcutOverride) {
        event->accept();
        return true;
    }
    if (!event->isInputEvent())
        return QWidget::event(event);
    // How long a message takes counts from here on, where the toolkit hands over what it comes from.
    const auto before = std::exchange(m_inputSince, m_platform.clock->monotonic());
    const bool done = QWidget::event(event);
    m_inputSince = before;
    return done;
}

bool AndroidVideoView::focusNextPrevChild(bool)
{
    // Tab belongs to the app.
    return false;
}

void AndroidVideoView::keyPressEvent(QKeyEvent *event)
{
    const auto modifiers = event->modifiers();
    if (modifiers & commandModifier) {
        handleCommand(event);
        return;
    }
    if (event->key() == Qt::Key_Escape) {
        requestBack();
        return;
    }
    if (const auto code = androidKeyCode(event->key())) {
        sendKey(*code, modifiers & Qt::ShiftModifier ? shiftMeta : 0);
        return;
    }
    if (!(modifiers & controlModifier))
        sendText(event->text());
}

bool AndroidVideoView::handleCommand(const QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_V:
        pasteFromMac();
        return true;
    case Qt::Key_C:
        send(ScrcpyControl::getClipboardCopy());
        return true;
    case Qt::Key_X:
        send(ScrcpyControl::getClipboardCut());
        return true;
    case Qt::Key_A:
        sendKey(letterA, controlMeta);
        return true;
    case Qt::Key_W:
        window()->close();
        return true;
    case Qt::Key_Tab:
        // The way out of the app to the header, since Tab alone is the app's.
        return QWidget::focusNextPrevChild(true);
    default:
        return false;
    }
}

void AndroidVideoView::pasteFromMac()
{
    const auto text = m_platform.pasteboard->string().value_or(QString());
    const auto client = m_client.lock();
    if (!text.isEmpty() && client)
        client->send(ScrcpyControl::setClipboard(text, true, client->nextClipboardSequence()));
}

void AndroidVideoView::inputMethodEvent(QInputMethodEvent *event)
{
    sendText(event->commitString());
    event->accept();
}

QVariant AndroidVideoView::inputMethodQuery(Qt::InputMethodQuery query) const
{
    if (query == Qt::ImCursorRectangle)
        return QRect(width() / 2, height() - 40, 1, 20);
    return QWidget::inputMethodQuery(query);
}

void AndroidVideoView::setDropBorder(bool on)
{
    m_dropBorder = on;
    update();
}

void AndroidVideoView::dragEnterEvent(QDragEnterEvent *event)
{
    if (!onFilesDropped || droppedFiles(event->mimeData()).isEmpty())
        return;
    setDropBorder(true);
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

void AndroidVideoView::dragLeaveEvent(QDragLeaveEvent *)
{
    setDropBorder(false);
}

void AndroidVideoView::dropEvent(QDropEvent *event)
{
    setDropBorder(false);
    const auto files = droppedFiles(event->mimeData());
    if (files.isEmpty() || !onFilesDropped)
        return;
    onFilesDropped(files);
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

} // namespace quillnest
