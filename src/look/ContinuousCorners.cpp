#include "look/ContinuousCorners.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace quillnest
{

namespace
{
/// How far a corner reaches along the sides, in radii, where there is room.
constexpr double reach = 1.5;
constexpr int steps = 24;
} // namespace

QPainterPath continuousRectangle(const QRectF &area, double radius)
{
    const double half = std::min(area.width(), area.height()) / 2;
    radius = std::min(radius, half);
    QPainterPath path;
    if (radius <= 0) {
        path.addRect(area);
        return path;
    }
    const double extent = std::min(reach * radius, half);
    // A corner is a quarter of |x|^n + |y|^n = 1, scaled to the extent. The exponent follows from the point on the
    // diagonal, which is to be the arc's; it is 2, a circle's, where the extent is the radius.
    const double inset = radius * (1 - std::numbers::sqrt2 / 2);
    const double power = 2 / (-1 / std::log2(1 - inset / extent));

    struct Corner {
        QPointF center;
        double x;
        double y;
        bool swapped;
    };
    const double left = area.left() + extent;
    const double right = area.right() - extent;
    const double top = area.top() + extent;
    const double bottom = area.bottom() - extent;
    const std::array<Corner, 4> corners{
        {{{right, top}, 1, -1, false},
         {{right, bottom}, 1, 1, true},
         {{left, bottom}, -1, 1, false},
         {{left, top}, -1, -1, true}}};
    for (const auto &corner : corners) {
        for (int step = 0; step <= steps; ++step) {
            // From the horizontal side to the vertical one, or back.
            const double part
                = corner.swapped ? 1 - static_cast<double>(step) / steps : static_cast<double>(step) / steps;
            const double angle = part * std::numbers::pi / 2;
            const QPointF point(
                corner.center.x() + corner.x * extent * std::pow(std::sin(angle), power),
                corner.center.y() + corner.y * extent * std::pow(std::cos(angle), power));
            if (path.elementCount() == 0)
                path.moveTo(point);
            else
                path.lineTo(point);
        }
    }
    path.closeSubpath();
    return path;
}

} // namespace quillnest
