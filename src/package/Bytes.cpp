#include "package/Bytes.h"

namespace quillnest
{

namespace
{
constexpr const char *replacement = "\uFFFD";

void append(std::string &text, char32_t scalar)
{
    const auto push = [&text](char32_t value) { text.push_back(static_cast<char>(static_cast<unsigned char>(value))); };
    if (scalar < 0x80) {
        push(scalar);
    } else if (scalar < 0x800) {
        push(0xC0 | (scalar >> 6));
        push(0x80 | (scalar & 0x3F));
    } else if (scalar < 0x10000) {
        push(0xE0 | (scalar >> 12));
        push(0x80 | ((scalar >> 6) & 0x3F));
        push(0x80 | (scalar & 0x3F));
    } else {
        push(0xF0 | (scalar >> 18));
        push(0x80 | ((scalar >> 12) & 0x3F));
        push(0x80 | ((scalar >> 6) & 0x3F));
        push(0x80 | (scalar & 0x3F));
    }
}

/// What a lead byte promises: how many bytes follow, and the range of the first of them. The ranges keep out overlong
/// forms, surrogates and values past U+10FFFF.
struct Lead {
    int following = -1;
    std::uint8_t low = 0x80;
    std::uint8_t high = 0xBF;
};

Lead leadOf(std::uint8_t byte)
{
    if (byte < 0x80)
        return {0};
    if (byte >= 0xC2 && byte <= 0xDF)
        return {1};
    if (byte == 0xE0)
        return {2, 0xA0, 0xBF};
    if (byte == 0xED)
        return {2, 0x80, 0x9F};
    if (byte >= 0xE1 && byte <= 0xEF)
        return {2};
    if (byte == 0xF0)
        return {3, 0x90, 0xBF};
    if (byte >= 0xF1 && byte <= 0xF3)
        return {3};
    if (byte == 0xF4)
        return {3, 0x80, 0x8F};
    return {};
}

/// A whole sequence, or the longest beginning of one.
struct Sequence {
    std::size_t size;
    bool valid;
};

Sequence sequenceAt(ByteView text)
{
    const Lead lead = leadOf(text[0]);
    if (lead.following < 0)
        return {1, false};
    const auto whole = static_cast<std::size_t>(lead.following) + 1;
    std::size_t size = 1;
    for (auto low = lead.low, high = lead.high; size < whole && size < text.size(); ++size, low = 0x80, high = 0xBF) {
        if (text[size] < low || text[size] > high)
            break;
    }
    return {size, size == whole};
}
} // namespace

std::vector<std::uint16_t> Bytes::units(ByteView bytes, std::int64_t start, std::int64_t count)
{
    std::vector<std::uint16_t> units(static_cast<std::size_t>(count));
    // Checked once for all of them and not one by one: texts are what most of a file consists of.
    const auto first = std::clamp<std::int64_t>((1 - start) / 2, 0, count);
    const auto end = std::clamp<std::int64_t>((static_cast<std::int64_t>(bytes.size()) - start) / 2, first, count);
    for (auto i = first; i < end; ++i) {
        const auto position = static_cast<std::size_t>(start + 2 * i);
        units[static_cast<std::size_t>(i)] = static_cast<std::uint16_t>(bytes[position] | (bytes[position + 1] << 8));
    }
    return units;
}

std::string Bytes::repairedUtf8(ByteView text)
{
    std::string result;
    result.reserve(text.size());
    // Valid text is copied run by run: nearly all text is one run.
    std::size_t runStart = 0;
    const auto copyRun = [&](std::size_t end) {
        const auto run = text.subspan(runStart, end - runStart);
        result.append(run.begin(), run.end());
    };
    std::size_t position = 0;
    while (position < text.size()) {
        if (text[position] < 0x80) {
            ++position;
            continue;
        }
        const auto length = sequenceAt(text.subspan(position));
        if (!length.valid) {
            if (position > runStart)
                copyRun(position);
            result.append(replacement);
            runStart = position + length.size;
        }
        position += length.size;
    }
    copyRun(position);
    return result;
}

std::string Bytes::repairedUtf16(std::span<const std::uint16_t> units)
{
    const auto isHigh = [](std::uint16_t unit) { return (unit & 0xFC00) == 0xD800; };
    const auto isLow = [](std::uint16_t unit) { return (unit & 0xFC00) == 0xDC00; };
    std::string result;
    result.reserve(units.size());
    for (std::size_t i = 0; i < units.size(); ++i) {
        const auto unit = units[i];
        if (unit < 0x80) {
            result.push_back(static_cast<char>(unit));
        } else if (isHigh(unit) && i + 1 < units.size() && isLow(units[i + 1])) {
            const auto low = units[++i];
            append(result, 0x10000 + ((static_cast<char32_t>(unit) & 0x3FF) << 10) + (low & 0x3FFU));
        } else if (isHigh(unit) || isLow(unit)) {
            result.append(replacement);
        } else {
            append(result, unit);
        }
    }
    return result;
}

} // namespace quillnest
