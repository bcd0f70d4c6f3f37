#pragma once

#include <QPainterPath>
#include <QRectF>

namespace quillnest
{

/// A rectangle whose corners begin to bend gently: the curvature grows from nothing, where an arc's would jump. The
/// corners pass through the middles of the arcs of that radius; with half the side as the radius the shape is a circle.
QPainterPath continuousRectangle(const QRectF &area, double radius);

} // namespace quillnest
