#pragma once

#include <cstdint>

namespace quillnest
{

/// The types of an attribute's or a resource's value.
namespace ValueType
{
constexpr std::uint8_t reference = 1;
constexpr std::uint8_t string = 3;
constexpr std::uint8_t real = 4;
constexpr std::uint8_t dimension = 5;
constexpr std::uint8_t fraction = 6;
constexpr std::uint8_t decimal = 16;
constexpr std::uint8_t hexadecimal = 17;

/// Colours are 0xAARRGGBB; the four types tell how they were written.
constexpr bool isColor(std::uint8_t type)
{
    return (type & 0xFC) == 28;
}
} // namespace ValueType

} // namespace quillnest
