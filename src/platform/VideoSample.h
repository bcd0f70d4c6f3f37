#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

namespace quillnest
{

/// The parameter sets that H.264 samples are decoded with, without start codes. Immutable, shared by its samples.
struct VideoFormat {
    std::vector<std::uint8_t> sps;
    std::vector<std::uint8_t> pps;

    bool operator==(const VideoFormat &) const = default;
};

/// One compressed picture: NAL units, each behind its length as a 32-bit big-endian number. To be shown on arrival.
struct VideoSample {
    std::vector<std::uint8_t> data;
    std::shared_ptr<const VideoFormat> format;
    bool keyFrame = false;
    /// `Clock::monotonic` when the last byte could be read from the socket.
    std::chrono::nanoseconds arrival{};
};

} // namespace quillnest
