#pragma once

#include "platform/Canvas.h"

#include <optional>

namespace quillnest
{

struct Pen {
    double width = 1;
    LineCap cap = LineCap::butt;
    LineJoin join = LineJoin::miter;
};

/// The area that the pen covers along the path, enlarged by a factor that brings it to about the size in pixels at
/// which it is drawn, for that is what the smoothness of curves goes by. To be filled by the winding rule. A subpath
/// without length is a dot of the pen's size with round and square caps and nothing with butt caps; one without a
/// segment is nothing. Absent if the width isn't above 0 or a number isn't finite.
std::optional<Path> strokeOutline(const Path &path, const Pen &pen, double enlargement);

/// An ellipse that fills the rectangle.
Path ellipsePath(const Rect &rect);
Path rectPath(const Rect &rect);

} // namespace quillnest
