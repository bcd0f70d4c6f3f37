#include "windows/AndroidVideoView.h"

#include "windows/AndroidAppPanel.h"
#include "windows/Palette.h"

#include <QDragEnterEvent>
#include <QFileInfo>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QPaintEngine>
#include <QPainter>
#include <QPainterPath>
#include <QWheelEvent>

#include <algorithm>
#include <array>
#include <cmath>

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

AndroidVideoView::AndroidVideoView(const Platform &platform, QWidget *parent)
    : QWidget(parent)
    , m_platform(platform)
    , m_renderer(platform.video->sampleRenderer())
    , m_signal(std::make_shared<FrameSignal>())
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAttribute(Qt::WA_NoSystemBackground);
    setAttribute(Qt::WA_InputMethodEnabled);
    setFocusPolicy(Qt::StrongFocus);
    setAcceptDrops(true);
    setAccessibleName(QStringLiteral("Android screen"));

    m_signal->view = this;
    // At most one wake-up of the main thread is under way: the newest picture is what counts when it comes.
    m_renderer->setFrameHandler([signal = m_signal, executor = platform.executor] {
        if (signal->posted.exchange(true))
            return;
        executor->onMain([signal] {
            signal->posted = false;
            if (signal->view)
                signal->view->showNewestFrame();
        });
    });
}

AndroidVideoView::~AndroidVideoView()
{
    m_renderer->setFrameHandler(nullptr);
    m_signal->view = nullptr;
}

void AndroidVideoView::showNewestFrame()
{
    if (!isVisible())
        return;
    const auto frame = m_renderer->latestFrame();
    if (!frame || frame == m_shownFrame)
        return;
    const auto area = changedArea(*frame);
    take(frame);
    // Painted and flushed at once, not with the next turn of the event loop. When nothing of it is new, what stands on
    // the screen is this picture already.
    if (!area.isEmpty())
        repaint(area);
    noteFirstShown();
    const auto age = m_platform.clock->monotonic() - frame->arrival();
    m_counters.lastFrameAge = std::chrono::duration<double, std::milli>(age).count();
    m_counters.frameAges.add(age);
}

void AndroidVideoView::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    // What came while nobody could see it; how long it has waited for that says nothing about the stream.
    const auto frame = m_renderer->latestFrame();
    if (!frame || frame == m_shownFrame)
        return;
    take(frame);
    update();
    noteFirstShown();
}

void AndroidVideoView::take(const std::shared_ptr<const VideoFrame> &frame)
{
    m_shownFrame = frame;
    ++m_counters.framesShown;
}

void AndroidVideoView::noteFirstShown()
{
    if (!m_counters.firstShownAt)
        m_counters.firstShownAt = m_platform.clock->monotonic();
}

QSizeF AndroidVideoView::exactSizeInPixels() const
{
    return QSizeF(size()) * devicePixelRatioF();
}

QSize AndroidVideoView::sizeInPixels() const
{
    const auto exact = exactSizeInPixels();
    return {qRound(exact.width()), qRound(exact.height())};
}

QRegion AndroidVideoView::changedArea(const VideoFrame &frame) const
{
    const auto picture = pictureRect(exactSizeInPixels(), frame.size());
    const bool followsShown = m_shownFrame && frame.sequence() == m_shownFrame->sequence() + 1
        && frame.size() == m_shownFrame->size() && picture.size() == frame.size();
    if (!followsShown)
        return rect();
    const double scale = devicePixelRatioF();
    QRegion area;
    for (const auto &part : frame.changedParts()) {
        // The bars go on with the picture's edges.
        auto whole = part.translated(picture.topLeft());
        if (part.left() == 0)
            whole.setLeft(0);
        if (part.top() == 0)
            whole.setTop(0);
        if (part.right() == frame.size().width() - 1)
            whole.setRight(sizeInPixels().width() - 1);
        if (part.bottom() == frame.size().height() - 1)
            whole.setBottom(sizeInPixels().height() - 1);
        const auto pixels = QRectF(whole);
        area += QRectF(pixels.topLeft() / scale, pixels.size() / scale).toAlignedRect();
    }
    return area & rect();
}

