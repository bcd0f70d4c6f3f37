#pragma once

#include <QByteArray>
#include <QSet>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>

namespace quillnest
{

/// The control messages that wait for the device to read them, oldest first. They go out in the order in which they
/// came, each once and whole, as long as the device reads.
///
/// A device that stops reading must not let the queue grow for ever, nor may a finger or a key stay down on it when it
/// reads again. So the queue's memory is bounded like this:
/// - A move of the finger replaces a move that is the last message in the queue once `crowded` messages wait: where the
///   finger is now is what counts.
/// - A queue of `capacity` messages or `byteCapacity` bytes takes no more but releases (finger up, key up, back up) of
///   what it has let through being pressed, each once. There is one finger and one back, and a press of a key is always
///   followed by its release, so this adds as many messages as keys are held down, at most.
/// Whatever is refused is gone.
///
/// Any thread.
class ControlQueue
{
public:
    static constexpr std::size_t crowded = 32;
    static constexpr std::size_t capacity = 8192;
    static constexpr std::size_t byteCapacity = 4U << 20;

    struct Message {
        QByteArray bytes;
        /// When it was put in.
        std::chrono::nanoseconds since{};
    };

    /// Takes a message; answers whether somebody has to begin to empty the queue.
    bool push(const QByteArray &bytes, std::chrono::nanoseconds now = {});

    /// The next message, or nothing when the queue is empty; after that the next message begins anew.
    std::optional<Message> next();

    std::size_t size() const;
    std::size_t bytes() const;
    /// Messages that were replaced or refused.
    std::uint64_t dropped() const;

private:
    /// What a message presses or lets go: 0 for the finger, 1 for back, and above that the keys.
    struct Press {
        std::uint64_t what = 0;
        bool isRelease = false;
    };
    static std::optional<Press> press(const QByteArray &message);
    static bool isMove(const QByteArray &message);

    mutable std::mutex m_lock;
    std::deque<Message> m_messages;
    std::size_t m_bytes = 0;
    QSet<std::uint64_t> m_pressed;
    std::uint64_t m_dropped = 0;
    bool m_emptying = false;
};

} // namespace quillnest
