#include "package/IconVector.h"

#include "package/IconSource.h"
#include "package/PathData.h"

#include <array>
#include <bit>
#include <numbers>

namespace quillnest
{

namespace
{

using APKIconExtractor::Attr;
using APKIconExtractor::iconSize;
using IconVector::Node;
using IconVector::Paint;
using IconVector::PlacedGradient;

constexpr std::uint16_t startElementChunk = 0x0102;
constexpr std::uint16_t endElementChunk = 0x0103;

constexpr std::uint8_t floatType = 4;
constexpr std::uint8_t dimensionType = 5;
constexpr std::uint8_t fractionType = 6;
constexpr std::uint8_t decimalType = 16;
constexpr std::uint8_t hexadecimalType = 17;

/// The side of the canvas that adaptive icons are designed on.
constexpr double adaptiveUnits = 108;

/// No file that a person or a tool makes nests this deep, and what walks the tree needs stack for each level.
constexpr std::size_t maximumDepth = 100;

// Of drawing, in microseconds on a slow machine.
constexpr std::size_t canvasCost = 300;
constexpr std::size_t fillCost = 120;
constexpr std::size_t strokeCost = 300;
constexpr std::size_t segmentCost = 8;
constexpr std::size_t gradientCost = 400;
constexpr std::size_t clipCost = 300;
constexpr std::size_t groupCost = 2;

const Attr *attribute(const Node &node, const char *name)
{
    const auto found = node.attrs.find(name);
    return found == node.attrs.end() ? nullptr : &found->second;
}

double number(const Node &node, const char *name, double missing)
{
    return IconVector::floatValue(attribute(node, name)).value_or(missing);
}

std::uint32_t data(const Node &node, const char *name)
{
    const auto *attr = attribute(node, name);
    return attr ? attr->data : 0;
}

const Node *child(const Node &node, std::string_view name)
{
    for (const auto &candidate : node.children) {
        if (candidate->name == name)
            return candidate.get();
    }
    return nullptr;
}

double complexValue(std::uint32_t data)
{
    constexpr std::array factors{1.0 / 256, 1.0 / 32768, 1.0 / 8388608, 1.0 / 2147483648};
    return static_cast<std::int32_t>(data & 0xFFFFFF00) * factors[(data >> 4) & 3];
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
    const auto fill = IconVector::paint(source, attribute(node, "fillColor"));
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

    const auto stroke = IconVector::paint(source, attribute(node, "strokeColor"));
    const auto *color = stroke ? std::get_if<Color>(&*stroke) : nullptr;
    const double width = number(node, "strokeWidth", 0);
    if (!color || !(width > 0) || !source.spend(strokeCost + path.verbs().size() * outlineCost))
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
    if (attr->type == fractionType)
        return complexValue(attr->data);
    return IconVector::floatValue(attr).value_or(0) / adaptiveUnits;
}

std::optional<Image> drawInset(IconSource &source, const Node &root, int depth)
{
    const auto *drawable = attribute(root, "drawable");
    if (!drawable || drawable->type != APKIconExtractor::referenceType)
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
    const auto fill = supplier ? IconVector::paint(source, attribute(*supplier, "color")) : std::nullopt;
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

/// The stops that have a colour, in the order of their elements or of the three attributes.
Gradient stopsOf(IconSource &source, const Node &node)
{
    Gradient result;
    const auto add = [&](const Attr *color, double position) {
        const auto stop = IconVector::paint(source, color);
        if (stop && std::holds_alternative<Color>(*stop))
            result.stops.push_back({position, std::get<Color>(*stop)});
    };
    for (const auto &item : node.children) {
        if (item->name == "item")
            add(attribute(*item, "color"), number(*item, "offset", 0));
    }
    if (result.stops.empty()) {
        add(attribute(node, "startColor"), 0);
        add(attribute(node, "centerColor"), 0.5);
        add(attribute(node, "endColor"), 1);
    }
    return result;
}

} // namespace

std::optional<double> IconVector::floatValue(const Attr *attr)
{
    if (!attr)
        return std::nullopt;
    switch (attr->type) {
    case floatType:
        return std::bit_cast<float>(attr->data);
    case dimensionType:
    case fractionType:
        return complexValue(attr->data);
    case decimalType:
    case hexadecimalType:
        return static_cast<std::int32_t>(attr->data);
    default:
        return std::nullopt;
    }
}

std::unique_ptr<Node> IconVector::tree(IconSource &source, ByteView bytes)
{
    auto elements = source.elements(bytes);
    const auto size = static_cast<std::int64_t>(bytes.size());
    const std::int64_t header = Bytes::u16(bytes, 2);
    if (size < header + 8)
        return nullptr;

    std::unique_ptr<Node> root;
    // Null for an element that is left out.
    std::vector<Node *> open;
    std::size_t next = 0;
    for (auto position = header; position + 8 <= size;) {
        const auto type = Bytes::u16(bytes, position);
        if (type == startElementChunk && next < elements.size()) {
            auto &element = elements[next++];
            auto node = std::make_unique<Node>();
            node->name = std::move(element.name);
            node->attrs = std::move(element.attrs);
            auto *const opened = node.get();
            if (open.empty())
                root = std::move(node);
            else if (open.size() < maximumDepth && open.back())
                open.back()->children.push_back(std::move(node));
            open.push_back(node ? nullptr : opened);
        } else if (type == endElementChunk && !open.empty()) {
            open.pop_back();
        }
        const std::int64_t chunkSize = Bytes::looseU32(bytes, position + 4);
        if (chunkSize == 0)
            break;
        position += chunkSize;
    }
    return root;
}

void IconVector::appendPaintFiles(IconSource &source, ByteView bytes, std::vector<std::string> &files)
{
    for (const auto &element : source.elements(bytes)) {
        for (const auto *name : {"fillColor", "strokeColor"}) {
            const auto attr = element.attrs.find(name);
            if (attr == element.attrs.end() || attr->second.type != APKIconExtractor::referenceType)
                continue;
            for (const auto &entry : source.entries(attr->second.data)) {
                if (entry.file && entry.file->ends_with(".xml"))
                    files.push_back(*entry.file);
            }
        }
    }
}

std::optional<Image> IconVector::render(IconSource &source, ByteView bytes, int depth)
{
    const auto root = tree(source, bytes);
    if (!root)
        return std::nullopt;
    if (root->name == "vector") {
        std::vector<std::string> files;
        appendPaintFiles(source, bytes, files);
        source.prefetch(files);
        return drawVector(source, *root);
    }
    if (root->name == "inset")
        return drawInset(source, *root, depth);
    if (root->name == "color" || root->name == "shape")
        return drawColor(source, *root);
    return std::nullopt;
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

std::optional<Paint> IconVector::paint(IconSource &source, const Attr *attr)
{
    if (!attr)
        return std::nullopt;
    if (APKIconExtractor::isColor(attr->type))
        return Color::fromArgb(attr->data);
    const IconSource::Descent descent(source);
    if (attr->type != APKIconExtractor::referenceType || !descent.allowed())
        return std::nullopt;

    const auto &entries = source.entries(attr->data);
    for (const auto &entry : entries) {
        if (APKIconExtractor::isColor(entry.type))
            return Color::fromArgb(entry.data);
    }
    for (const auto &entry : entries) {
        if (!entry.file || !entry.file->ends_with(".xml") || !source.spend(groupCost))
            continue;
        const auto *bytes = source.read(*entry.file);
        const auto root = bytes ? tree(source, *bytes) : nullptr;
        if (!root)
            continue;
        if (root->name == "gradient")
            return gradient(source, *root);
        // The first state's colour stands for all.
        if (root->name == "selector" && !root->children.empty())
            return paint(source, attribute(*root->children.front(), "color"));
    }
    return std::nullopt;
}

std::optional<Paint> IconVector::gradient(IconSource &source, const Node &node)
{
    auto stops = stopsOf(source, node);
    if (stops.stops.empty())
        return std::nullopt;
    if (stops.stops.size() == 1)
        return stops.stops.front().color;
    PlacedGradient result{.gradient = std::move(stops), .start = {}, .end = {}};
    constexpr std::uint32_t radial = 1;
    if (data(node, "type") == radial) {
        result.radial = true;
        result.start = result.end = {number(node, "centerX", 0), number(node, "centerY", 0)};
        result.radius = number(node, "gradientRadius", 1);
    } else {
        // A sweep, too, is drawn along a line.
        result.start = {number(node, "startX", 0), number(node, "startY", 0)};
        result.end = {number(node, "endX", 0), number(node, "endY", 0)};
    }
    return result;
}

} // namespace quillnest
