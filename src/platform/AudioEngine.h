#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace quillnest
{

/// 32-bit float sound at 48000 Hz, one plane for each of the two channels, planes of equal length.
struct AudioBuffer {
    std::vector<float> left;
    std::vector<float> right;
};

/// A sound output with one player node. All calls return without waiting for the sound server; any thread.
class AudioEngine
{
public:
    virtual ~AudioEngine() = default;

    /// Opens the output. False when it can't be; may be tried again.
    virtual bool start() = 0;
    /// Stops for good and discards what is queued; completions that are due still come or are dropped.
    virtual void stop() = 0;

    /// Queues a buffer. `completed` runs on the engine's thread once its last frame has been played out.
    virtual void schedule(AudioBuffer buffer, std::function<void()> completed) = 0;
    virtual void play() = 0;
    virtual void pause() = 0;

    /// Frames handed to the sound server so far.
    virtual std::uint64_t framesPlayed() const = 0;
};

class AudioOutput
{
public:
    virtual ~AudioOutput() = default;
    virtual std::shared_ptr<AudioEngine> engine() = 0;
};

} // namespace quillnest
