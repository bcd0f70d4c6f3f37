#pragma once

#include "base/LatencyHistogram.h"

#include <cstdint>
#include <optional>

namespace quillnest
{

/// What a stream has carried so far.
struct StreamStatistics {
    /// Samples that were put into the renderer's queue.
    std::uint64_t framesEnqueued = 0;
    /// As of the last packet of sound.
    std::uint64_t audioFramesPlayed = 0;
    std::uint64_t audioPackets = 0;
    /// Control messages that wait for the device, and those that were replaced or refused because too many did.
    std::uint64_t controlWaiting = 0;
    std::uint64_t controlDropped = 0;
    /// From `since` of `send` until a message's last byte was given to the socket.
    LatencyHistogram controlLatency;
    /// From `start` to the first frame in the renderer's queue, in seconds.
    std::optional<double> firstFrameSeconds;
};

} // namespace quillnest
