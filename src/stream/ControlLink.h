#pragma once

#include "base/LatencyHistogram.h"
#include "platform/Clock.h"
#include "platform/Executor.h"
#include "platform/StreamSocket.h"
#include "stream/ControlQueue.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>

namespace quillnest
{

/// The control socket and the messages that wait for it. Any thread may call; nobody ever waits here for the device:
/// a message goes out on the caller's thread as far as the socket takes it, and the rest follows on a serial queue of
/// the link's own. It knows nothing of what the messages say; what happens while the device doesn't read is told at
/// ControlQueue.
class ControlLink
{
public:
    ControlLink(std::shared_ptr<Clock> clock, Executor &executor);
    ~ControlLink();
    ControlLink(const ControlLink &) = delete;
    ControlLink &operator=(const ControlLink &) = delete;

    void connect(std::shared_ptr<StreamSocket> socket);
    /// Ends the connection, which wakes whoever reads or writes.
    void disconnect();
    /// Null without a connection.
    std::shared_ptr<StreamSocket> socket() const;

    /// Without a connection the message is dropped. It came about at `since`, by the monotonic clock; without it, now.
    void send(const QByteArray &message, std::optional<std::chrono::nanoseconds> since = std::nullopt);

    /// Raises the number of the last clipboard message by one and gives it; the first one is 2.
    std::uint64_t nextClipboardSequence() { return ++m_clipboardSequence; }

    struct Counters {
        std::uint64_t waiting = 0;
        std::uint64_t dropped = 0;
        LatencyHistogram latency;
    };
    Counters counters() const;

private:
    /// Apart from the link, so that what waits on the serial queue doesn't own that queue.
    struct Line;

    const std::shared_ptr<Clock> m_clock;
    const std::shared_ptr<Line> m_line;
    std::atomic<std::uint64_t> m_clipboardSequence{1};
    const std::unique_ptr<SerialQueue> m_queue;
};

} // namespace quillnest
