#pragma once

#include "package/BinaryXml.h"
#include "platform/Canvas.h"

#include <variant>

namespace quillnest
{

class IconSource;

/// What drawables are painted with: colours and gradients, given as they stand or by way of other resources. The thread
/// is the source's.
namespace IconPaint
{
/// A gradient with its place, in the coordinates of the path that it fills.
struct PlacedGradient {
    Gradient gradient;
    /// The centre, if it is radial.
    Point start;
    Point end;
    bool radial = false;
    double radius = 0;

    bool operator==(const PlacedGradient &) const = default;
};

/// What a fill or a stroke is made with.
using Paint = std::variant<Color, PlacedGradient>;

/// The colour or gradient that an attribute names, also by way of other resources.
std::optional<Paint> paint(IconSource &source, const BinaryXml::Attr *attr);

/// The paint that a gradient element describes.
std::optional<Paint> gradient(IconSource &source, const BinaryXml::Node &node);
} // namespace IconPaint

} // namespace quillnest
