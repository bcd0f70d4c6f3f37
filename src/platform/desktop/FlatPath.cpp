#include "platform/desktop/FlatPath.h"

#include "platform/desktop/PathWalk.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace quillnest
{

namespace
{
/// How far a line may lie from its curve, in pixels: less than anyone sees of an antialiased edge.
constexpr double tolerance = 0.02;
/// Past this no drawing differs, and products of two of them are still finite.
constexpr double farAway = 1e100;
constexpr int maximumDepth = 40;
constexpr int maximumCurvePoints = 1'000'000;

Point middle(Point p, Point q)
{
    return {(p.x + q.x) / 2, (p.y + q.y) / 2};
}

/// Follows a path's verbs and collects its subpaths as polygons.
class Flattener
{
public:
    explicit Flattener(const Box &box) : m_box(box) { }

    void moveTo(Point point)
    {
        finish();
        m_start = m_current = point;
    }

    void lineTo(Point end)
    {
        begin();
        add(end);
    }

    void cubicTo(Point first, Point second, Point end)
    {
        begin();
        const Point start = m_current;
        curve(start, first, second, end, 0);
    }

    void close()
    {
        finish();
        m_current = m_start;
    }

    Polygons take()
    {
        finish();
        return std::move(m_polygons);
    }

    Point current() const { return m_current; }

private:
    void begin()
    {
        if (m_polygon.empty())
            m_polygon.push_back(m_current);
    }

    void add(Point point)
    {
        m_polygon.push_back(point);
        m_current = point;
    }

    void finish()
    {
        // Less than three points have no area.
        if (m_polygon.size() > 2)
            m_polygons.push_back(std::move(m_polygon));
        m_polygon.clear();
    }

    void curve(Point p0, Point p1, Point p2, Point p3, int depth)
    {
        const auto bend
            = [](Point p, Point q, Point r) { return std::hypot(p.x - 2 * q.x + r.x, p.y - 2 * q.y + r.y); };
        // The bound for the distance between a cubic and its chord from the second differences of its points.
        const bool flat = std::max(bend(p0, p1, p2), bend(p1, p2, p3)) * 0.75 <= tolerance;
        if (flat || depth == maximumDepth || m_curvePoints >= maximumCurvePoints || outside(p0, p1, p2, p3)) {
            ++m_curvePoints;
            add(p3);
            return;
        }
        const auto p01 = middle(p0, p1);
        const auto p12 = middle(p1, p2);
        const auto p23 = middle(p2, p3);
        const auto p012 = middle(p01, p12);
        const auto p123 = middle(p12, p23);
        const auto centre = middle(p012, p123);
        curve(p0, p01, p012, centre, depth + 1);
        curve(centre, p123, p23, p3, depth + 1);
    }

    /// Whether all lies beyond one side of the box, where its course makes no difference.
    bool outside(Point p0, Point p1, Point p2, Point p3) const
    {
        const auto [left, right] = std::minmax({p0.x, p1.x, p2.x, p3.x});
        const auto [top, bottom] = std::minmax({p0.y, p1.y, p2.y, p3.y});
        return right < m_box.left || left > m_box.right || bottom < m_box.top || top > m_box.bottom;
    }

    const Box m_box;
    Polygons m_polygons;
    std::vector<Point> m_polygon;
    Point m_start;
    Point m_current;
    int m_curvePoints = 0;
};

/// One side of the box: the part of the polygon for which `coordinate`, times `sign`, isn't above the limit. What
/// leaves and comes back is joined along the side, so the winding inside stays.
std::vector<Point> cut(const std::vector<Point> &polygon, double Point::*coordinate, double limit, double sign)
{
    const auto other = coordinate == &Point::x ? &Point::y : &Point::x;
    const auto inside = [&](Point point) { return (point.*coordinate - limit) * sign <= 0; };
    std::vector<Point> result;
    result.reserve(polygon.size() + 4);
    Point previous = polygon.back();
    for (const Point point : polygon) {
        if (inside(previous) != inside(point)) {
            const double share = (limit - previous.*coordinate) / (point.*coordinate - previous.*coordinate);
            Point crossing;
            crossing.*coordinate = limit;
            crossing.*other = previous.*other + share * (point.*other - previous.*other);
            result.push_back(crossing);
        }
        if (inside(point))
            result.push_back(point);
        previous = point;
    }
    return result;
}

void clip(Polygons &polygons, const Box &box)
{
    for (auto &polygon : polygons) {
        const struct {
            double Point::*coordinate;
            double limit;
            double sign;
        } sides[] = {
            {&Point::x, box.left, -1}, {&Point::x, box.right, 1}, {&Point::y, box.top, -1}, {&Point::y, box.bottom, 1}};
        for (const auto &side : sides) {
            if (!polygon.empty())
                polygon = cut(polygon, side.coordinate, side.limit, side.sign);
        }
    }
    std::erase_if(polygons, [](const auto &polygon) { return polygon.size() < 3; });
}
} // namespace

Affine Affine::after(const Affine &first) const
{
    const auto origin = map({first.tx, first.ty});
    return {
        a * first.a + c * first.b,
        b * first.a + d * first.b,
        a * first.c + c * first.d,
        b * first.c + d * first.d,
        origin.x,
        origin.y};
}

std::optional<Affine> Affine::inverted() const
{
    const double determinant = a * d - b * c;
    Affine inverse{d / determinant, -b / determinant, -c / determinant, a / determinant, 0, 0};
    const auto origin = inverse.map({tx, ty});
    inverse.tx = -origin.x;
    inverse.ty = -origin.y;
    const double numbers[] = {determinant, inverse.a, inverse.b, inverse.c, inverse.d, inverse.tx, inverse.ty};
    if (determinant == 0
        || !std::all_of(std::begin(numbers), std::end(numbers), [](double n) { return std::isfinite(n); }))
        return std::nullopt;
    return inverse;
}

double Affine::stretch() const
{
    return std::max(std::hypot(a, b), std::hypot(c, d));
}

Box boundsOf(const Polygons &polygons)
{
    constexpr double infinite = std::numeric_limits<double>::infinity();
    Box box{infinite, infinite, -infinite, -infinite};
    for (const auto &polygon : polygons) {
        for (const auto point : polygon) {
            box.left = std::min(box.left, point.x);
            box.top = std::min(box.top, point.y);
            box.right = std::max(box.right, point.x);
            box.bottom = std::max(box.bottom, point.y);
        }
    }
    return box.left <= box.right ? box : Box();
}

std::optional<Polygons> flatten(const Path &path, const Affine &map, const Box &box)
{
    std::vector<Point> points;
    points.reserve(path.points().size());
    for (const auto point : path.points()) {
        const auto mapped = map.map(point);
        if (!std::isfinite(mapped.x) || !std::isfinite(mapped.y))
            return std::nullopt;
        points.push_back({std::clamp(mapped.x, -farAway, farAway), std::clamp(mapped.y, -farAway, farAway)});
    }

    Flattener flattener(box);
    walkPath(path, points, flattener);

    auto polygons = flattener.take();
    const auto bounds = boundsOf(polygons);
    if (bounds.left < box.left || bounds.top < box.top || bounds.right > box.right || bounds.bottom > box.bottom)
        clip(polygons, box);
    return polygons;
}

} // namespace quillnest
