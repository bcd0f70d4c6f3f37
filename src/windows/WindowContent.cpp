#include "windows/WindowContent.h"

#include "base/QuillnestLayout.h"
#include "windows/AndroidVideoView.h"
#include "windows/HeaderView.h"
#include "windows/VideoInput.h"
#include "windows/WindowCorner.h"

#include <QEvent>

#include <algorithm>

namespace quillnest
{

WindowContent::WindowContent(const Platform &platform, const QString &title, QWidget *parent)
    : QWidget(parent)
    , m_header(new HeaderView(platform, title, this))
    , m_videoView(new AndroidVideoView(platform, this))
    , m_input(new VideoInput(platform, m_videoView))
    , m_leftCorner(new WindowCorner(WindowCorner::Side::left, this))
    , m_rightCorner(new WindowCorner(WindowCorner::Side::right, this))
{
    connect(m_input, &VideoInput::leaveRequested, m_videoView, &AndroidVideoView::passFocusOn);
}

QSize WindowContent::pictureSize(QSize content)
{
    return {content.width(), std::max(0, content.height() - QuillnestLayout::headerHeight)};
}

QRect WindowContent::pictureArea() const
{
    return {QPoint(0, QuillnestLayout::headerHeight), pictureSize(size())};
}

void WindowContent::put(QWidget *overlay, Place place)
{
    overlay->setParent(this);
    overlay->installEventFilter(this);
    std::erase_if(m_overlays, [overlay](const Overlay &entry) { return !entry.widget || entry.widget == overlay; });
    // Those of a place stand together, the places in the order of their names.
    const auto behind = std::find_if(
        m_overlays.begin(), m_overlays.end(), [place](const Overlay &entry) { return entry.place > place; });
    layOut(*m_overlays.insert(behind, Overlay{overlay, place}));
    stack();
}

void WindowContent::stack()
{
    for (const auto &overlay : m_overlays) {
        if (overlay.widget)
            overlay.widget->raise();
    }
    m_leftCorner->raise();
    m_rightCorner->raise();
}

void WindowContent::layOut()
{
    const auto picture = pictureArea();
    m_header->setGeometry(0, 0, width(), QuillnestLayout::headerHeight);
    m_videoView->setGeometry(picture);
    for (const auto &overlay : m_overlays)
        layOut(overlay);
    m_leftCorner->move(0, height() - m_leftCorner->height());
    m_rightCorner->move(width() - m_rightCorner->width(), height() - m_rightCorner->height());
}

void WindowContent::layOut(const Overlay &overlay) const
{
    if (!overlay.widget)
        return;
    auto area = pictureArea();
    if (overlay.place == Place::belowHeader) {
        area.adjust(bannerSide, bannerTop, -bannerSide, 0);
        const auto *widget = overlay.widget.data();
        area.setHeight(
            widget->hasHeightForWidth() ? widget->heightForWidth(area.width()) : widget->sizeHint().height());
    }
    overlay.widget->setGeometry(area);
}

bool WindowContent::event(QEvent *event)
{
    // An overlay wants another size.
    if (event->type() == QEvent::LayoutRequest)
        layOut();
    return QWidget::event(event);
}

bool WindowContent::eventFilter(QObject *watched, QEvent *event)
{
    // What was changed while it was hidden asked for no layout.
    if (event->type() == QEvent::Show) {
        for (const auto &overlay : m_overlays) {
            if (overlay.widget == watched)
                layOut(overlay);
        }
    }
    return QWidget::eventFilter(watched, event);
}

void WindowContent::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    layOut();
}

void WindowContent::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    const bool isRound = window()->testAttribute(Qt::WA_TranslucentBackground);
    m_leftCorner->setVisible(isRound);
    m_rightCorner->setVisible(isRound);
}

} // namespace quillnest
