#include "stream/SampleFeed.h"

#include "platform/DescribedError.h"

#include <algorithm>
#include <deque>
#include <functional>
#include <optional>
#include <utility>

namespace quillnest
{

namespace
{
std::chrono::microseconds inMicroseconds(std::chrono::nanoseconds time)
{
    return std::chrono::duration_cast<std::chrono::microseconds>(time);
}
} // namespace

/// One consumer and what waits for it. At most one piece of background work at a time hands it over.
class SampleFeed::Channel : public std::enable_shared_from_this<Channel>
{
public:
    Channel(
        std::shared_ptr<SampleConsumer> consumer, const std::shared_ptr<Executor> &executor,
        std::shared_ptr<QuillnestLog> log)
        : m_consumer(std::move(consumer)), m_executor(executor), m_log(std::move(log))
    {
    }

    bool isFor(const std::shared_ptr<SampleConsumer> &consumer) const { return m_consumer == consumer; }

    void takeVideo(const VideoSample &sample)
    {
        {
            const std::scoped_lock guard(m_lock);
            if (m_closed)
                return;
            // A picture can't be decoded without those before it, back to a key frame.
            m_waitsForKeyFrame = (m_waitsForKeyFrame && !sample.keyFrame) || !fits(sample.data.size());
            if (m_waitsForKeyFrame)
                return;
        }
        put(sample.data.size(),
            [sample](SampleConsumer &consumer) { consumer.takeVideo(sample, inMicroseconds(sample.arrival)); });
    }

    void takeAudio(std::span<const std::uint8_t> pcm, std::chrono::nanoseconds arrival)
    {
        {
            const std::scoped_lock guard(m_lock);
            if (m_closed || !fits(pcm.size()))
                return;
        }
        put(pcm.size(), [bytes = std::vector(pcm.begin(), pcm.end()), arrival](SampleConsumer &consumer) {
            consumer.takeAudio(bytes, inMicroseconds(arrival));
        });
    }

    void end()
    {
        put(
            0, [](SampleConsumer &consumer) { consumer.ended(); }, Last::yes);
    }

private:
    /// What is handed over next, and how many bytes it holds.
    struct Item {
        std::size_t size = 0;
        std::function<void(SampleConsumer &)> give;
    };

    bool fits(std::size_t bytes) const { return m_bytes + bytes + itemCost <= byteCapacity; }

    enum class Last { no, yes };
    void put(std::size_t size, std::function<void(SampleConsumer &)> give, Last last = Last::no)
    {
        {
            const std::scoped_lock guard(m_lock);
            if (m_closed)
                return;
            // Nothing comes behind the end.
            m_closed = last == Last::yes;
            m_bytes += size + itemCost;
            m_waiting.push_back({size + itemCost, std::move(give)});
            if (std::exchange(m_handingOver, true))
                return;
        }
        if (const auto executor = m_executor.lock())
            executor->inBackground([self = shared_from_this()] { self->handOver(); });
    }

    void handOver()
    {
        while (auto item = next()) {
            try {
                item->give(*m_consumer);
            } catch (const std::exception &error) {
                m_log->write(QStringLiteral("Quillnest: a recording failed: %1").arg(descriptionOf(error)));
                const std::scoped_lock guard(m_lock);
                m_closed = true;
                m_waiting.clear();
                m_bytes = 0;
            }
        }
    }

    std::optional<Item> next()
    {
        const std::scoped_lock guard(m_lock);
        if (m_waiting.empty()) {
            m_handingOver = false;
            return std::nullopt;
        }
        auto item = std::move(m_waiting.front());
        m_waiting.pop_front();
        m_bytes -= item.size;
        return item;
    }

    const std::shared_ptr<SampleConsumer> m_consumer;
    /// Not held: its queue holds this one while there is something to hand over.
    const std::weak_ptr<Executor> m_executor;
    const std::shared_ptr<QuillnestLog> m_log;
    std::mutex m_lock;
    std::deque<Item> m_waiting;
    std::size_t m_bytes = 0;
    bool m_handingOver = false;
    bool m_waitsForKeyFrame = false;
    bool m_closed = false;
};

SampleFeed::SampleFeed(std::shared_ptr<Executor> executor, std::shared_ptr<QuillnestLog> log)
    : m_executor(std::move(executor)), m_log(std::move(log))
{
}

SampleFeed::~SampleFeed()
{
    end();
}

void SampleFeed::attach(const std::shared_ptr<SampleConsumer> &consumer)
{
    const auto channel = std::make_shared<Channel>(consumer, m_executor, m_log);
    {
        const std::scoped_lock guard(m_lock);
        if (!m_ended) {
            m_channels.push_back(channel);
            return;
        }
    }
    channel->end();
}

void SampleFeed::detach(const std::shared_ptr<SampleConsumer> &consumer)
{
    std::shared_ptr<Channel> channel;
    {
        const std::scoped_lock guard(m_lock);
        const auto found = std::find_if(m_channels.begin(), m_channels.end(), [&consumer](const auto &candidate) {
            return candidate->isFor(consumer);
        });
        if (found == m_channels.end())
            return;
        channel = *found;
        m_channels.erase(found);
    }
    channel->end();
}

void SampleFeed::end()
{
    std::vector<std::shared_ptr<Channel>> ending;
    {
        const std::scoped_lock guard(m_lock);
        m_ended = true;
        ending.swap(m_channels);
    }
    for (const auto &channel : ending)
        channel->end();
}

std::vector<std::shared_ptr<SampleFeed::Channel>> SampleFeed::channels() const
{
    const std::scoped_lock guard(m_lock);
    return m_channels;
}

void SampleFeed::takeVideo(const VideoSample &sample)
{
    for (const auto &channel : channels())
        channel->takeVideo(sample);
}

void SampleFeed::takeAudio(std::span<const std::uint8_t> pcm, std::chrono::nanoseconds arrival)
{
    for (const auto &channel : channels())
        channel->takeAudio(pcm, arrival);
}

} // namespace quillnest
