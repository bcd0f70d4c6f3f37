#include "look/SlimScrollBar.h"

#include <QAbstractScrollArea>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>

#include <algorithm>
#include <cmath>

namespace quillnest
{

namespace
{
constexpr int width = 10;
constexpr int thumbWidth = 4;
constexpr double leastThumb = 28;
} // namespace

SlimScrollBar::SlimScrollBar(QAbstractScrollArea &area, const Look &look) : QWidget(&area), m_area(area), m_look(look)
{
    area.installEventFilter(this);
    const auto *bar = area.verticalScrollBar();
    connect(bar, &QScrollBar::rangeChanged, this, &SlimScrollBar::place);
    connect(bar, &QScrollBar::valueChanged, this, qOverload<>(&QWidget::update));
    place();
}

void SlimScrollBar::place()
{
    const auto *bar = m_area.verticalScrollBar();
    const bool mirrored = m_area.layoutDirection() == Qt::RightToLeft;
    setGeometry(mirrored ? 0 : m_area.width() - quillnest::width, 0, quillnest::width, m_area.height());
    setVisible(bar->maximum() > bar->minimum());
    raise();
    update();
}

QRectF SlimScrollBar::thumb() const
{
    const auto *bar = m_area.verticalScrollBar();
    const double range = bar->maximum() - bar->minimum();
    if (range <= 0)
        return {};
    const double room = height() - 4;
    const double length = std::max(leastThumb, room * bar->pageStep() / (range + bar->pageStep()));
    const double top = 2 + (room - length) * (bar->value() - bar->minimum()) / range;
    return {(quillnest::width - thumbWidth) / 2.0, top, thumbWidth, length};
}

void SlimScrollBar::paintEvent(QPaintEvent *)
{
    auto color = m_look.colors.label;
    color.setAlphaF(m_grip ? 0.5F : underMouse() ? 0.38F : 0.22F);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(thumb(), thumbWidth / 2.0, thumbWidth / 2.0);
}

bool SlimScrollBar::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Resize)
        place();
    return QWidget::eventFilter(watched, event);
}

void SlimScrollBar::mousePressEvent(QMouseEvent *event)
{
    const auto area = thumb();
    const double y = event->position().y();
    auto *bar = m_area.verticalScrollBar();
    if (y >= area.top() && y <= area.bottom())
        m_grip = y - area.top();
    else
        bar->setValue(bar->value() + (y < area.top() ? -bar->pageStep() : bar->pageStep()));
    update();
}

void SlimScrollBar::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_grip)
        return;
    auto *bar = m_area.verticalScrollBar();
    const double room = height() - 4 - thumb().height();
    if (room > 0)
        bar->setValue(
            bar->minimum()
            + static_cast<int>(
                std::lround((event->position().y() - *m_grip - 2) / room * (bar->maximum() - bar->minimum()))));
}

void SlimScrollBar::mouseReleaseEvent(QMouseEvent *)
{
    m_grip.reset();
    update();
}

void SlimScrollBar::enterEvent(QEnterEvent *)
{
    update();
}

void SlimScrollBar::leaveEvent(QEvent *)
{
    update();
}

} // namespace quillnest
