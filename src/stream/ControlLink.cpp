#include "stream/ControlLink.h"

#include <utility>

namespace quillnest
{

struct ControlLink::Line {
    enum class Wait { no, yes };

    /// Writes all that waits and answers true, or, when it mustn't wait for the device to read, as much of it as the
    /// socket takes.
    bool drain(const Clock &clock, Wait wait);

    std::shared_ptr<StreamSocket> current() const
    {
        const std::scoped_lock guard(lock);
        return socket;
    }

    /// Guards the socket and the latency.
    mutable std::mutex lock;
    std::shared_ptr<StreamSocket> socket;
    LatencyHistogram latency;
    ControlQueue queue;

    /// The message that is being written, what is left of it. It belongs to whoever empties the queue.
    std::optional<ControlQueue::Message> underWay;

private:
    /// The same for the message under way.
    bool writeUnderWay(StreamSocket &to, Wait wait);
};

bool ControlLink::Line::drain(const Clock &clock, Wait wait)
{
    while (true) {
        if (!underWay) {
            // With nothing left the queue is anybody's to empty, and what is under way with it.
            auto message = queue.next();
            if (!message)
                return true;
            underWay = std::move(message);
        }
        const auto to = current();
        if (to && !writeUnderWay(*to, wait))
            return false;
        const auto since = underWay->since;
        underWay.reset();
        if (!to)
            continue;
        const std::scoped_lock guard(lock);
        latency.add(clock.monotonic() - since);
    }
}

bool ControlLink::Line::writeUnderWay(StreamSocket &to, Wait wait)
{
    const std::span bytes(
        reinterpret_cast<const std::uint8_t *>(underWay->bytes.constData()),
        static_cast<std::size_t>(underWay->bytes.size()));
    if (wait == Wait::yes) {
        to.writeAll(bytes);
        return true;
    }
    const auto written = to.writeAtOnce(bytes);
    // After an error nothing more goes out, so the rest is as good as written.
    if (!written || *written == bytes.size())
        return true;
    underWay->bytes.remove(0, static_cast<qsizetype>(*written));
    return false;
}

ControlLink::ControlLink(std::shared_ptr<Clock> clock, Executor &executor)
    : m_clock(std::move(clock))
    , m_line(std::make_shared<Line>())
    , m_queue(executor.serialQueue("quillnest.android.control"))
{
}

ControlLink::~ControlLink()
{
    // A write that waits for the device would hold up the end of the queue.
    disconnect();
}

void ControlLink::connect(std::shared_ptr<StreamSocket> socket)
{
    const std::scoped_lock guard(m_line->lock);
    m_line->socket = std::move(socket);
}

void ControlLink::disconnect()
{
    std::shared_ptr<StreamSocket> socket;
    {
        const std::scoped_lock guard(m_line->lock);
        socket = std::exchange(m_line->socket, nullptr);
    }
    if (socket)
        socket->shutDown();
}

std::shared_ptr<StreamSocket> ControlLink::socket() const
{
    return m_line->current();
}

void ControlLink::send(const QByteArray &message, std::optional<std::chrono::nanoseconds> since)
{
    if (!m_line->queue.push(message, since.value_or(m_clock->monotonic())))
        return;
    // A thread that has to be woken gets a processor when the decoder leaves one, which a finger would feel; so the
    // message goes out here, and only what would have to wait for the device goes out there.
    if (!m_line->drain(*m_clock, Line::Wait::no))
        m_queue->post([line = m_line, clock = m_clock] { line->drain(*clock, Line::Wait::yes); });
}

ControlLink::Counters ControlLink::counters() const
{
    Counters result{m_line->queue.size(), m_line->queue.dropped(), {}};
    const std::scoped_lock guard(m_line->lock);
    result.latency = m_line->latency;
    return result;
}

} // namespace quillnest
