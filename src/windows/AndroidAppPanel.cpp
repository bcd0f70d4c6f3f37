#include "windows/AndroidAppPanel.h"

#include "look/Palette.h"

#include <QCloseEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QWindow>

#include <cmath>
#include <cstdlib>

namespace quillnest
{

namespace
{
/// How far from an edge a press still takes the edge, in points.
constexpr double edgeReach = 5;
/// The same along an edge for its corner.
constexpr double cornerReach = 14;
/// How far outside the frame its edges can still be taken where the shadow leaves room, in points.
constexpr int outerReach = 6;
/// How often a grab of the keyboard is looked at until it ends.
constexpr std::chrono::milliseconds grabPoll(100);
} // namespace

AndroidAppPanel::AndroidAppPanel(const Platform &platform, Resizing resizing)
    : QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint)
    , m_platform(platform)
    , m_resizing(resizing)
    , m_isBlended(platform.screens->isComposited())
{
    setAttribute(Qt::WA_DeleteOnClose, false);
    setAttribute(Qt::WA_QuitOnClose, false);
    if (m_isBlended) {
        setAttribute(Qt::WA_TranslucentBackground);
        setContentsMargins(PanelShadow::reach);
    }
}

void AndroidAppPanel::setFrame(QRect frame)
{
    const auto before = this->frame().size();
    m_toldSize = frame.size();
    setGeometry(frame.marginsAdded(shadowMargins()));
    // The event of a hidden window comes when it is shown, which may be never.
    if (!isVisible() && frame.size() != before)
        Q_EMIT resized();
}

void AndroidAppPanel::setMinimumFrameSize(QSize size)
{
    setMinimumSize(size.grownBy(shadowMargins()));
}

void AndroidAppPanel::declareShadow()
{
    if (m_isBlended && windowHandle())
        m_platform.screens->declareShadow(winId(), size(), PanelShadow::reach, outerReach, devicePixelRatioF());
}

void AndroidAppPanel::paintOutside(QPainter &painter) const
{
    m_shadow.paint(painter, rect().marginsRemoved(shadowMargins()));
}

void AndroidAppPanel::setFloating(bool on)
{
    m_floating = on;
    // On a window that is on screen a changed flag would map it anew, so the window system is asked directly.
    if (windowHandle())
        windowHandle()->setFlag(Qt::WindowStaysOnTopHint, on);
    else
        setWindowFlag(Qt::WindowStaysOnTopHint, on);
}

void AndroidAppPanel::orderFront()
{
    show();
    raise();
    activateWindow();
}

void AndroidAppPanel::mousePressEvent(QMouseEvent *event)
{
    // Presses that a child wants never come here.
    if (m_movableByBackground && event->button() == Qt::LeftButton)
        m_drag.pressed(*event);
    else
        QWidget::mousePressEvent(event);
}

void AndroidAppPanel::mouseMoveEvent(QMouseEvent *event)
{
    m_drag.move(*this, *event);
}

void AndroidAppPanel::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    // Presses at the edges are taken before any widget sees them.
    windowHandle()->removeEventFilter(this);
    windowHandle()->installEventFilter(this);
    declareShadow();
    // The window system's own hiding and showing, as of another desktop, changes nothing.
    if (!event->spontaneous())
        Q_EMIT shown();
}

void AndroidAppPanel::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    if (!event->spontaneous())
        Q_EMIT hidden();
}

void AndroidAppPanel::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::ActivationChange)
        keyStateChanged();
}

void AndroidAppPanel::keyStateChanged()
{
    m_grabWatch.reset();
    if (isActiveWindow() == m_isKey)
        return;
    // A window that is being resized must not take that for the loss of the keyboard and hide.
    if (m_isKey && isVisible() && m_platform.screens->keepsKeyboard(winId())) {
        m_grabWatch = m_platform.clock->after(grabPoll, [this] { keyStateChanged(); });
        return;
    }
    m_isKey = isActiveWindow();
    if (m_isKey)
        Q_EMIT becameKey();
    else
        Q_EMIT resignedKey();
}