bool AndroidVideoView::fits(QSizeF view, QSize picture)
{
    // The display was asked for by the whole pixels alone, also where the rest is enough for one more on the screen.
    const auto slack = QSize(static_cast<int>(view.width()), static_cast<int>(view.height())) - picture;
    return slack.width() >= 0 && slack.width() < 8 && slack.height() >= 0 && slack.height() < 8;
}

QRect AndroidVideoView::pictureRect(QSizeF view, QSize picture)
{
    const QSize whole(qRound(view.width()), qRound(view.height()));
    if (picture.isEmpty() || whole.isEmpty())
        return {};
    const auto size = fits(view, picture) ? picture : picture.scaled(whole, Qt::KeepAspectRatio);
    return {QPoint((whole.width() - size.width()) / 2, (whole.height() - size.height()) / 2), size};
}

void AndroidVideoView::paintEvent(QPaintEvent *event)
{
    QPainter painter(this);
    // Never a newer picture than the one whose turn it is: that one may have changed outside this event's region, where
    // the picture before it would stay for good.
    if (m_shownFrame)
        paintFrame(painter, *m_shownFrame, event->region());
    else
        painter.fillRect(event->rect(), Qt::black);
    if (window()->testAttribute(Qt::WA_TranslucentBackground))
        roundCorners(painter, event->region());
    if (m_dropBorder) {
        painter.setPen(QPen(Palette::current(m_platform).controlAccent, 3));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(QRectF(rect()).adjusted(1.5, 1.5, -1.5, -1.5));
    }
}

/// Cuts the window's lower corners off, which are the view's, and lets the window's shadow show there.
void AndroidVideoView::roundCorners(QPainter &painter, const QRegion &region) const
{
    constexpr int radius = windowCornerRadius;
    const auto *panel = qobject_cast<const AndroidAppPanel *>(window());
    QPainterPath round;
    round.addRoundedRect(QRectF(0, height() - 3 * radius, width(), 3 * radius), radius, radius);
    for (const int x : {0, width() - radius}) {
        const QRect corner(x, height() - radius, radius, radius);
        if (!region.intersects(corner))
            continue;
        QPainterPath square;
        square.addRect(corner);
        painter.save();
        painter.setClipRect(corner, Qt::IntersectClip);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setCompositionMode(QPainter::CompositionMode_Clear);
        painter.fillPath(square.subtracted(round), Qt::black);
        if (panel) {
            QImage shadow(corner.size() * devicePixelRatioF(), QImage::Format_ARGB32_Premultiplied);
            shadow.setDevicePixelRatio(devicePixelRatioF());
            QPainter below(&shadow);
            below.translate(-mapTo(panel, corner.topLeft()));
            panel->paintOutside(below);
            below.end();
            // Behind the picture, of whose edge pixels a part is still there.
            painter.setCompositionMode(QPainter::CompositionMode_DestinationOver);
            painter.drawImage(corner.topLeft(), shadow);
        }
        painter.restore();
    }
}

void AndroidVideoView::paintFrame(QPainter &painter, const VideoFrame &frame, const QRegion &region)
{
    const double scale = devicePixelRatioF();
    const auto picture = pictureRect(exactSizeInPixels(), frame.size());
    const auto toPoints
        = [scale](QRect pixels) { return QRectF(QPointF(pixels.topLeft()) / scale, QSizeF(pixels.size()) / scale); };

    const auto bars = QRegion(QRect(QPoint(0, 0), sizeInPixels())).subtracted(picture);
    if (!bars.isEmpty() && fits(exactSizeInPixels(), frame.size())) {
        paintEdges(painter, frame, picture, region);
    } else {
        for (const auto &bar : bars)
            painter.fillRect(toPoints(bar), Qt::black);
    }

    if (picture.size() != frame.size()) {
        QImage image(picture.size(), QImage::Format_RGB32);
        frame.scaleTo(image.bits(), image.bytesPerLine(), picture.size());
        painter.drawImage(toPoints(picture), image);
        return;
    }
    for (const auto &area : region) {
        const auto pixels = QRectF(QPointF(area.topLeft()) * scale, QSizeF(area.size()) * scale).toAlignedRect();
        const auto part = (pixels & picture).translated(-picture.topLeft());
        if (!part.isEmpty() && !convertInPlace(painter, frame, part, picture.topLeft()))
            convertByImage(painter, frame, part, toPoints(part.translated(picture.topLeft())));
    }
}

