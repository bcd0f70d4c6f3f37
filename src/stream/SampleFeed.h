#pragma once

#include "base/QuillnestLog.h"
#include "platform/Executor.h"
#include "stream/SampleConsumer.h"

#include <cstddef>
#include <memory>
#include <mutex>
#include <vector>

namespace quillnest
{

/// Hands a stream's samples to those who asked for them, off the stream's own threads. A consumer that is slow, stuck
/// or throws harms nobody but itself: its share of the memory is bounded, pictures that don't fit are left out up to
/// the next key frame, and one that throws is heard of no more. Any thread.
class SampleFeed
{
public:
    /// How much may wait for one consumer.
    static constexpr std::size_t byteCapacity = 32U << 20;
    /// What holding a sample counts besides its bytes, so that a flood of tiny ones is bounded as well.
    static constexpr std::size_t itemCost = 256;

    SampleFeed(std::shared_ptr<Executor> executor, std::shared_ptr<QuillnestLog> log);
    ~SampleFeed();
    SampleFeed(const SampleFeed &) = delete;
    SampleFeed &operator=(const SampleFeed &) = delete;

    /// From the next sample on. A consumer is attached once at a time; after `end` it is told the end at once.
    void attach(const std::shared_ptr<SampleConsumer> &consumer);
    /// The consumer gets what has come by now, and then its end. Nothing happens when it isn't attached.
    void detach(const std::shared_ptr<SampleConsumer> &consumer);
    /// The stream has ended: detaches all, for good.
    void end();

    // The readers' part: these copy for whoever is attached and return at once.
    void takeVideo(const VideoSample &sample);
    void takeAudio(std::span<const std::uint8_t> pcm, std::chrono::nanoseconds arrival);

private:
    class Channel;

    std::vector<std::shared_ptr<Channel>> channels() const;

    const std::shared_ptr<Executor> m_executor;
    const std::shared_ptr<QuillnestLog> m_log;
    mutable std::mutex m_lock;
    std::vector<std::shared_ptr<Channel>> m_channels;
    bool m_ended = false;
};

} // namespace quillnest
