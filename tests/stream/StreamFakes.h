#pragma once

#include "platform/AudioEngine.h"
#include "platform/SampleRenderer.h"

#include <QByteArray>
#include <QStringList>

#include <atomic>
#include <mutex>
#include <vector>

namespace quillnest
{

inline QByteArray toBytes(const std::vector<std::uint8_t> &bytes)
{
    return QByteArray(reinterpret_cast<const char *>(bytes.data()), static_cast<qsizetype>(bytes.size()));
}

/// Keeps the samples that it is given, and the order of the calls.
class RecordingRenderer : public SampleRenderer
{
public:
    bool failed() const override { return isFailed; }
    bool requiresFlushToResumeDecoding() const override { return wantsFlush; }
    void flush() override
    {
        const std::scoped_lock guard(m_lock);
        m_calls.append(QStringLiteral("flush"));
        isFailed = false;
        wantsFlush = false;
    }
    void enqueue(VideoSample sample) override
    {
        const std::scoped_lock guard(m_lock);
        m_calls.append(QStringLiteral("enqueue"));
        m_samples.push_back(std::move(sample));
    }
    void setFrameHandler(std::function<void()>) override { }
    std::shared_ptr<const VideoFrame> latestFrame() const override { return nullptr; }
    RendererCounters counters() const override { return {}; }

    std::vector<VideoSample> samples() const
    {
        const std::scoped_lock guard(m_lock);
        return m_samples;
    }
    std::size_t count() const
    {
        const std::scoped_lock guard(m_lock);
        return m_samples.size();
    }
    QStringList calls() const
    {
        const std::scoped_lock guard(m_lock);
        return m_calls;
    }

    std::atomic_bool isFailed = false;
    std::atomic_bool wantsFlush = false;

private:
    mutable std::mutex m_lock;
    std::vector<VideoSample> m_samples;
    QStringList m_calls;
};

/// Takes every pair of parameter sets but those whose first one ends with 0xEE, and "decodes" to a picture as wide as
/// the sample is long. A sample that ends with 0xEE can't be decoded.
class FakeVideoDecoding : public VideoDecoding
{
public:
    std::shared_ptr<SampleRenderer> sampleRenderer() override { return std::make_shared<RecordingRenderer>(); }
    std::shared_ptr<StillDecoder> stillDecoder() override
    {
        class Decoder : public StillDecoder
        {
        public:
            explicit Decoder(std::atomic_int &count) : m_count(count) { }
            QImage decode(const VideoSample &keyFrame) const override
            {
                ++m_count;
                if (keyFrame.data.back() == 0xEE)
                    return {};
                return QImage(static_cast<int>(keyFrame.data.size()), 1, QImage::Format_RGB32);
            }

        private:
            std::atomic_int &m_count;
        };
        return std::make_shared<Decoder>(stills);
    }
    bool accepts(const VideoFormat &format) const override { return format.sps.back() != 0xEE; }

    std::atomic_int stills = 0;
};

/// An engine that plays nothing. Buffers complete when the test says so.
class FakeAudioEngine : public AudioEngine
{
public:
    bool start() override
    {
        note(QStringLiteral("start"));
        return canStart;
    }
    void stop() override { note(QStringLiteral("stop")); }
    void schedule(AudioBuffer buffer, std::function<void()> completed) override
    {
        const std::scoped_lock guard(m_lock);
        m_calls.append(QStringLiteral("schedule %1").arg(buffer.left.size()));
        m_buffers.push_back(std::move(buffer));
        m_completions.push_back(std::move(completed));
    }
    void play() override { note(QStringLiteral("play")); }
    void pause() override { note(QStringLiteral("pause")); }
    std::uint64_t framesPlayed() const override
    {
        const std::scoped_lock guard(life);
        return played;
    }

    QStringList calls() const
    {
        const std::scoped_lock guard(m_lock);
        return m_calls;
    }
    std::vector<AudioBuffer> buffers() const
    {
        const std::scoped_lock guard(m_lock);
        return m_buffers;
    }
    /// Plays out the oldest `count` buffers.
    void complete(std::size_t count = 1)
    {
        for (; count > 0; --count) {
            std::function<void()> next;
            {
                const std::scoped_lock guard(m_lock);
                next = std::move(m_completions.front());
                m_completions.erase(m_completions.begin());
            }
            next();
        }
    }

    /// Held while the sound server keeps the engine busy.
    mutable std::mutex life;
    std::atomic_bool canStart = true;
    std::atomic<std::uint64_t> played = 0;

private:
    void note(const QString &call)
    {
        const std::scoped_lock guard(m_lock);
        m_calls.append(call);
    }

    mutable std::mutex m_lock;
    QStringList m_calls;
    std::vector<AudioBuffer> m_buffers;
    std::vector<std::function<void()>> m_completions;
};

/// Hands out one engine after another and remembers them.
class FakeAudioOutput : public AudioOutput
{
public:
    std::shared_ptr<AudioEngine> engine() override
    {
        const std::scoped_lock guard(m_lock);
        m_engines.push_back(std::make_shared<FakeAudioEngine>());
        return m_engines.back();
    }
    std::vector<std::shared_ptr<FakeAudioEngine>> engines() const
    {
        const std::scoped_lock guard(m_lock);
        return m_engines;
    }

private:
    mutable std::mutex m_lock;
    std::vector<std::shared_ptr<FakeAudioEngine>> m_engines;
};

} // namespace quillnest
