#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace quillnest
{

using ByteView = std::span<const std::uint8_t>;

/// Little-endian reads out of untrusted bytes and the decoding of the text in them. Nothing here reads outside the
/// array; positions are signed and may lie anywhere.
namespace Bytes
{
/// The byte at a position; 0 outside the array.
std::uint8_t u8(ByteView bytes, std::int64_t position);
/// Two bytes; 0 unless both lie inside the array.
std::uint16_t u16(ByteView bytes, std::int64_t position);
/// Two bytes, each of which counts as 0 outside the array.
std::uint16_t looseU16(ByteView bytes, std::int64_t position);
/// Four bytes, each of which counts as 0 outside the array.
std::uint32_t looseU32(ByteView bytes, std::int64_t position);
/// Four bytes; 0 unless all lie inside the array.
std::uint32_t u32(ByteView bytes, std::int64_t position);

/// UTF-8 with U+FFFD in place of each maximal invalid sequence.
std::string repairedUtf8(ByteView text);
/// UTF-16 as UTF-8, with U+FFFD in place of each lone surrogate.
std::string repairedUtf16(std::span<const std::uint16_t> units);
} // namespace Bytes

/// How much work a reader may still do for one call. The formats allow counts and overlaps that make a small file stand
/// for any amount of strings; a real file uses a fraction of what this grants.
class WorkBudget
{
public:
    /// A fixed amount plus a multiple of the input, so that real files of any size fit.
    explicit WorkBudget(std::size_t inputSize) : m_left(24 * 1024 * 1024 + 4 * inputSize) { }

    /// Takes `amount` (about a byte of memory or a nanosecond each); false once all is spent.
    bool spend(std::size_t amount)
    {
        if (amount > m_left) {
            m_left = 0;
            return false;
        }
        m_left -= amount;
        return true;
    }

private:
    static constexpr std::size_t least = 8 * 1024 * 1024;
    static constexpr std::size_t most = 256 * 1024 * 1024;

    std::size_t m_left;
};

} // namespace quillnest
