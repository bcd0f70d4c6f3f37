#pragma once

#include <cstdint>
#include <initializer_list>
#include <vector>

namespace quillnest
{

struct Point {
    double x = 0;
    double y = 0;

    bool operator==(const Point &) const = default;
    Point operator+(Point other) const { return {x + other.x, y + other.y}; }
    Point operator-(Point other) const { return {x - other.x, y - other.y}; }
    Point operator*(double factor) const { return {x * factor, y * factor}; }
};

/// A path of lines and curves: data, not yet a drawing. A point may lie anywhere, also at infinity; what can't be drawn
/// is the canvas's business.
class Path
{
public:
    enum class Verb : std::uint8_t {
        /// One point.
        move,
        line,
        /// A control point and the end.
        quadratic,
        /// Two control points and the end.
        cubic,
        /// None; the next segment starts where the closed subpath began.
        close,
    };

    void moveTo(Point point) { add(Verb::move, {point}); }
    // A segment needs a place to start at: on an empty path none of these does anything.
    void lineTo(Point end) { addSegment(Verb::line, {end}); }
    void quadraticTo(Point control, Point end) { addSegment(Verb::quadratic, {control, end}); }
    void cubicTo(Point first, Point second, Point end) { addSegment(Verb::cubic, {first, second, end}); }
    /// Nothing either where the subpath is closed already.
    void close()
    {
        if (!isEmpty() && m_verbs.back() != Verb::close)
            add(Verb::close, {});
    }

    /// Nothing in it, not even a move.
    bool isEmpty() const { return m_verbs.empty(); }

    const std::vector<Verb> &verbs() const { return m_verbs; }
    /// The points of all verbs, in order.
    const std::vector<Point> &points() const { return m_points; }

    bool operator==(const Path &) const = default;

private:
    void add(Verb verb, std::initializer_list<Point> points)
    {
        m_verbs.push_back(verb);
        m_points.insert(m_points.end(), points);
    }
    void addSegment(Verb verb, std::initializer_list<Point> points)
    {
        if (!isEmpty())
            add(verb, points);
    }

    std::vector<Verb> m_verbs;
    std::vector<Point> m_points;
};

} // namespace quillnest
