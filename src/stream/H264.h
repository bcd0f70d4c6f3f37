#pragma once

#include "platform/SampleRenderer.h"
#include "platform/VideoSample.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace quillnest
{

/// Cutting an H.264 byte stream (ITU-T H.264 annex B) into NAL units and packaging them as samples. Pure functions;
/// any thread.
namespace H264
{
using Unit = std::span<const std::uint8_t>;

constexpr std::uint8_t sequenceParameterSet = 7;
constexpr std::uint8_t pictureParameterSet = 8;
constexpr std::uint8_t accessUnitDelimiter = 9;

/// The type of a unit, or 0 for an empty one.
inline std::uint8_t type(Unit unit)
{
    return unit.empty() ? 0 : unit[0] & 0x1F;
}

/// The units without their start codes. Input without any start code is one unit.
std::vector<Unit> nalUnits(std::span<const std::uint8_t> bytes);

/// The format that two parameter sets make, or null if nothing here can decode it.
std::shared_ptr<const VideoFormat> format(VideoDecoding &decoding, Unit sps, Unit pps);

/// The sample that the units make, without parameter sets and delimiters; nothing if that leaves nothing.
std::optional<VideoSample>
sampleBuffer(const std::vector<Unit> &units, const std::shared_ptr<const VideoFormat> &format);
} // namespace H264

} // namespace quillnest
