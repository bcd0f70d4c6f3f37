#pragma once

#include "package/BinaryXml.h"
#include "platform/Canvas.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace quillnest
{

class Archives;
class OpenArchive;
class IconSource;

/// Finds an app's label and icon in its package, which is untrusted: malformed files give absent results, and the work
/// done is bounded. All functions are free of state and safe on any thread.
namespace APKIconExtractor
{
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

/// A launcher icon.
struct Icon {
    Image picture;
    /// The package's own PNG file that is this picture; empty if it is another kind of file, or was drawn.
    std::vector<std::uint8_t> png;
};

/// The app's launcher icon: raster files as they are, everything else drawn at 192 by 192 pixels. Absent, with a line
/// in the log, if the manifest's icon leads to nothing that can be drawn. Blocks.
std::optional<Icon> icon(const IconTools &tools, const std::string &packagePath);

/// The same as a PNG file; absent as well if the picture can't be packed. Blocks.
std::optional<std::vector<std::uint8_t>> iconPNG(const IconTools &tools, const std::string &packagePath);

/// One layer of an adaptive icon.
using Layer = std::variant<Image, Color>;

/// The picture that a resource stands for: its raster file of the highest density, or else the first of its XML files
/// that can be drawn. `depth` counts the resources that led here; past 3 nothing is looked at. Blocks.
std::optional<Image> render(IconSource &source, std::uint32_t id, int depth);

/// The picture of an adaptive icon file, given by its start tags: background and foreground, cut to what shows of them.
/// Not masked. Blocks.
std::optional<Image> adaptive(IconSource &source, const std::vector<BinaryXml::Element> &elements, int depth);

/// What the first of these tags that leads to a colour or a picture leads to. Blocks.
std::optional<Layer> layer(IconSource &source, std::span<const BinaryXml::Element> elements, int depth);

/// The side of all pictures that are drawn here, in pixels.
constexpr int iconSize = 192;
} // namespace APKIconExtractor

} // namespace quillnest
