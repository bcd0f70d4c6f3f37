#pragma once

#include "platform/AudioEngine.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <span>

namespace quillnest
{

/// A small jitter buffer in front of the audio engine. It starts once 60 ms are queued, waits for 60 ms again after it
/// has run dry, and drops new sound while more than 250 ms are queued, which bounds the delay behind the picture.
class PCMAudioPlayer : public std::enable_shared_from_this<PCMAudioPlayer>
{
public:
    /// Frames at 48000 Hz.
    static constexpr std::int64_t startThreshold = 2880;
    static constexpr std::int64_t dropThreshold = 12000;

    explicit PCMAudioPlayer(std::shared_ptr<AudioEngine> engine);

    /// Takes a packet of interleaved signed 16-bit little-endian stereo; a tail of less than a frame is ignored.
    void play(std::span<const std::uint8_t> bytes);

    /// Stops for good; may be called more than once, from any thread.
    void stop();

    struct State {
        std::int64_t pendingFrames = 0;
        bool playing = false;
        /// The node has been told to play and has not been paused since.
        bool nodeRunning = false;
    };
    State state() const;
    std::uint64_t framesPlayed() const { return m_engine->framesPlayed(); }

private:
    void completed(std::int64_t frames);

    const std::shared_ptr<AudioEngine> m_engine;
    mutable std::mutex m_lock;
    State m_state;
    bool m_stopped = false;
    /// Belongs to the one thread that plays.
    bool m_engineStarted = false;
};

} // namespace quillnest
