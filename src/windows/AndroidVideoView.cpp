#include "windows/AndroidVideoView.h"

#include "look/Palette.h"
#include "windows/PicturePlace.h"

#include <QDragEnterEvent>
#include <QFileInfo>
#include <QMimeData>
#include <QPaintEngine>
#include <QPaintEvent>
#include <QPainter>

#include <algorithm>
#include <array>
#include <cmath>

namespace quillnest
{

namespace
{
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
    const auto picture = PicturePlace::rect(exactSizeInPixels(), frame.size());
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

void AndroidVideoView::paintEvent(QPaintEvent *event)
{
    QPainter painter(this);
    // Never a newer picture than the one whose turn it is: that one may have changed outside this event's region, where
    // the picture before it would stay for good.
    if (m_shownFrame)
        paintFrame(painter, *m_shownFrame, event->region());
    else
        painter.fillRect(event->rect(), Qt::black);
    if (m_dropBorder) {
        painter.setPen(QPen(Palette::current(m_platform).controlAccent, 3));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(QRectF(rect()).adjusted(1.5, 1.5, -1.5, -1.5));
    }
}

void AndroidVideoView::paintFrame(QPainter &painter, const VideoFrame &frame, const QRegion &region)
{
    const double scale = devicePixelRatioF();
    const auto picture = PicturePlace::rect(exactSizeInPixels(), frame.size());
    const auto toPoints
        = [scale](QRect pixels) { return QRectF(QPointF(pixels.topLeft()) / scale, QSizeF(pixels.size()) / scale); };

    const auto bars = QRegion(QRect(QPoint(0, 0), sizeInPixels())).subtracted(picture);
    if (!bars.isEmpty() && PicturePlace::fits(exactSizeInPixels(), frame.size())) {
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

QVariant AndroidVideoView::inputMethodQuery(Qt::InputMethodQuery query) const
{
    // Where candidates are shown; where the app has its own cursor isn't told.
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
