#pragma once

#include <cstdint>
#include <vector>

namespace quillnest
{

/// A picture in memory.
struct Image {
    int width = 0;
    int height = 0;
    /// width × height pixels from the top left, row by row without gaps: 0xAARRGGBB in the machine's byte order,
    /// colours premultiplied by alpha.
    std::vector<std::uint32_t> pixels;

    bool operator==(const Image &) const = default;
};

} // namespace quillnest
