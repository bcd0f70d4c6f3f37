#include "windows/AndroidVideoView.h"

#include "look/Palette.h"
#include "windows/AndroidAppPanel.h"

#include <QPaintEngine>
#include <QPaintEvent>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <array>
#include <cmath>

namespace quillnest
{

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

} // namespace quillnest
