#include "platform/desktop/StrokeOutline.h"

#include "platform/desktop/PathWalk.h"

#include <QPainterPath>
#include <QPainterPathStroker>

#include <algorithm>
#include <cmath>

namespace quillnest
{

namespace
{
constexpr double miterLimit = 10;
/// The stroker multiplies coordinates with each other; past this nothing that is drawn differs.
constexpr double farAway = 1e60;

/// How far a line may lie from its curve, in pixels.
constexpr double tolerance = 0.02;
constexpr int maximumLines = 1'000'000;
constexpr int maximumLinesOfCurve = 512;

/// The path as the stroker takes it. Curves are lines by then: where the pen is wider than a curve's bow the stroker's
/// own curves leave a hole in the area. Subpaths without length are not in it, the stroker would leave them out: their
/// places are handed out apart.
class StrokerPath
{
public:
    explicit StrokerPath(double penWidth) : m_penWidth(penWidth) { }

    void moveTo(QPointF point)
    {
        finish(false);
        m_start = m_end = point;
    }
    void lineTo(QPointF end)
    {
        begin();
        m_subpath.lineTo(end);
        reach(end);
    }
    void cubicTo(QPointF first, QPointF second, QPointF end)
    {
        const QPointF start = m_end;
        const int count = std::clamp(lines(start, first, second, end), 1, std::max(1, maximumLines - m_lines));
        m_lines += count;
        for (int i = 1; i < count; ++i) {
            const double t = static_cast<double>(i) / count;
            const double u = 1 - t;
            lineTo(start * (u * u * u) + first * (3 * u * u * t) + second * (3 * u * t * t) + end * (t * t * t));
        }
        lineTo(end);
    }
    void close()
    {
        begin();
        finish(true);
        m_end = m_start;
    }
    void finish(bool closed)
    {
        if (m_begun && m_hasLength) {
            if (closed)
                m_subpath.closeSubpath();
            else
                keepOpen();
            path.addPath(m_subpath);
        } else if (m_begun) {
            dots.push_back(m_start);
        }
        m_begun = m_hasLength = false;
    }

    QPointF current() const { return m_end; }

    QPainterPath path;
    std::vector<QPointF> dots;

private:
    void begin()
    {
        if (m_begun)
            return;
        m_begun = true;
        m_subpath = QPainterPath(m_start);
    }

    /// How many lines stand for a curve so that neither it nor the pen's edge on its outside shows corners.
    int lines(QPointF p0, QPointF p1, QPointF p2, QPointF p3) const
    {
        const auto bend = [](QPointF p, QPointF q, QPointF r) {
            return std::hypot(p.x() - 2 * q.x() + r.x(), p.y() - 2 * q.y() + r.y());
        };
        const auto turn = [](QPointF from, QPointF to) {
            const double cross = from.x() * to.y() - from.y() * to.x();
            const double dot = from.x() * to.x() + from.y() * to.y();
            return std::abs(std::atan2(cross, dot));
        };
        const double forCurve = std::sqrt(std::max(bend(p0, p1, p2), bend(p1, p2, p3)) * 0.75 / tolerance);
        const double turning = turn(p1 - p0, p2 - p1) + turn(p2 - p1, p3 - p2) + turn(p1 - p0, p3 - p2);
        const double forPen = turning * std::sqrt(m_penWidth / 2 / (8 * tolerance));
        return static_cast<int>(std::min(std::ceil(forCurve + forPen), static_cast<double>(maximumLinesOfCurve)));
    }

    void reach(QPointF point)
    {
        m_hasLength = m_hasLength || point.x() != m_start.x() || point.y() != m_start.y();
        m_end = point;
    }

    /// The stroker joins ends that lie at the same place; those of an open subpath have caps.
    void keepOpen()
    {
        const auto last = m_subpath.elementCount() - 1;
        if (m_end.x() != m_start.x() || m_end.y() != m_start.y())
            return;
        m_subpath.setElementPositionAt(last, m_end.x() + std::max(1e-6, std::abs(m_end.x()) * 1e-9), m_end.y());
    }

