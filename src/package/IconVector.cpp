#include "package/IconVector.h"

#include "package/APKIconExtractor.h"
#include "package/IconPaint.h"
#include "package/IconSource.h"
#include "package/PathData.h"
#include "package/ValueType.h"
#include "package/XmlValues.h"

#include <algorithm>
#include <array>
#include <numbers>

namespace quillnest
{

namespace
{

using APKIconExtractor::iconSize;
using BinaryXml::Node;
using IconPaint::PlacedGradient;
using XmlValues::attribute;
using XmlValues::data;
using XmlValues::number;

/// The side of the canvas that adaptive icons are designed on.
constexpr double adaptiveUnits = 108;

// Of drawing, in microseconds on a slow machine.
constexpr std::size_t canvasCost = 300;
constexpr std::size_t fillCost = 120;
constexpr std::size_t strokeCost = 300;
constexpr std::size_t segmentCost = 8;
constexpr std::size_t gradientCost = 400;
constexpr std::size_t clipCost = 300;
constexpr std::size_t groupCost = 2;

const Node *child(const Node &node, std::string_view name)
{
    for (const auto &candidate : node.children) {
        if (candidate->name == name)
            return candidate.get();
    }
    return nullptr;
}

std::unique_ptr<Canvas> iconCanvas(IconSource &source)
{
    return source.spend(canvasCost) ? source.drawing().canvas(iconSize, iconSize) : nullptr;
}

/// The path of a node on a budget: long texts and many segments cost.
std::optional<Path> pathOf(IconSource &source, const Node &node)
{
    const auto *text = attribute(node, "pathData");
    if (!text || !text->string || !source.spend(text->string->size() / 16))
        return std::nullopt;
    auto path = PathData::parse(*text->string);
    if (!path || !source.spend(path->verbs().size() * segmentCost))
        return std::nullopt;
    return path;
}

void paintPlaced(Canvas &canvas, const PlacedGradient &placed)
{
    if (placed.radial)
        canvas.drawRadialGradient(placed.gradient, placed.start, placed.radius);
    else
        canvas.drawLinearGradient(placed.gradient, placed.start, placed.end);
}

bool fillPath(IconSource &source, Canvas &canvas, const Node &node, const Path &path, FillRule rule)
{
    const auto fill = IconPaint::paint(source, attribute(node, "fillColor"));
    if (!fill || !source.spend(std::holds_alternative<Color>(*fill) ? fillCost : gradientCost))
        return false;
    canvas.saveState();
    canvas.setAlpha(number(node, "fillAlpha", 1));
    if (const auto *color = std::get_if<Color>(&*fill)) {
        canvas.setFillColor(*color);
        canvas.fill(path, rule);
    } else {
        canvas.clip(path, rule);
        paintPlaced(canvas, std::get<PlacedGradient>(*fill));
    }
    canvas.restoreState();
    return true;
}

bool strokePath(IconSource &source, Canvas &canvas, const Node &node, const Path &path)
{
    constexpr std::array caps{LineCap::butt, LineCap::round, LineCap::square};
    constexpr std::array joins{LineJoin::miter, LineJoin::round, LineJoin::bevel};
    constexpr std::size_t outlineCost = 40;
    // The stroker takes a curve as hundreds of lines.
    constexpr std::size_t curveCost = 150;

    const auto stroke = IconPaint::paint(source, attribute(node, "strokeColor"));
    const auto *color = stroke ? std::get_if<Color>(&*stroke) : nullptr;
    const double width = number(node, "strokeWidth", 0);
    const auto curves = std::count_if(path.verbs().begin(), path.verbs().end(), [](Path::Verb verb) {
        return verb == Path::Verb::quadratic || verb == Path::Verb::cubic;
    });
    const auto cost = strokeCost + path.verbs().size() * outlineCost + static_cast<std::size_t>(curves) * curveCost;
    if (!color || !(width > 0) || !source.spend(cost))
        return false;
    canvas.saveState();
    canvas.setAlpha(number(node, "strokeAlpha", 1));
    canvas.setStrokeColor(*color);
    canvas.setLineWidth(width);
    canvas.setLineCap(caps[data(node, "strokeLineCap") % caps.size()]);
    canvas.setLineJoin(joins[data(node, "strokeLineJoin") % joins.size()]);
    canvas.stroke(path);
    canvas.restoreState();
    return true;
}

bool drawPath(IconSource &source, Canvas &canvas, const Node &node)
{
    const auto path = pathOf(source, node);
    if (!path)
        return false;
    const auto rule = data(node, "fillType") == 1 ? FillRule::evenOdd : FillRule::winding;
    const bool filled = fillPath(source, canvas, node, *path, rule);
    const bool stroked = strokePath(source, canvas, node, *path);
    return filled || stroked;
}

bool drawGroup(IconSource &source, Canvas &canvas, const Node &node)
{
    const double pivotX = number(node, "pivotX", 0);
    const double pivotY = number(node, "pivotY", 0);
    canvas.saveState();
    canvas.translate(pivotX + number(node, "translateX", 0), pivotY + number(node, "translateY", 0));
    canvas.rotate(number(node, "rotation", 0) * std::numbers::pi / 180);
    canvas.scale(number(node, "scaleX", 1), number(node, "scaleY", 1));
    canvas.translate(-pivotX, -pivotY);
    const bool drew = IconVector::draw(source, canvas, node.children);
    canvas.restoreState();
    return drew;
}

std::optional<Image> drawVector(IconSource &source, const Node &root)
{
    const double width = number(root, "viewportWidth", adaptiveUnits);
    const double height = number(root, "viewportHeight", adaptiveUnits);
    if (!(width > 0) || !(height > 0))
        return std::nullopt;
    const auto canvas = iconCanvas(source);
    if (!canvas)
        return std::nullopt;
    // The viewport fills the canvas, its y axis pointing downward.
    canvas->translate(0, iconSize);
    canvas->scale(iconSize / width, -iconSize / height);
    if (!IconVector::draw(source, *canvas, root.children))
        return std::nullopt;
    return canvas->image();
}

/// How much of the canvas a side's inset takes, from 0 to 1 for all that makes sense.
double insetShare(const Node &root, const char *side)
{
    const auto *attr = attribute(root, side);
    if (!attr)
        attr = attribute(root, "inset");
    if (!attr)
        return 0;
    const auto value = XmlValues::floatValue(attr).value_or(0);
    return attr->type == ValueType::fraction ? value : value / adaptiveUnits;
}

std::optional<Image> drawInset(IconSource &source, const Node &root, int depth)
{
    const auto *drawable = attribute(root, "drawable");
    if (!drawable || drawable->type != ValueType::reference)
        return std::nullopt;
    const auto inner = APKIconExtractor::render(source, drawable->data, depth + 1);
    if (!inner)
        return std::nullopt;
    const auto canvas = iconCanvas(source);
    if (!canvas)
        return std::nullopt;
    const double left = insetShare(root, "insetLeft") * iconSize;
    const double right = insetShare(root, "insetRight") * iconSize;
    const double top = insetShare(root, "insetTop") * iconSize;
    const double bottom = insetShare(root, "insetBottom") * iconSize;
    canvas->drawImage(*inner, {left, bottom, iconSize - left - right, iconSize - top - bottom});
    return canvas->image();
}

/// A root that is one plain colour, as a square or an ellipse.
std::optional<Image> drawColor(IconSource &source, const Node &root)
{
    const bool isShape = root.name == "shape";
    const auto *supplier = isShape ? child(root, "solid") : &root;
    const auto fill = supplier ? IconPaint::paint(source, attribute(*supplier, "color")) : std::nullopt;
    const auto *color = fill ? std::get_if<Color>(&*fill) : nullptr;
    if (!color)
        return std::nullopt;
    const auto canvas = iconCanvas(source);
    if (!canvas)
        return std::nullopt;
    canvas->setFillColor(*color);
    constexpr std::uint32_t oval = 1;
    if (isShape && data(root, "shape") == oval)
        canvas->fillEllipse({0, 0, iconSize, iconSize});
    else
        canvas->fillRect({0, 0, iconSize, iconSize});
    return canvas->image();
}

} // namespace

std::optional<Image> IconVector::render(IconSource &source, const BinaryXml::Document &document, int depth)
{
    const auto *root = document.root.get();
    if (!root)
        return std::nullopt;
    if (root->name == "vector")
        return drawVector(source, *root);
    if (root->name == "inset")
        return drawInset(source, *root, depth);
    if (root->name == "color" || root->name == "shape")
        return drawColor(source, *root);
    return std::nullopt;
}

std::optional<Image> IconVector::render(IconSource &source, ByteView bytes, int depth)
{
    return render(source, source.decode(bytes), depth);
}

bool IconVector::draw(IconSource &source, Canvas &canvas, std::span<const std::unique_ptr<Node>> nodes)
{
    bool drew = false;
    for (const auto &node : nodes) {
        if (!source.spend(groupCost))
            break;
        if (node->name == "group") {
            drew = drawGroup(source, canvas, *node) || drew;
        } else if (node->name == "clip-path") {
            // Holds for the siblings that follow, up to the end of the group around them.
            const auto path = pathOf(source, *node);
            if (path && source.spend(clipCost))
                canvas.clip(*path, FillRule::winding);
        } else if (node->name == "path") {
            drew = drawPath(source, canvas, *node) || drew;
        }
    }
    return drew;
}

} // namespace quillnest
