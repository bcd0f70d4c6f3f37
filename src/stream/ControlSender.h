#pragma once

#include <QByteArray>
#include <QSizeF>

#include <chrono>
#include <cstdint>
#include <optional>

namespace quillnest
{

/// The device as those see it who only tell it something: where input, clipboard texts and commands go. Any thread.
class ControlSender
{
public:
    virtual ~ControlSender() = default;

    /// Queues a control message and returns at once; messages go out in the order of the calls, and nowhere without a
    /// word while there is no device. The message came about at `since`, by the monotonic clock; without it, now.
    virtual void send(const QByteArray &message, std::optional<std::chrono::nanoseconds> since) = 0;
    void send(const QByteArray &message) { send(message, std::nullopt); }

    /// Raises the number of the last clipboard message by one and gives it.
    virtual std::uint64_t nextClipboardSequence() = 0;

    /// The video's size in pixels, which touches refer to; empty until it is announced.
    virtual QSizeF videoSize() const = 0;
};

} // namespace quillnest
