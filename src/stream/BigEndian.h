#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace quillnest
{

/// Unsigned big-endian 32-bit value at `at`; the caller sees to it that four bytes are there.
inline std::uint32_t readBE(std::span<const std::uint8_t> bytes, std::size_t at)
{
    return static_cast<std::uint32_t>(bytes[at]) << 24 | static_cast<std::uint32_t>(bytes[at + 1]) << 16
        | static_cast<std::uint32_t>(bytes[at + 2]) << 8 | bytes[at + 3];
}

} // namespace quillnest
