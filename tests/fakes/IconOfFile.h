#pragma once

#include "package/APKIconExtractor.h"

#include <QByteArray>

#include <optional>

namespace quillnest
{

/// What an icon reader gives for a package whose icon is this PNG file; absent if it is none.
inline std::optional<APKIconExtractor::Icon> iconOfFile(Drawing &drawing, const std::vector<std::uint8_t> &png)
{
    auto image = drawing.decode(png);
    return image ? std::optional(APKIconExtractor::Icon{std::move(*image), png}) : std::nullopt;
}

} // namespace quillnest
