#include "package/APKIconExtractor.h"
#include "package/IconSource.h"
#include "package/IconVector.h"
#include "package/PackageLimits.h"
#include "package/ResourceTable.h"
#include "package/ValueType.h"
#include "platform/Archives.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

namespace quillnest
{

namespace
{

using APKIconExtractor::iconSize;
using APKIconExtractor::Layer;
using BinaryXml::Attr;
using BinaryXml::Attributes;
using BinaryXml::Element;
using ResourceTable::Entry;

constexpr int deepest = 3;
// Of looking at resources, in microseconds.
constexpr std::size_t lookCost = 10;
constexpr std::size_t entryCost = 1;
/// Of decoding a picture. The largest that a few bytes can stand for may come four times.
constexpr std::int64_t pixelsPerMicrosecond = Drawing::largestPicture / (90 * 1000);
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
    auto elements = BinaryXml::elements(manifest);
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

/// The texts of all, as many as a line of the log has room for: a small package can make them endless.
template <typename Range, typename Text> std::string joined(const Range &range, const char *separator, Text text)
{
    std::string result;
    bool isFirst = true;
    for (const auto &item : range) {
        if (result.size() > IconSource::longestLine)
            break;
        result += isFirst ? "" : separator;
        result += text(item);
        isFirst = false;
    }
    return result;
}

/// A file of a resource that may be drawn.
struct Candidate {
    const std::string *file;
    const IconSource::Blob *bytes;
    int density;
};

/// A picture of a package. One that is broken is known by its head alone, which may promise anything.
std::optional<Image> decode(IconSource &source, const IconSource::Blob &bytes)
{
    constexpr auto dearest = static_cast<std::size_t>(Drawing::largestPicture / pixelsPerMicrosecond);
    if (!source.spend(1))
        return std::nullopt;
    auto image = source.drawing().decode(bytes);
    const auto pixels = image ? std::int64_t{image->width} * image->height : 0;
    const auto cost = image ? static_cast<std::size_t>(pixels / pixelsPerMicrosecond) : dearest;
    return source.spend(cost) ? image : std::nullopt;
}

struct Candidates {
    std::vector<Candidate> rasters;
    std::vector<Candidate> xmls;
};

Candidates candidatesOf(IconSource &source, const std::vector<Entry> &entries)
{
    Candidates result;
    for (const auto &entry : entries) {
        if (!source.spend(entryCost))
            break;
        const auto *bytes = entry.file ? source.read(*entry.file) : nullptr;
        if (!bytes || bytes->size() < 5)
            continue;
        const auto begins = [bytes](std::uint8_t first, std::uint8_t second) {
            return (*bytes)[0] == first && (*bytes)[1] == second;
        };
        const Candidate candidate{&*entry.file, bytes, entry.density};
        // WebP, JPEG, PNG.
        if (begins('R', 'I') || begins(0xFF, 0xD8) || begins(0x89, 'P'))
            result.rasters.push_back(candidate);
        else if (begins(0x03, 0x00))
            result.xmls.push_back(candidate);
    }
    return result;
}

/// Whether a file of a package can be kept as the file of the picture that it holds: a PNG, with nothing behind its end
/// and no more in it than the picture can account for.
bool isPlainPng(const IconSource::Blob &bytes, const Image &image)
{
    using namespace std::string_view_literals;
    constexpr auto start = "\x89PNG\r\n\x1a\n"sv;
    constexpr auto end = "\0\0\0\0IEND\xAE\x42\x60\x82"sv;
    constexpr std::size_t roomForNotes = 64 * 1024;
    const std::string_view text(reinterpret_cast<const char *>(bytes.data()), bytes.size());
    return text.starts_with(start) && text.ends_with(end)
        && text.size() <= image.pixels.size() * sizeof(std::uint32_t) + roomForNotes;
}

/// A picture, and the raster file that it stands in if it isn't drawn.
struct Found {
    Image image;
    const IconSource::Blob *file = nullptr;
};

std::optional<Image> renderXml(IconSource &source, const BinaryXml::Document &document, int depth)
{
    if (auto drawn = IconVector::render(source, document, depth))
        return drawn;
    auto found = APKIconExtractor::layer(source, document.elements, depth);
    if (!found || !std::holds_alternative<Image>(*found))
        return std::nullopt;
    return std::get<Image>(std::move(*found));
}

std::optional<Layer> layerOf(IconSource &source, const Attr &attr, int depth)
{
    if (ValueType::isColor(attr.type))
        return Color::fromArgb(attr.data);
    if (attr.type != ValueType::reference)
        return std::nullopt;
    const auto known = systemColors.find(attr.data);
    if (known != systemColors.end())
        return Color::fromArgb(known->second);
    for (const auto &entry : source.entries(attr.data)) {
        if (ValueType::isColor(entry.type))
            return Color::fromArgb(entry.data);
    }
    if (auto image = APKIconExtractor::render(source, attr.data, depth + 1))
        return std::move(*image);
    return std::nullopt;
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

std::optional<Found> find(IconSource &source, std::uint32_t id, int depth)
{
    if (depth > deepest || !source.spend(lookCost))
        return std::nullopt;
    const auto [rasters, xmls] = candidatesOf(source, source.entries(id));
    if (!rasters.empty()) {
        const auto sharpest = std::max_element(
            rasters.begin(), rasters.end(), [](const auto &a, const auto &b) { return a.density < b.density; });
        if (auto image = decode(source, *sharpest->bytes))
            return Found{std::move(*image), sharpest->bytes};
    }
    const auto drawn
        = [](std::optional<Image> image) { return image ? std::optional(Found{std::move(*image)}) : std::nullopt; };
    for (const auto &xml : xmls) {
        const auto *document = source.document(*xml.file);
        if (!document)
            continue;
        const auto &elements = document->elements;
        if (!elements.empty() && elements.front().name == "adaptive-icon")
            return drawn(APKIconExtractor::adaptive(source, elements, depth));
        if (auto image = renderXml(source, *document, depth))
            return drawn(std::move(image));
    }
    return std::nullopt;
}

std::string typeText(const Entry &entry)
{
    return "t" + std::to_string(entry.type);
}

/// An element list for the log.
std::string describe(IconSource &source, const std::vector<Element> &elements)
{
    const auto value = [&source](const Entry &entry) {
        const auto *document = entry.file ? source.document(*entry.file) : nullptr;
        std::string text = typeText(entry);
        if (document) {
            const std::span all(document->elements);
            const auto inner = all.first(std::min<std::size_t>(all.size(), 4));
            text = joined(inner, ",", [](const Element &element) { return element.name; });
        }
        return entry.file.value_or("") + "(" + text + ")";
    };
    const auto attribute = [&](const Attributes::value_type &named) {
        const auto &[name, attr] = named;
        auto text = name + "=t" + std::to_string(attr.type) + "/" + hexadecimal(attr.data);
        if (attr.type == ValueType::reference)
            text += "->" + joined(source.entries(attr.data), "|", value);
        return text;
    };
    return joined(elements, " ", [&](const Element &element) {
        return element.name + "{" + joined(element.attrs, " ", attribute) + "}";
    });
}

std::string nameOf(const std::string &packagePath)
{
    return packagePath.substr(packagePath.rfind('/') + 1);
}

/// Says in the log what the manifest offered for an icon and where it led.
void traceIcon(IconSource &source, const std::string &packagePath, const Attributes &application)
{
    const auto names = joined(application, ", ", [](const auto &named) { return "\"" + named.first + "\""; });
    auto line = "icon trace " + nameOf(packagePath) + ": attrs=[" + names + "]";
    for (const auto *name : iconAttributes) {
        const auto found = application.find(name);
        if (found == application.end())
            continue;
        const auto &attr = found->second;
        line += std::string(" ") + name + "=type" + std::to_string(attr.type) + "/" + hexadecimal(attr.data);
        for (const auto &entry : source.entries(attr.data)) {
            if (line.size() > IconSource::longestLine)
                break;
            const auto *document = entry.file ? source.document(*entry.file) : nullptr;
            std::string root = "-";
            if (document)
                root = document->elements.empty() ? "?" : document->elements.front().name;
            line += " [" + std::to_string(entry.density) + " " + entry.file.value_or(typeText(entry)) + " root=" + root
                + "]";
        }
    }
    source.log(line);
}

} // namespace

std::optional<APKIconExtractor::Icon> APKIconExtractor::icon(const IconTools &tools, const std::string &packagePath)
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
    std::optional<Found> found;
    for (const auto *name : iconAttributes) {
        const auto attr = application.find(name);
        if (!found && attr != application.end() && attr->second.type == ValueType::reference)
            found = find(source, attr->second.data, 0);
    }
    if (source.isExhausted()) {
        // Half a picture would be kept for good.
        source.log("icon trace " + nameOf(packagePath) + ": takes more work than any icon");
        return std::nullopt;
    }
    if (!found) {
        traceIcon(source, packagePath, application);
        return std::nullopt;
    }
    Icon result{std::move(found->image), {}};
    if (found->file && isPlainPng(*found->file, result.picture))
        result.png = *found->file;
    return result;
}

std::optional<std::vector<std::uint8_t>>
APKIconExtractor::iconPNG(const IconTools &tools, const std::string &packagePath)
{
    auto found = icon(tools, packagePath);
    if (!found)
        return std::nullopt;
    return found->png.empty() ? tools.drawing.encodePng(found->picture) : std::move(found->png);
}

std::optional<Image> APKIconExtractor::render(IconSource &source, std::uint32_t id, int depth)
{
    auto found = find(source, id, depth);
    return found ? std::optional(std::move(found->image)) : std::nullopt;
}

std::optional<Image>
APKIconExtractor::adaptive(IconSource &source, const std::vector<BinaryXml::Element> &elements, int depth)
{
    if (!source.spend(elements.size()))
        return std::nullopt;
    std::vector<Element> background;
    std::vector<Element> foreground;
    std::vector<Element> *section = nullptr;
    for (std::size_t i = 1; i < elements.size(); ++i) {
        const auto &element = elements[i];
        if (element.name == "background")
            section = &background;
        else if (element.name == "foreground")
            section = &foreground;
        else if (element.name == "monochrome")
            section = nullptr;
        if (section)
            section->push_back(element);
    }
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

std::optional<Layer>
APKIconExtractor::layer(IconSource &source, std::span<const BinaryXml::Element> elements, int depth)
{
    for (const auto &element : elements) {
        if (!source.spend(entryCost))
            break;
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
