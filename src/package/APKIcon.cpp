#include "package/APKIconExtractor.h"
#include "package/IconSource.h"
#include "package/IconVector.h"
#include "package/PackageLimits.h"
#include "platform/Archives.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace quillnest
{

namespace
{

using APKIconExtractor::Attr;
using APKIconExtractor::Element;
using APKIconExtractor::Entry;
using APKIconExtractor::iconSize;
using APKIconExtractor::Layer;

using Attributes = std::map<std::string, Attr>;

constexpr int deepest = 3;
/// Of the largest picture that a few bytes can stand for. No real icon is made of more than two or three.
constexpr std::size_t decodeCost = 50 * 1000;
constexpr std::array<const char *, 2> iconAttributes{"icon", "roundIcon"};
constexpr std::array<const char *, 2> layerAttributes{"drawable", "src"};

/// Colours of the framework, which packages refer to and don't hold.
const std::map<std::uint32_t, std::uint32_t> systemColors{
    {0x0106000B, 0xFFFFFFFF}, // white
    {0x0106000C, 0xFF000000}, // black
    {0x0106000D, 0x00000000}, // transparent
};

Attributes applicationOf(ByteView manifest)
{
    auto elements = APKIconExtractor::elements(manifest);
    const auto application = std::find_if(
        elements.begin(), elements.end(), [](const Element &element) { return element.name == "application"; });
    return application == elements.end() ? Attributes() : std::move(application->attrs);
}

std::string hexadecimal(std::uint32_t value)
{
    std::array<char, 8> text;
    const auto end = std::to_chars(text.begin(), text.end(), value, 16).ptr;
    return "0x" + std::string(text.begin(), end);
}

template <typename Range, typename Text> std::string joined(const Range &range, const char *separator, Text text)
{
    std::string result;
    for (const auto &item : range)
        result += (result.empty() ? "" : separator) + text(item);
    return result;
}

std::vector<std::string> filesOf(const std::vector<Entry> &entries)
{
    std::vector<std::string> files;
    for (const auto &entry : entries) {
        if (entry.file)
            files.push_back(*entry.file);
    }
    return files;
}

/// A file of a resource that may be drawn.
struct Candidate {
    const IconSource::Blob *bytes;
    int density;
};

struct Candidates {
    std::vector<Candidate> rasters;
    std::vector<Candidate> xmls;
};

Candidates candidatesOf(IconSource &source, const std::vector<Entry> &entries)
{
    source.prefetch(filesOf(entries));
    Candidates result;
    for (const auto &entry : entries) {
        const auto *bytes = entry.file ? source.read(*entry.file) : nullptr;
        if (!bytes || bytes->size() < 5)
            continue;
        const auto begins = [bytes](std::uint8_t first, std::uint8_t second) {
            return (*bytes)[0] == first && (*bytes)[1] == second;
        };
        const Candidate candidate{bytes, entry.density};
        // WebP, JPEG, PNG.
        if (begins('R', 'I') || begins(0xFF, 0xD8) || begins(0x89, 'P'))
            result.rasters.push_back(candidate);
        else if (begins(0x03, 0x00))
            result.xmls.push_back(candidate);
    }
    return result;
}

std::optional<Image> renderXml(IconSource &source, const IconSource::Blob &bytes, int depth)
{
    if (auto drawn = IconVector::render(source, bytes, depth))
        return drawn;
    auto found = APKIconExtractor::layer(source, source.elements(bytes), depth);
    if (!found || !std::holds_alternative<Image>(*found))
        return std::nullopt;
    return std::get<Image>(std::move(*found));
}

std::optional<Layer> layerOf(IconSource &source, const Attr &attr, int depth)
{
    if (APKIconExtractor::isColor(attr.type))
        return Color::fromArgb(attr.data);
    if (attr.type != APKIconExtractor::referenceType)
        return std::nullopt;
    const auto known = systemColors.find(attr.data);
    if (known != systemColors.end())
        return Color::fromArgb(known->second);
    for (const auto &entry : source.entries(attr.data)) {
        if (APKIconExtractor::isColor(entry.type))
            return Color::fromArgb(entry.data);
    }
    if (auto image = APKIconExtractor::render(source, attr.data, depth + 1))
        return std::move(*image);
    return std::nullopt;
}

/// Reads the files that the layers of these elements lie in, side by side.
void prefetchLayers(IconSource &source, const std::vector<Element> &elements)
{
    std::vector<std::string> files;
    for (const auto &element : elements) {
        for (const auto *name : layerAttributes) {
            const auto attr = element.attrs.find(name);
            if (attr == element.attrs.end() || attr->second.type != APKIconExtractor::referenceType)
                continue;
            const auto more = filesOf(source.entries(attr->second.data));
            files.insert(files.end(), more.begin(), more.end());
        }
    }
    source.prefetch(files);

    // And then the colours that the drawables among them refer to, those of both layers in one go.
    std::vector<std::string> colors;
    for (const auto &file : files) {
        const auto *bytes = file.ends_with(".xml") ? source.read(file) : nullptr;
        if (bytes)
            IconVector::appendPaintFiles(source, *bytes, colors);
    }
    source.prefetch(colors);
}

void drawLayer(Canvas &canvas, const Layer &layer)
{
    if (const auto *color = std::get_if<Color>(&layer)) {
        canvas.setFillColor(*color);
        canvas.fillRect({0, 0, iconSize, iconSize});
        return;
    }
    // A layer is designed on 108 units, of which the 72 in the middle show.
    constexpr double side = iconSize * 108.0 / 72;
    constexpr double outside = (side - iconSize) / 2;
    canvas.drawImage(std::get<Image>(layer), {-outside, -outside, side, side});
}

std::string typeText(const Entry &entry)
{
    return "t" + std::to_string(entry.type);
}

/// An element list for the log.
std::string describe(IconSource &source, const std::vector<Element> &elements)
{
    const auto value = [&source](const Entry &entry) {
        const auto *bytes = entry.file ? source.read(*entry.file) : nullptr;
        std::string text = typeText(entry);
        if (bytes) {
            auto inner = source.elements(*bytes);
            inner.resize(std::min<std::size_t>(inner.size(), 4));
            text = joined(inner, ",", [](const Element &element) { return element.name; });
        }
        return entry.file.value_or("") + "(" + text + ")";
    };
    const auto attribute = [&](const Attributes::value_type &named) {
        const auto &[name, attr] = named;
        auto text = name + "=t" + std::to_string(attr.type) + "/" + hexadecimal(attr.data);
        if (attr.type == APKIconExtractor::referenceType)
            text += "->" + joined(source.entries(attr.data), "|", value);
        return text;
    };
    return joined(elements, " ", [&](const Element &element) {
        return element.name + "{" + joined(element.attrs, " ", attribute) + "}";
    });
}

/// Says in the log what the manifest offered for an icon and where it led.
void traceIcon(IconSource &source, const std::string &packagePath, const Attributes &application)
{
    const auto names = joined(application, ", ", [](const auto &named) { return "\"" + named.first + "\""; });
    auto line = "icon trace " + packagePath.substr(packagePath.rfind('/') + 1) + ": attrs=[" + names + "]";
    for (const auto *name : iconAttributes) {
        const auto found = application.find(name);
        if (found == application.end())
            continue;
        const auto &attr = found->second;
        line += std::string(" ") + name + "=type" + std::to_string(attr.type) + "/" + hexadecimal(attr.data);
        for (const auto &entry : source.entries(attr.data)) {
            const auto *bytes = entry.file ? source.read(*entry.file) : nullptr;
            std::string root = "-";
            if (bytes) {
                const auto elements = source.elements(*bytes);
                root = elements.empty() ? "?" : elements.front().name;
            }
            line += " [" + std::to_string(entry.density) + " " + entry.file.value_or(typeText(entry)) + " root=" + root
                + "]";
        }
    }
    source.log(line);
}

} // namespace

std::optional<std::vector<std::uint8_t>>
APKIconExtractor::iconPNG(const IconTools &tools, const std::string &packagePath)
{
    const auto package = tools.archives.open(packagePath);
    if (!package)
        return std::nullopt;
    const auto manifest = package->read("AndroidManifest.xml", PackageLimits::largestManifest);
    const auto table = package->read("resources.arsc", PackageLimits::largestEntry);
    if (manifest.empty() || table.empty())
        return std::nullopt;

    const auto application = applicationOf(manifest);
    IconSource source(tools, *package, table);
    for (const auto *name : iconAttributes) {
        const auto attr = application.find(name);
        if (attr == application.end() || attr->second.type != referenceType)
            continue;
        if (const auto image = render(source, attr->second.data, 0))
            return tools.drawing.encodePng(*image);
    }
    traceIcon(source, packagePath, application);
    return std::nullopt;
}

std::optional<Image> APKIconExtractor::render(IconSource &source, std::uint32_t id, int depth)
{
    if (depth > deepest)
        return std::nullopt;
    const auto [rasters, xmls] = candidatesOf(source, source.entries(id));
    if (!rasters.empty()) {
        const auto sharpest = std::max_element(
            rasters.begin(), rasters.end(), [](const auto &a, const auto &b) { return a.density < b.density; });
        auto image = source.spend(decodeCost) ? source.drawing().decode(*sharpest->bytes) : std::nullopt;
        if (image)
            return image;
    }
    for (const auto &xml : xmls) {
        const auto elements = source.elements(*xml.bytes);
        if (!elements.empty() && elements.front().name == "adaptive-icon")
            return adaptive(source, elements, depth);
        if (auto image = renderXml(source, *xml.bytes, depth))
            return image;
    }
    return std::nullopt;
}

std::optional<Image> APKIconExtractor::adaptive(IconSource &source, const std::vector<Element> &elements, int depth)
{
    std::vector<Element> background;
    std::vector<Element> foreground;
    std::vector<Element> ignored;
    auto *section = &ignored;
    for (std::size_t i = 1; i < elements.size(); ++i) {
        const auto &element = elements[i];
        if (element.name == "background")
            section = &background;
        else if (element.name == "foreground")
            section = &foreground;
        else if (element.name == "monochrome")
            section = &ignored;
        section->push_back(element);
    }
    auto drawn = background;
    drawn.insert(drawn.end(), foreground.begin(), foreground.end());
    prefetchLayers(source, drawn);

    const auto back = layer(source, background, depth);
    const auto front = layer(source, foreground, depth);
    if (!back || !front) {
        const auto flag = [](bool found) { return found ? "true" : "false"; };
        source.log(
            std::string("icon trace adaptive: bg=") + flag(back.has_value()) + " fg=" + flag(front.has_value()) + " BG "
            + describe(source, background) + " FG " + describe(source, foreground));
    }
    if (!back && !front)
        return std::nullopt;
    const auto canvas = source.drawing().canvas(iconSize, iconSize);
    if (!canvas)
        return std::nullopt;
    for (const auto *found : {&back, &front}) {
        if (*found)
            drawLayer(*canvas, **found);
    }
    return canvas->image();
}

std::optional<Layer> APKIconExtractor::layer(IconSource &source, std::span<const Element> elements, int depth)
{
    for (const auto &element : elements) {
        for (const auto *name : layerAttributes) {
            const auto attr = element.attrs.find(name);
            if (attr == element.attrs.end())
                continue;
            if (auto found = layerOf(source, attr->second, depth))
                return found;
        }
    }
    return std::nullopt;
}

} // namespace quillnest
