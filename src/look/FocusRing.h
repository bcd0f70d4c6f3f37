#pragma once

#include <QColor>
#include <QRectF>

class QPainter;

namespace quillnest
{

/// How thick the ring around what has the keyboard is, in points.
constexpr double focusRingWidth = 2;

/// The ring around what has the keyboard. It lies within `area`, whose corners have that radius.
void paintFocusRing(QPainter &painter, const QRectF &area, double radius, const QColor &color);

} // namespace quillnest
