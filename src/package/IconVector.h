#pragma once

#include "package/APKIconExtractor.h"

#include <memory>
#include <span>
#include <variant>

namespace quillnest
{

/// Draws Android's XML drawables straight from their compiled form: vectors, insets, plain shapes and colours. What it
/// doesn't know is passed over. One call stands alone; the thread is the source's.
namespace IconVector
{
/// One element with what lies in it, in document order.
struct Node {
    std::string name;
    std::map<std::string, APKIconExtractor::Attr> attrs;
    std::vector<std::unique_ptr<Node>> children;
};

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

/// The picture that a compiled XML file draws, 192 by 192 pixels; absent if it draws nothing. `depth` counts the
/// resources that led to this file.
std::optional<Image> render(IconSource &source, ByteView bytes, int depth);

/// Appends the files that the paints of a compiled XML file lie in, for `IconSource::prefetch`.
void appendPaintFiles(IconSource &source, ByteView bytes, std::vector<std::string> &files);

/// The element at the root with all that it holds; elements nested deeper than any real file's are left out.
std::unique_ptr<Node> tree(IconSource &source, ByteView bytes);

/// Draws a vector's elements; true if anything was painted.
bool draw(IconSource &source, Canvas &canvas, std::span<const std::unique_ptr<Node>> nodes);

/// The colour or gradient that an attribute names, also by way of other resources.
std::optional<Paint> paint(IconSource &source, const APKIconExtractor::Attr *attr);

/// The paint that a gradient element describes.
std::optional<Paint> gradient(IconSource &source, const Node &node);

/// An attribute as a number: floats, integers, dimensions and fractions, whose units are ignored. Absent for all else,
/// so also for a reference, which is not followed.
std::optional<double> floatValue(const APKIconExtractor::Attr *attr);
} // namespace IconVector

} // namespace quillnest
