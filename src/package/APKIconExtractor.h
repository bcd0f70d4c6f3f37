#pragma once

#include "package/Bytes.h"
#include "platform/Canvas.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace quillnest
{

class Archives;
class OpenArchive;
class IconSource;

/// Reads Android's compiled XML and resource tables. The formats are those of Android's own packaging tools (chunked,
/// little-endian). Input is untrusted: malformed bytes give empty or absent results, fields past the end count as
/// zero, and the work done is bounded. All functions are free of state and safe on any thread.
namespace APKIconExtractor
{
/// Value types of an attribute or a resource.
constexpr std::uint8_t referenceType = 1;
constexpr std::uint8_t stringType = 3;
/// Colours are 0xAARRGGBB; the four types tell how they were written.
constexpr bool isColor(std::uint8_t type)
{
    return (type & 0xFC) == 28;
}

/// The value of one attribute.
struct Attr {
    std::uint8_t type = 0;
    std::uint32_t data = 0;
    /// The raw value as text, if it has one.
    std::optional<std::string> string;

    bool operator==(const Attr &) const = default;
};

/// One start tag. Attributes are known by their name alone, whatever their namespace.
struct Element {
    std::string name;
    std::map<std::string, Attr> attrs;
};

/// One value of a resource in one configuration.
struct Entry {
    /// The number of the configuration, markers (0, 0xFFFE, 0xFFFF) included.
    int density = 0;
    /// Text of a string value: a path in the package for a resource that is a file.
    std::optional<std::string> file;
    std::uint8_t type = 0;
    std::uint32_t data = 0;

    bool operator==(const Entry &) const = default;
};

/// Four little-endian bytes; each one outside the array counts as 0.
std::int64_t u32(ByteView bytes, std::int64_t offset);

/// The strings of the pool chunk at `offset`, at most 200000, one for each index whatever happens. A UTF-8 string that
/// doesn't fit is empty; a UTF-16 string is cut to 4096 units.
std::vector<std::string> stringPool(ByteView bytes, std::int64_t offset);
/// The same on a budget that several calls share; strings past what it allows are left out.
std::vector<std::string> stringPool(ByteView bytes, std::int64_t offset, WorkBudget &budget);

/// One string of the pool chunk at `pool`, in full; absent if it or its index doesn't fit.
std::optional<std::string> string(ByteView bytes, std::int64_t pool, std::int64_t index);

/// The start tags of a compiled XML file in document order.
std::vector<Element> elements(ByteView bytes);
/// The same on a budget that several calls share.
std::vector<Element> elements(ByteView bytes, WorkBudget &budget);

/// The values of a resource id (0xPPTTEEEE) in all configurations of a resource table, in the table's order.
/// References are not followed.
std::vector<Entry> entries(ByteView bytes, std::uint32_t id);
/// The same on a budget that several calls share.
std::vector<Entry> entries(ByteView bytes, std::uint32_t id, WorkBudget &budget);

/// One entry of a package; absent if it is empty, missing, encrypted or larger than any real one. The names are taken
/// literally. Blocks.
std::optional<std::vector<std::uint8_t>>
read(Archives &archives, const std::string &packagePath, const std::string &entryName);

/// The application's label: the literal in the manifest, or the first value in the table that it refers to. Blocks.
std::optional<std::string> label(Archives &archives, const std::string &packagePath);

/// What of the host an icon is made with.
struct IconTools {
    Archives &archives;
    Drawing &drawing;
    /// Takes a line for the program's log. Any thread.
    std::function<void(const std::string &line)> log;
};

/// The app's launcher icon as a PNG file: raster files as they are, everything else drawn at 192 by 192 pixels. Absent,
/// with a line in the log, if the manifest's icon leads to nothing that can be drawn. Blocks.
std::optional<std::vector<std::uint8_t>> iconPNG(const IconTools &tools, const std::string &packagePath);

/// One layer of an adaptive icon.
using Layer = std::variant<Image, Color>;

/// The picture that a resource stands for: its raster file of the highest density, or else the first of its XML files
/// that can be drawn. `depth` counts the resources that led here; past 3 nothing is looked at. Blocks.
std::optional<Image> render(IconSource &source, std::uint32_t id, int depth);

/// The picture of an adaptive icon file, given by its start tags: background and foreground, cut to what shows of them.
/// Not masked. Blocks.
std::optional<Image> adaptive(IconSource &source, const std::vector<Element> &elements, int depth);

/// What the first of these tags that leads to a colour or a picture leads to. Blocks.
std::optional<Layer> layer(IconSource &source, std::span<const Element> elements, int depth);

/// The side of all pictures that are drawn here, in pixels.
constexpr int iconSize = 192;
} // namespace APKIconExtractor

} // namespace quillnest
