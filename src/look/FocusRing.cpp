#include "look/FocusRing.h"

#include "look/ContinuousCorners.h"

#include <QPainter>

namespace quillnest
{

void paintFocusRing(QPainter &painter, const QRectF &area, double radius, const QColor &color)
{
    constexpr double half = focusRingWidth / 2;
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(color, focusRingWidth));
    painter.drawPath(continuousRectangle(area.adjusted(half, half, -half, -half), radius - half));
}

} // namespace quillnest
