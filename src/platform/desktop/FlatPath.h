#pragma once

#include "platform/Canvas.h"

#include <optional>
#include <vector>

namespace quillnest
{

/// (x, y) becomes (a·x + c·y + tx, b·x + d·y + ty).
struct Affine {
    double a = 1;
    double b = 0;
    double c = 0;
    double d = 1;
    double tx = 0;
    double ty = 0;

    Point map(Point point) const { return {a * point.x + c * point.y + tx, b * point.x + d * point.y + ty}; }

    /// What maps by `first` and then by this.
    Affine after(const Affine &first) const;

    /// Absent if there is none whose numbers are finite.
    std::optional<Affine> inverted() const;

    /// About how much longer a length gets, at most.
    double stretch() const;
};

/// What of the plane matters; x and y grow from the first corner to the second.
struct Box {
    double left = 0;
    double top = 0;
    double right = 0;
    double bottom = 0;
};

/// Closed polygons; the last point of each is joined to its first.
using Polygons = std::vector<std::vector<Point>>;

/// The area of a path as polygons in mapped coordinates that fill alike inside the box, by either rule, and don't reach
/// beyond it. Curves become at most about a million lines in all. Absent if a coordinate isn't finite, before or after
/// the mapping.
std::optional<Polygons> flatten(const Path &path, const Affine &map, const Box &box);

/// The smallest box about all points; a box of nothing if there are none.
Box boundsOf(const Polygons &polygons);

} // namespace quillnest
