#pragma once

#include "platform/VideoSample.h"

#include <chrono>
#include <cstdint>
#include <span>

namespace quillnest
{

/// Takes a stream's samples beside the renderer and the loudspeaker: what records them. Its calls come one after the
/// other, in the order in which the samples arrived, on threads of the background pool; so it may work and write files,
/// and the picture doesn't wait for it. Times are those of the arrival, by `Clock::monotonic`; the stream's own aren't
/// read. Two samples may have the same time.
class SampleConsumer
{
public:
    virtual ~SampleConsumer() = default;

    /// One compressed picture with the parameter sets that it is decoded with. What comes first needs not be a key
    /// frame; but what follows after pictures were left out, for a consumer that is too slow, is one.
    virtual void takeVideo(const VideoSample &sample, std::chrono::microseconds time) = 0;

    /// Sound at 48000 Hz, two channels interleaved, signed 16-bit little-endian.
    virtual void takeAudio(std::span<const std::uint8_t> pcm, std::chrono::microseconds time) = 0;

    /// The last call: it was detached, or the stream has ended. What came before has all been handed over.
    virtual void ended() = 0;
};

} // namespace quillnest
