#pragma once

#include "platform/Canvas.h"

#include <vector>

namespace quillnest
{

/// Goes along a path whose points have been mapped, `points`, to whatever type of point: calls moveTo, lineTo, cubicTo
/// and close of the visitor, and asks for its current() point to make a cubic of each quadratic curve, so that there is
/// one kind of curve.
template <typename AnyPoint, typename Visitor>
void walkPath(const Path &path, const std::vector<AnyPoint> &points, Visitor &visitor)
{
    auto point = points.cbegin();
    for (const auto verb : path.verbs()) {
        switch (verb) {
        case Path::Verb::move:
            visitor.moveTo(*point++);
            break;
        case Path::Verb::line:
            visitor.lineTo(*point++);
            break;
        case Path::Verb::quadratic: {
            const auto start = visitor.current();
            const auto control = *point++;
            const auto end = *point++;
            visitor.cubicTo(start + (control - start) * (2.0 / 3), end + (control - end) * (2.0 / 3), end);
            break;
        }
        case Path::Verb::cubic: {
            const auto first = *point++;
            const auto second = *point++;
            visitor.cubicTo(first, second, *point++);
            break;
        }
        case Path::Verb::close:
            visitor.close();
            break;
        }
    }
}

} // namespace quillnest
