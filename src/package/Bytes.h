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
/// True if `width` bytes from a position on all lie inside the array.
inline bool fits(ByteView bytes, std::int64_t position, std::int64_t width)
{
    return position >= 0 && position <= static_cast<std::int64_t>(bytes.size()) - width;
}

/// The byte at a position; 0 outside the array.
inline std::uint8_t u8(ByteView bytes, std::int64_t position)
{
    return fits(bytes, position, 1) ? bytes[static_cast<std::size_t>(position)] : std::uint8_t{0};
}

/// Two bytes; 0 unless both lie inside the array.
inline std::uint16_t u16(ByteView bytes, std::int64_t position)
{
    if (!fits(bytes, position, 2))
        return 0;
    const auto *at = bytes.data() + position;
    return static_cast<std::uint16_t>(at[0] | (at[1] << 8));
}

/// Two bytes, each of which counts as 0 outside the array.
inline std::uint16_t looseU16(ByteView bytes, std::int64_t position)
{
    return static_cast<std::uint16_t>(u8(bytes, position) | (u8(bytes, position + 1) << 8));
}

/// Four bytes; 0 unless all lie inside the array.
inline std::uint32_t u32(ByteView bytes, std::int64_t position)
{
    if (!fits(bytes, position, 4))
        return 0;
    const auto *at = bytes.data() + position;
    return at[0] | (std::uint32_t{at[1]} << 8) | (std::uint32_t{at[2]} << 16) | (std::uint32_t{at[3]} << 24);
}

/// Four bytes, each of which counts as 0 outside the array.
inline std::uint32_t looseU32(ByteView bytes, std::int64_t position)
{
    if (fits(bytes, position, 4))
        return u32(bytes, position);
    return looseU16(bytes, position) | (std::uint32_t{looseU16(bytes, position + 2)} << 16);
}

/// Code units of two bytes; each one that doesn't wholly lie inside the array counts as 0.
std::vector<std::uint16_t> units(ByteView bytes, std::int64_t start, std::int64_t count);

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
    /// A fixed amount plus a multiple of the input, so that real files of any size fit, up to what may be in memory.
    explicit WorkBudget(std::size_t inputSize) : m_left(std::min(24 * 1024 * 1024 + 4 * inputSize, most)) { }

    static WorkBudget ofAmount(std::size_t amount)
    {
        WorkBudget budget(0);
        budget.m_left = amount;
        return budget;
    }

    /// Takes `amount` (about a byte of memory or a nanosecond each); false once all is spent.
    bool spend(std::size_t amount)
    {
        if (amount > m_left) {
            m_left = 0;
            m_isSpent = true;
            return false;
        }
        m_left -= amount;
        return true;
    }

    /// Whether something was refused.
    bool isSpent() const { return m_isSpent; }

private:
    static constexpr std::size_t most = 128 * 1024 * 1024;

    std::size_t m_left;
    bool m_isSpent = false;
};

} // namespace quillnest