/// The display's sides are multiples of 8 pixels, so a few pixels of the view may be left. They go on with the
/// picture's outermost pixels: black lines beside a light app would look like a fault.
void AndroidVideoView::paintEdges(QPainter &painter, const VideoFrame &frame, QRect picture, const QRegion &region)
{
    const double scale = devicePixelRatioF();
    const auto size = frame.size();
    const QRect whole(QPoint(0, 0), sizeInPixels());
    const auto edge = [&](QRect target, QRect source) {
        const QRectF points(QPointF(target.topLeft()) / scale, QSizeF(target.size()) / scale);
        if (target.isEmpty() || !region.intersects(points.toAlignedRect()))
            return;
        // Conversion begins at even places.
        const QRect even(QPoint(source.x() & ~1, source.y() & ~1), source.bottomRight());
        QImage image(even.size(), QImage::Format_RGB32);
        frame.convertTo(image.bits(), image.bytesPerLine(), even);
        painter.drawImage(points, image, source.translated(-even.topLeft()));
    };
    const int right = size.width() - 1;
    const int bottom = size.height() - 1;
    const std::array<std::pair<int, int>, 3> columns{
        {{whole.left(), picture.left() - 1}, {picture.left(), picture.right()}, {picture.right() + 1, whole.right()}}};
    const std::array<std::pair<int, int>, 3> rows{
        {{whole.top(), picture.top() - 1}, {picture.top(), picture.bottom()}, {picture.bottom() + 1, whole.bottom()}}};
    const std::array<std::pair<int, int>, 3> sourceColumns{{{0, 0}, {0, right}, {right, right}}};
    const std::array<std::pair<int, int>, 3> sourceRows{{{0, 0}, {0, bottom}, {bottom, bottom}}};
    const auto span = [](std::pair<int, int> x, std::pair<int, int> y) {
        return QRect(QPoint(x.first, y.first), QPoint(x.second, y.second));
    };
    for (std::size_t row = 0; row < rows.size(); ++row) {
        for (std::size_t column = 0; column < columns.size(); ++column) {
            if (row != 1 || column != 1)
                edge(span(columns[column], rows[row]), span(sourceColumns[column], sourceRows[row]));
        }
    }
}

/// Converts into the window's own memory: the one write of these pixels. That passes by the painter, so it is for
/// whole pixels only, at a place that conversion can start at.
bool AndroidVideoView::convertInPlace(QPainter &painter, const VideoFrame &frame, QRect part, QPoint origin)
{
    auto *device = painter.paintEngine()->paintDevice();
    const double scale = devicePixelRatioF();
    if (!device || device->devType() != QInternal::Image || scale != std::floor(scale) || part.x() % 2 != 0
        || part.y() % 2 != 0)
        return false;
    auto *memory = static_cast<QImage *>(device);
    const auto at = painter.deviceTransform().map(QPointF(0, 0)).toPoint() + origin + part.topLeft();
    if (memory->depth() != 32 || !memory->rect().contains(QRect(at, part.size())))
        return false;
    auto *first = const_cast<uchar *>(memory->constScanLine(at.y())) + std::ptrdiff_t{4} * at.x();
    frame.convertTo(first, memory->bytesPerLine(), part);
    return true;
}

void AndroidVideoView::convertByImage(QPainter &painter, const VideoFrame &frame, QRect part, QRectF target)
{
    const QRect even(QPoint(part.x() & ~1, part.y() & ~1), part.bottomRight());
    QImage image(even.size(), QImage::Format_RGB32);
    frame.convertTo(image.bits(), image.bytesPerLine(), even);
    painter.drawImage(target, image, part.translated(-even.topLeft()));
}

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