void AndroidAppPanel::closeEvent(QCloseEvent *event)
{
    event->ignore();
    Q_EMIT closeRequested();
}

void AndroidAppPanel::moveEvent(QMoveEvent *event)
{
    QWidget::moveEvent(event);
    if (isVisible())
        Q_EMIT moved();
}

void AndroidAppPanel::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    declareShadow();
    const auto now = frame().size();
    if (isVisible() && isRounding(now))
        return;
    m_toldSize = now;
    if (isVisible())
        Q_EMIT resized();
}

bool AndroidAppPanel::isRounding(QSize size) const
{
    // At a broken scale the desktop gives sizes that are whole in points and in pixels, and a window that took them
    // over would be a point smaller each time it opens.
    const double scale = devicePixelRatioF();
    const auto off = size - m_toldSize;
    return scale != std::floor(scale) && std::abs(off.width()) <= 1 && std::abs(off.height()) <= 1;
}

void AndroidAppPanel::paintEvent(QPaintEvent *event)
{
    QPainter painter(this);
    painter.setClipRect(event->rect());
    if (m_isBlended)
        paintOutside(painter);
    else
        painter.fillRect(event->rect(), Palette::current(m_platform).windowBackground);
}

Qt::Edges AndroidAppPanel::edgesAt(QPointF point) const
{
    if (m_resizing == Resizing::fixed)
        return {};
    const QRectF frame = rect().marginsRemoved(shadowMargins());
    const double left = point.x() - frame.left();
    const double top = point.y() - frame.top();
    const double right = frame.right() - point.x();
    const double bottom = frame.bottom() - point.y();
    const bool onEdge = left < edgeReach || right < edgeReach || top < edgeReach || bottom < edgeReach;
    if (!onEdge)
        return {};
    Qt::Edges edges;
    edges.setFlag(Qt::LeftEdge, left < cornerReach && (left < edgeReach || top < edgeReach || bottom < edgeReach));
    edges.setFlag(Qt::RightEdge, right < cornerReach && (right < edgeReach || top < edgeReach || bottom < edgeReach));
    edges.setFlag(Qt::TopEdge, top < cornerReach && (top < edgeReach || left < edgeReach || right < edgeReach));
    edges.setFlag(
        Qt::BottomEdge, bottom < cornerReach && (bottom < edgeReach || left < edgeReach || right < edgeReach));
    return edges;
}

void AndroidAppPanel::showEdgeCursor(Qt::Edges edges)
{
    if (edges == m_cursorEdges)
        return;
    m_cursorEdges = edges;
    const bool horizontal = edges & (Qt::LeftEdge | Qt::RightEdge);
    const bool vertical = edges & (Qt::TopEdge | Qt::BottomEdge);
    if (!horizontal && !vertical)
        windowHandle()->unsetCursor();
    else if (!vertical)
        windowHandle()->setCursor(Qt::SizeHorCursor);
    else if (!horizontal)
        windowHandle()->setCursor(Qt::SizeVerCursor);
    else if (edges == (Qt::LeftEdge | Qt::TopEdge) || edges == (Qt::RightEdge | Qt::BottomEdge))
        windowHandle()->setCursor(Qt::SizeFDiagCursor);
    else
        windowHandle()->setCursor(Qt::SizeBDiagCursor);
}

bool AndroidAppPanel::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == windowHandle()) {
        if (event->type() == QEvent::MouseMove) {
            const auto *mouse = static_cast<QMouseEvent *>(event);
            if (mouse->buttons() == Qt::NoButton)
                showEdgeCursor(edgesAt(mouse->position()));
        } else if (event->type() == QEvent::MouseButtonPress) {
            const auto *mouse = static_cast<QMouseEvent *>(event);
            const auto edges = edgesAt(mouse->position());
            if (edges && mouse->button() == Qt::LeftButton && windowHandle()->startSystemResize(edges))
                return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace quillnest
