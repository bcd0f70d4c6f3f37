#pragma once

#include "platform/Path.h"

#include <optional>
#include <string_view>

namespace quillnest
{

/// Reads the path data of vector drawables: the grammar of SVG path data as Android has it. Lenient: what can't be read
/// is skipped, and the rest is drawn. The work is bounded whatever the text. Any thread.
namespace PathData
{
/// The path that a text (UTF-8) describes; absent if that is empty.
std::optional<Path> parse(std::string_view text);
} // namespace PathData

} // namespace quillnest