    const double m_penWidth;
    int m_lines = 0;
    QPainterPath m_subpath;
    QPointF m_start;
    QPointF m_end;
    bool m_begun = false;
    bool m_hasLength = false;
};

std::optional<StrokerPath> strokerPath(const Path &path, double penWidth, double enlargement)
{
    std::vector<QPointF> points;
    points.reserve(path.points().size());
    for (const auto original : path.points()) {
        const auto point = original * enlargement;
        if (!std::isfinite(point.x) || !std::isfinite(point.y))
            return std::nullopt;
        points.emplace_back(std::clamp(point.x, -farAway, farAway), std::clamp(point.y, -farAway, farAway));
    }
    StrokerPath result(penWidth);
    walkPath(path, points, result);
    result.finish(false);
    return result;
}

Point from(const QPainterPath::Element &element)
{
    return {element.x, element.y};
}

void append(Path &path, const QPainterPath &outline)
{
    for (int i = 0; i < outline.elementCount(); ++i) {
        const auto element = outline.elementAt(i);
        switch (element.type) {
        case QPainterPath::MoveToElement:
            path.moveTo(from(element));
            break;
        case QPainterPath::LineToElement:
            path.lineTo(from(element));
            break;
        case QPainterPath::CurveToElement:
            path.cubicTo(from(element), from(outline.elementAt(i + 1)), from(outline.elementAt(i + 2)));
            i += 2;
            break;
        case QPainterPath::CurveToDataElement:
            break;
        }
    }
}

void append(Path &path, const Path &more)
{
    auto point = more.points().cbegin();
    for (const auto verb : more.verbs()) {
        if (verb == Path::Verb::move) {
            path.moveTo(*point++);
        } else if (verb == Path::Verb::line) {
            path.lineTo(*point++);
        } else if (verb == Path::Verb::cubic) {
            path.cubicTo(point[0], point[1], point[2]);
            point += 3;
        } else {
            path.close();
        }
    }
}
} // namespace

Path rectPath(const Rect &rect)
{
    Path path;
    path.moveTo({rect.x, rect.y});
    path.lineTo({rect.x + rect.width, rect.y});
    path.lineTo({rect.x + rect.width, rect.y + rect.height});
    path.lineTo({rect.x, rect.y + rect.height});
    path.close();
    return path;
}

Path ellipsePath(const Rect &rect)
{
    // How far the control points of a quarter of a circle of radius 1 lie from its ends.
    constexpr double arm = 0.5522847498;
    const double rx = rect.width / 2;
    const double ry = rect.height / 2;
    const Point centre{rect.x + rx, rect.y + ry};
    const auto at = [&](double x, double y) { return Point{centre.x + x * rx, centre.y + y * ry}; };
    Path path;
    path.moveTo(at(1, 0));
    path.cubicTo(at(1, arm), at(arm, 1), at(0, 1));
    path.cubicTo(at(-arm, 1), at(-1, arm), at(-1, 0));
    path.cubicTo(at(-1, -arm), at(-arm, -1), at(0, -1));
    path.cubicTo(at(arm, -1), at(1, -arm), at(1, 0));
    path.close();
    return path;
}

std::optional<Path> strokeOutline(const Path &path, const Pen &pen, double enlargement)
{
    if (!(pen.width > 0) || !std::isfinite(pen.width * enlargement))
        return std::nullopt;
    const double width = std::min(pen.width * enlargement, farAway);
    const auto source = strokerPath(path, width, enlargement);
    if (!source)
        return std::nullopt;

    QPainterPathStroker stroker;
    stroker.setWidth(width);
    // Of round joins and caps.
    stroker.setCurveThreshold(0.1);
    stroker.setCapStyle(
        pen.cap == LineCap::round        ? Qt::RoundCap
            : pen.cap == LineCap::square ? Qt::SquareCap
                                         : Qt::FlatCap);
    // The other miter join of Qt cuts a long corner off at the limit, this one bevels it, and its limit is the length
    // of the corner in widths of the pen.
    stroker.setJoinStyle(
        pen.join == LineJoin::round       ? Qt::RoundJoin
            : pen.join == LineJoin::bevel ? Qt::BevelJoin
                                          : Qt::SvgMiterJoin);
    stroker.setMiterLimit(miterLimit);

    Path outline;
    append(outline, stroker.createStroke(source->path));
    for (const auto dot : source->dots) {
        const Rect box{dot.x() - width / 2, dot.y() - width / 2, width, width};
        if (pen.cap == LineCap::round)
            append(outline, ellipsePath(box));
        else if (pen.cap == LineCap::square)
            append(outline, rectPath(box));
    }
    return outline;
}

} // namespace quillnest
