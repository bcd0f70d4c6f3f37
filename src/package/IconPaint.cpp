#include "package/IconPaint.h"

#include "package/IconSource.h"
#include "package/ValueType.h"
#include "package/XmlValues.h"

namespace quillnest
{

namespace
{

using IconPaint::Paint;
using XmlValues::attribute;
using XmlValues::data;
using XmlValues::number;

// Of looking for a colour.
constexpr std::size_t fileCost = 2;
constexpr std::size_t entriesPerMicrosecond = 64;

/// The stops that have a colour, in the order of their elements or of the three attributes.
Gradient stopsOf(IconSource &source, const BinaryXml::Node &node)
{
    Gradient result;
    const auto add = [&](const BinaryXml::Attr *color, double position) {
        const auto stop = IconPaint::paint(source, color);
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

std::optional<Paint> IconPaint::paint(IconSource &source, const BinaryXml::Attr *attr)
{
    if (!attr)
        return std::nullopt;
    if (ValueType::isColor(attr->type))
        return Color::fromArgb(attr->data);
    const IconSource::Descent descent(source);
    if (attr->type != ValueType::reference || !descent.allowed())
        return std::nullopt;

    const auto &entries = source.entries(attr->data);
    if (!source.spend(1 + entries.size() / entriesPerMicrosecond))
        return std::nullopt;
    for (const auto &entry : entries) {
        if (ValueType::isColor(entry.type))
            return Color::fromArgb(entry.data);
    }
    for (const auto &entry : entries) {
        if (!entry.file || !entry.file->ends_with(".xml") || !source.spend(fileCost))
            continue;
        const auto *document = source.document(*entry.file);
        const auto *root = document ? document->root.get() : nullptr;
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

std::optional<Paint> IconPaint::gradient(IconSource &source, const BinaryXml::Node &node)
{
    if (!source.spend(node.children.size()))
        return std::nullopt;
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
