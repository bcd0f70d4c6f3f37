#pragma once

#include "package/Bytes.h"

#include <string>
#include <vector>

namespace quillnest
{

/// The head of a string pool chunk: where its strings lie. Not a reader: how strictly the strings are taken is each
/// reader's own affair.
struct StringPoolHead {
    static constexpr std::uint32_t utf8Flag = 0x100;

    std::int64_t offsets = 0;
    std::int64_t data = 0;
    std::uint32_t count = 0;
    bool isUtf8 = false;

    /// Fields past the end count as 0.
    static StringPoolHead at(ByteView bytes, std::int64_t pool)
    {
        return {
            .offsets = pool + Bytes::u16(bytes, pool + 2),
            .data = pool + Bytes::looseU32(bytes, pool + 20),
            .count = Bytes::looseU32(bytes, pool + 8),
            .isUtf8 = (Bytes::looseU32(bytes, pool + 16) & utf8Flag) != 0,
        };
    }

    std::int64_t stringPosition(ByteView bytes, std::int64_t index) const
    {
        return data + Bytes::looseU32(bytes, offsets + 4 * index);
    }
};

/// Where the body of one UTF-8 string lies.
struct Utf8Body {
    std::int64_t start = 0;
    std::int64_t end = 0;

    /// Skips the character count and reads the byte length of the string at `position`; a length past the end of the
    /// array is 0.
    static Utf8Body at(ByteView bytes, std::int64_t position)
    {
        std::int64_t cursor = position + ((Bytes::u8(bytes, position) & 0x80) != 0 ? 2 : 1);
        std::int64_t length = Bytes::u8(bytes, cursor++);
        if ((length & 0x80) != 0)
            length = ((length & 0x7F) << 8) | Bytes::u8(bytes, cursor++);
        return {cursor, cursor + length};
    }
};

/// Where the code units of one UTF-16 string lie, and how many it says it has.
struct Utf16Body {
    std::int64_t start = 0;
    std::int64_t length = 0;

    static Utf16Body at(ByteView bytes, std::int64_t position)
    {
        const std::int64_t first = Bytes::looseU16(bytes, position);
        if ((first & 0x8000) == 0)
            return {position + 2, first};
        return {position + 4, ((first & 0x7FFF) << 16) | Bytes::looseU16(bytes, position + 2)};
    }
};

} // namespace quillnest
