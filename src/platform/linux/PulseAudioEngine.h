#pragma once

#include "platform/AudioEngine.h"

#include <deque>
#include <map>
#include <mutex>

struct pa_context;
struct pa_stream;
struct pa_threaded_mainloop;
struct pa_time_event;

namespace quillnest
{

/// Plays on the user's sound server through its asynchronous interface. A server that is missing, slow or restarts
/// costs sound and nothing else: buffers then complete unheard, and the connection is tried again at most every
/// two seconds.
class PulseAudioEngine : public AudioEngine
{
public:
    /// Sound that the server keeps ahead of what is heard: 40 ms, which is what this engine adds to the delay.
    static constexpr std::uint32_t serverFrames = 1920;
    /// Sound that the server gathers before it goes on after an underrun: 10 ms.
    static constexpr std::uint32_t prebufferFrames = 480;

    PulseAudioEngine() = default;
    ~PulseAudioEngine() override;

    bool start() override;
    void stop() override;
    void schedule(AudioBuffer buffer, std::function<void()> completed) override;
    void play() override;
    void pause() override;
    std::uint64_t framesPlayed() const override;

private:
    class LoopLock;

    void connect();
    void disconnect();
    void contextChanged();
    void streamChanged();
    void createStream();
    /// Hands over as much as the server takes.
    void feed();
    /// Takes the completions of all buffers that have been heard by now.
    void completeHeard();
    void tick();
    void armTick(bool on);
    std::uint64_t heardFrames() const;
    void dropQueue();

    static constexpr std::uint32_t frameBytes = 2 * sizeof(float);

    // All under the loop's lock, which is also held while the loop calls back.
    pa_threaded_mainloop *m_loop = nullptr;
    pa_context *m_context = nullptr;
    pa_stream *m_stream = nullptr;
    pa_time_event *m_ticker = nullptr;
    bool m_wanted = false;
    bool m_ready = false;
    std::int64_t m_retryAfterMicroseconds = 0;

    struct Queued {
        std::vector<float> samples;
        std::size_t written = 0;
    };
    std::deque<Queued> m_queue;
    /// Completions by the count of frames written at which their buffer ends.
    std::multimap<std::uint64_t, std::function<void()>> m_completions;
    std::uint64_t m_scheduledFrames = 0;
    std::uint64_t m_writtenFrames = 0;
    std::uint64_t m_playedFrames = 0;
    /// What was played on connections that are gone.
    std::uint64_t m_playedBefore = 0;

    /// Keeps the loop alive for the calls from outside; the loop's own thread never takes it.
    mutable std::mutex m_lifeLock;
    bool m_stopped = false;
};

class PulseAudioOutput : public AudioOutput
{
public:
    std::shared_ptr<AudioEngine> engine() override { return std::make_shared<PulseAudioEngine>(); }
};

} // namespace quillnest
