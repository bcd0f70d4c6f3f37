#include "stream/H264.h"

#include <cstring>

namespace quillnest::H264
{

std::vector<Unit> nalUnits(std::span<const std::uint8_t> bytes)
{
    std::vector<Unit> units;
    std::optional<std::size_t> start;
    const auto n = bytes.size();
    for (std::size_t i = 0; i + 3 <= n;) {
        // Most bytes aren't zero: looking at the third one first skips three at a time.
        if (bytes[i + 2] > 1) {
            i += 3;
            continue;
        }
        const bool three = bytes[i] == 0 && bytes[i + 1] == 0 && bytes[i + 2] == 1;
        const bool four = i + 4 <= n && bytes[i] == 0 && bytes[i + 1] == 0 && bytes[i + 2] == 0 && bytes[i + 3] == 1;
        if (!three && !four) {
            ++i;
            continue;
        }
        if (start)
            units.push_back(bytes.subspan(*start, i - *start));
        i += three ? 3 : 4;
        start = i;
    }
    if (start && *start < n)
        units.push_back(bytes.subspan(*start));
    if (!start && n != 0)
        units.push_back(bytes);
    return units;
}

std::shared_ptr<const VideoFormat> format(VideoDecoding &decoding, Unit sps, Unit pps)
{
    auto format = std::make_shared<VideoFormat>();
    format->sps.assign(sps.begin(), sps.end());
    format->pps.assign(pps.begin(), pps.end());
    if (!decoding.accepts(*format))
        return nullptr;
    return format;
}

std::optional<VideoSample>
sampleBuffer(const std::vector<Unit> &units, const std::shared_ptr<const VideoFormat> &format)
{
    const auto isSkipped = [](Unit unit) {
        const auto kind = type(unit);
        return kind == sequenceParameterSet || kind == pictureParameterSet || kind == accessUnitDelimiter;
    };
    std::size_t total = 0;
    for (const auto unit : units)
        total += isSkipped(unit) ? 0 : 4 + unit.size();
    if (total == 0)
        return std::nullopt;

    VideoSample sample;
    sample.format = format;
    sample.data.reserve(total);
    for (const auto unit : units) {
        if (isSkipped(unit))
            continue;
        const auto length = static_cast<std::uint32_t>(unit.size());
        for (const int shift : {24, 16, 8, 0})
            sample.data.push_back(static_cast<std::uint8_t>(length >> shift));
        sample.data.insert(sample.data.end(), unit.begin(), unit.end());
    }
    return sample;
}

} // namespace quillnest::H264
