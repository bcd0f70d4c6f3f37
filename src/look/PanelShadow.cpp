#include "look/PanelShadow.h"

#include "look/Palette.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace quillnest
{

namespace
{

/// Side of a corner's square inside the frame, in points: what lies further in is the same along an edge.
constexpr int inside = windowCornerRadius + 16;
/// The part between the corners, which is stretched.
constexpr int middle = 2;
constexpr double darkest = 0.22;
constexpr double softness = 10.0;
constexpr double drop = 4.0;

/// How far a point lies outside a rounded rectangle; negative inside.
double distance(QPointF point, const QRectF &rect, double radius)
{
    const auto fromCenter = point - rect.center();
    const double x = std::abs(fromCenter.x()) - rect.width() / 2 + radius;
    const double y = std::abs(fromCenter.y()) - rect.height() / 2 + radius;
    return std::hypot(std::max(x, 0.0), std::max(y, 0.0)) + std::min(std::max(x, y), 0.0) - radius;
}

} // namespace

QImage PanelShadow::corners(double scale)
{
    const QRectF frame(reach.left(), reach.top(), 2 * inside + middle, 2 * inside + middle);
    const QSizeF size = frame.marginsAdded(reach).size();
    QImage image((size * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    for (int y = 0; y < image.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            const auto point = QPointF(x + 0.5, y + 0.5) / scale;
            const double out = std::max(0.0, distance(point, frame.translated(0, drop), windowCornerRadius));
            // A thin dark line right at the edge sets a light window off from a light ground.
            const double edge = distance(point, frame, windowCornerRadius);
            const double outline = 0.14 * std::clamp(1.0 - std::abs(edge), 0.0, 1.0);
            const double alpha = std::min(1.0, darkest * std::exp(-(out * out) / (softness * softness)) + outline);
            line[x] = qRgba(0, 0, 0, static_cast<int>(std::lround(255 * alpha)));
        }
    }
    return image;
}

void PanelShadow::paint(QPainter &painter, QRect frame) const
{
    const double scale = painter.device()->devicePixelRatioF();
    if (m_corners.isNull() || m_corners.devicePixelRatio() != scale)
        m_corners = corners(scale);
    const auto outer = frame.marginsAdded(reach);
    // Three columns and three rows: corner, stretched middle, corner.
    const auto cuts = [](int begin, int end, int first, int last) {
        return std::array<double, 4>{
            static_cast<double>(begin), static_cast<double>(begin + first), static_cast<double>(end - last),
            static_cast<double>(end)};
    };
    const int left = reach.left() + inside;
    const int right = reach.right() + inside;
    const int top = reach.top() + inside;
    const int bottom = reach.bottom() + inside;
    const auto toX = cuts(outer.left(), outer.left() + outer.width(), left, right);
    const auto toY = cuts(outer.top(), outer.top() + outer.height(), top, bottom);
    const auto fromX = cuts(0, left + middle + right, left, right);
    const auto fromY = cuts(0, top + middle + bottom, top, bottom);
    const auto part = [](const std::array<double, 4> &x, const std::array<double, 4> &y, std::size_t i, std::size_t j) {
        return QRectF(QPointF(x[i], y[j]), QPointF(x[i + 1], y[j + 1]));
    };
    painter.save();
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    for (std::size_t j = 0; j < 3; ++j) {
        for (std::size_t i = 0; i < 3; ++i) {
            const auto from = part(fromX, fromY, i, j);
            painter.drawImage(part(toX, toY, i, j), m_corners, QRectF(from.topLeft() * scale, from.size() * scale));
        }
    }
    painter.restore();
}

} // namespace quillnest
