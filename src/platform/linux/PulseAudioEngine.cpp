#include "platform/linux/PulseAudioEngine.h"

#include <pulse/pulseaudio.h>

#include <algorithm>
#include <utility>

namespace quillnest
{

class PulseAudioEngine::LoopLock
{
public:
    explicit LoopLock(pa_threaded_mainloop *loop) : m_loop(loop) { pa_threaded_mainloop_lock(m_loop); }
    ~LoopLock() { pa_threaded_mainloop_unlock(m_loop); }
    LoopLock(const LoopLock &) = delete;
    LoopLock &operator=(const LoopLock &) = delete;

private:
    pa_threaded_mainloop *m_loop;
};

namespace
{
constexpr pa_usec_t retryInterval = 2'000'000;
constexpr pa_usec_t tickInterval = 10'000;
} // namespace

PulseAudioEngine::~PulseAudioEngine()
{
    stop();
}

bool PulseAudioEngine::start()
{
    const std::scoped_lock guard(m_lifeLock);
    if (m_stopped)
        return false;
    if (m_loop)
        return true;
    m_loop = pa_threaded_mainloop_new();
    if (!m_loop)
        return false;
    pa_threaded_mainloop_set_name(m_loop, "audio engine");
    if (pa_threaded_mainloop_start(m_loop) < 0) {
        pa_threaded_mainloop_free(m_loop);
        m_loop = nullptr;
        return false;
    }
    const LoopLock loop(m_loop);
    connect();
    return true;
}

void PulseAudioEngine::stop()
{
    const std::scoped_lock guard(m_lifeLock);
    m_stopped = true;
    if (!m_loop)
        return;
    {
        const LoopLock loop(m_loop);
        armTick(false);
        disconnect();
        m_queue.clear();
        m_completions.clear();
    }
    pa_threaded_mainloop_stop(m_loop);
    pa_threaded_mainloop_free(m_loop);
    m_loop = nullptr;
}

void PulseAudioEngine::connect()
{
    // Nothing is queued here. What is scheduled from now on is counted from the beginning of the new stream, also while
    // the connection comes about.
    m_playedBefore += std::exchange(m_playedFrames, 0);
    m_scheduledFrames = 0;
    m_writtenFrames = 0;
    m_retryAfterMicroseconds = static_cast<std::int64_t>(pa_rtclock_now() + retryInterval);
    m_context = pa_context_new(pa_threaded_mainloop_get_api(m_loop), "Quillnest");
    if (!m_context)
        return;
    pa_context_set_state_callback(
        m_context, [](pa_context *, void *self) { static_cast<PulseAudioEngine *>(self)->contextChanged(); }, this);
    if (pa_context_connect(m_context, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0)
        disconnect();
}

void PulseAudioEngine::disconnect()
{
    m_ready = false;
    if (m_stream) {
        pa_stream_set_state_callback(m_stream, nullptr, nullptr);
        pa_stream_set_write_callback(m_stream, nullptr, nullptr);
        pa_stream_disconnect(m_stream);
        pa_stream_unref(m_stream);
        m_stream = nullptr;
    }
    if (m_context) {
        pa_context_set_state_callback(m_context, nullptr, nullptr);
        pa_context_disconnect(m_context);
        pa_context_unref(m_context);
        m_context = nullptr;
    }
}

void PulseAudioEngine::contextChanged()
{
    switch (pa_context_get_state(m_context)) {
    case PA_CONTEXT_READY:
        createStream();
        break;
    case PA_CONTEXT_FAILED:
    case PA_CONTEXT_TERMINATED:
        m_ready = false;
        dropQueue();
        break;
    default:
        break;
    }
}

void PulseAudioEngine::createStream()
{
    const pa_sample_spec specification{PA_SAMPLE_FLOAT32LE, 48000, 2};
    m_stream = pa_stream_new(m_context, "Android app", &specification, nullptr);
    if (!m_stream)
        return;
    pa_stream_set_state_callback(
        m_stream, [](pa_stream *, void *self) { static_cast<PulseAudioEngine *>(self)->streamChanged(); }, this);
    pa_stream_set_write_callback(
        m_stream, [](pa_stream *, size_t, void *self) { static_cast<PulseAudioEngine *>(self)->feed(); }, this);
    constexpr auto unset = static_cast<std::uint32_t>(-1);
    const pa_buffer_attr buffer{unset, serverFrames * frameBytes, prebufferFrames * frameBytes, unset, unset};
    const auto flags = static_cast<pa_stream_flags_t>(
        PA_STREAM_START_CORKED | PA_STREAM_ADJUST_LATENCY | PA_STREAM_INTERPOLATE_TIMING
        | PA_STREAM_AUTO_TIMING_UPDATE);
    pa_stream_connect_playback(m_stream, nullptr, &buffer, flags, nullptr, nullptr);
}

void PulseAudioEngine::streamChanged()
{
    const auto state = pa_stream_get_state(m_stream);
    m_ready = state == PA_STREAM_READY;
    if (m_ready) {
        if (m_wanted)
            pa_operation_unref(pa_stream_cork(m_stream, 0, nullptr, nullptr));
        feed();
    } else if (!PA_STREAM_IS_GOOD(state)) {
        dropQueue();
    }
}

void PulseAudioEngine::schedule(AudioBuffer buffer, std::function<void()> completed)
{
    Queued queued;
    queued.samples.reserve(2 * buffer.left.size());
    for (std::size_t i = 0; i < buffer.left.size(); ++i) {
        queued.samples.push_back(buffer.left[i]);
        queued.samples.push_back(buffer.right[i]);
    }
    const std::scoped_lock guard(m_lifeLock);
    if (!m_loop)
        return;
    const LoopLock loop(m_loop);
    m_scheduledFrames += buffer.left.size();
    m_completions.emplace(m_scheduledFrames, std::move(completed));
    m_queue.push_back(std::move(queued));
    const bool good = m_context && PA_CONTEXT_IS_GOOD(pa_context_get_state(m_context))
        && (!m_stream || PA_STREAM_IS_GOOD(pa_stream_get_state(m_stream)));
    if (good) {
        feed();
        return;
    }
    dropQueue();
    if (static_cast<std::int64_t>(pa_rtclock_now()) >= m_retryAfterMicroseconds) {
        disconnect();
        connect();
    }
}

void PulseAudioEngine::dropQueue()
{
    m_queue.clear();
    armTick(false);
    const auto completions = std::exchange(m_completions, {});
    for (const auto &[position, completed] : completions)
        completed();
}

void PulseAudioEngine::feed()
{
    if (!m_ready)
        return;
    auto room = pa_stream_writable_size(m_stream);
    if (room == static_cast<std::size_t>(-1))
        return;
    while (room >= frameBytes && !m_queue.empty()) {
        auto &queued = m_queue.front();
        const auto left = (queued.samples.size() - queued.written) * sizeof(float);
        const auto count = std::min(left, room - room % frameBytes);
        if (pa_stream_write(m_stream, queued.samples.data() + queued.written, count, nullptr, 0, PA_SEEK_RELATIVE) < 0)
            return;
        queued.written += count / sizeof(float);
        m_writtenFrames += count / frameBytes;
        room -= count;
        if (queued.written == queued.samples.size())
            m_queue.pop_front();
    }
    if (!m_completions.empty() && m_wanted)
        armTick(true);
}

std::uint64_t PulseAudioEngine::heardFrames() const
{
    // Once the server has run dry its latency stands still, often a little above nothing.
    if (m_stream && pa_stream_get_underflow_index(m_stream) >= static_cast<std::int64_t>(m_writtenFrames * frameBytes))
        return m_writtenFrames;
    pa_usec_t latency = 0;
    int negative = 0;
    if (!m_stream || pa_stream_get_latency(m_stream, &latency, &negative) < 0 || negative)
        latency = 0;
    const auto ahead = latency * 48 / 1000;
    return m_writtenFrames > ahead ? std::max<std::uint64_t>(m_writtenFrames - ahead, m_playedFrames) : m_playedFrames;
}

void PulseAudioEngine::completeHeard()
{
    m_playedFrames = heardFrames();
    while (!m_completions.empty() && m_completions.begin()->first <= m_playedFrames) {
        const auto completed = std::move(m_completions.begin()->second);
        m_completions.erase(m_completions.begin());
        completed();
    }
}

void PulseAudioEngine::tick()
{
    armTick(false);
    completeHeard();
    if (!m_completions.empty() && m_wanted)
        armTick(true);
}

void PulseAudioEngine::armTick(bool on)
{
    auto *api = pa_threaded_mainloop_get_api(m_loop);
    if (!on) {
        if (m_ticker)
            api->time_free(m_ticker);
        m_ticker = nullptr;
    } else if (!m_ticker) {
        m_ticker = pa_context_rttime_new(
            m_context, pa_rtclock_now() + tickInterval,
            [](pa_mainloop_api *, pa_time_event *, const timeval *, void *self) {
                static_cast<PulseAudioEngine *>(self)->tick();
            },
            this);
    }
}

void PulseAudioEngine::play()
{
    const std::scoped_lock guard(m_lifeLock);
    if (!m_loop)
        return;
    const LoopLock loop(m_loop);
    m_wanted = true;
    if (m_ready) {
        pa_operation_unref(pa_stream_cork(m_stream, 0, nullptr, nullptr));
        feed();
    }
}

void PulseAudioEngine::pause()
{
    const std::scoped_lock guard(m_lifeLock);
    if (!m_loop)
        return;
    const LoopLock loop(m_loop);
    m_wanted = false;
    if (m_ready)
        pa_operation_unref(pa_stream_cork(m_stream, 1, nullptr, nullptr));
}

std::uint64_t PulseAudioEngine::framesPlayed() const
{
    const std::scoped_lock guard(m_lifeLock);
    if (!m_loop)
        return m_playedBefore + m_playedFrames;
    const LoopLock loop(m_loop);
    return m_playedBefore + m_playedFrames;
}

} // namespace quillnest
