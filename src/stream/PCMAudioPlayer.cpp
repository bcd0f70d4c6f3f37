#include "stream/PCMAudioPlayer.h"

namespace quillnest
{

PCMAudioPlayer::PCMAudioPlayer(std::shared_ptr<AudioEngine> engine) : m_engine(std::move(engine)) { }

void PCMAudioPlayer::play(std::span<const std::uint8_t> bytes)
{
    if (bytes.size() < 4)
        return;
    const auto frames = bytes.size() / 4;
    AudioBuffer buffer;
    buffer.left.resize(frames);
    buffer.right.resize(frames);
    const auto sample = [bytes](std::size_t index) {
        const auto value = static_cast<std::int16_t>(bytes[2 * index] | bytes[2 * index + 1] << 8);
        return static_cast<float>(value) * (1.0F / 32768.0F);
    };
    for (std::size_t i = 0; i < frames; ++i) {
        buffer.left[i] = sample(2 * i);
        buffer.right[i] = sample(2 * i + 1);
    }

    const auto count = static_cast<std::int64_t>(frames);
    bool pause = false;
    bool begin = false;
    {
        const std::scoped_lock guard(m_lock);
        if (m_stopped || m_state.pendingFrames > dropThreshold)
            return;
        pause = m_state.pendingFrames == 0 && !m_state.playing && m_state.nodeRunning;
        if (pause)
            m_state.nodeRunning = false;
        m_state.pendingFrames += count;
        begin = !m_state.playing && m_state.pendingFrames >= startThreshold;
        if (begin) {
            m_state.playing = true;
            m_state.nodeRunning = true;
        }
    }
    if (pause)
        m_engine->pause();
    if (!m_engineStarted) {
        m_engineStarted = m_engine->start();
        if (!m_engineStarted)
            return;
    }
    m_engine->schedule(std::move(buffer), [weak = weak_from_this(), count] {
        if (const auto self = weak.lock())
            self->completed(count);
    });
    if (begin)
        m_engine->play();
}

void PCMAudioPlayer::completed(std::int64_t frames)
{
    const std::scoped_lock guard(m_lock);
    m_state.pendingFrames -= frames;
    if (m_state.pendingFrames <= 0) {
        m_state.pendingFrames = 0;
        m_state.playing = false;
    }
}

void PCMAudioPlayer::stop()
{
    {
        const std::scoped_lock guard(m_lock);
        if (m_stopped)
            return;
        m_stopped = true;
    }
    m_engine->stop();
}

PCMAudioPlayer::State PCMAudioPlayer::state() const
{
    const std::scoped_lock guard(m_lock);
    return m_state;
}

} // namespace quillnest
