#include "stream/ControlQueue.h"

#include "stream/ScrcpyControl.h"

namespace quillnest
{

namespace
{

constexpr std::uint64_t finger = 0;
constexpr std::uint64_t back = 1;
constexpr std::uint64_t firstKey = 2;

std::uint8_t byteAt(const QByteArray &message, qsizetype at)
{
    return at < message.size() ? static_cast<std::uint8_t>(message[at]) : 0;
}

} // namespace

bool ControlQueue::isMove(const QByteArray &message)
{
    return byteAt(message, 0) == ScrcpyControl::touchType
        && byteAt(message, 1) == static_cast<std::uint8_t>(ScrcpyControl::MotionAction::move);
}

std::optional<ControlQueue::Press> ControlQueue::press(const QByteArray &message)
{
    // Down is 0 and up is 1 for a finger, a key and back alike.
    const auto action = byteAt(message, 1);
    if (message.size() < 2 || action > 1)
        return std::nullopt;
    const bool isRelease = action == 1;
    switch (byteAt(message, 0)) {
    case ScrcpyControl::touchType:
        return Press{finger, isRelease};
    case ScrcpyControl::backType:
        return Press{back, isRelease};
    case ScrcpyControl::keyType: {
        std::uint64_t keycode = 0;
        for (qsizetype at = 2; at < 6; ++at)
            keycode = keycode << 8 | byteAt(message, at);
        return Press{firstKey + keycode, isRelease};
    }
    default:
        return std::nullopt;
    }
}

bool ControlQueue::push(const QByteArray &message, std::chrono::nanoseconds now)
{
    const auto pressed = press(message);
    const std::scoped_lock guard(m_lock);
    const bool isFull
        = m_messages.size() >= capacity || m_bytes + static_cast<std::size_t>(message.size()) > byteCapacity;
    if (m_messages.size() >= crowded && isMove(message) && isMove(m_messages.back().bytes)) {
        m_messages.back() = {message, now};
        ++m_dropped;
        return false;
    }
    const bool endsAPress = pressed && pressed->isRelease && m_pressed.contains(pressed->what);
    if (isFull && !endsAPress) {
        ++m_dropped;
        return false;
    }
    if (pressed && pressed->isRelease)
        m_pressed.remove(pressed->what);
    else if (pressed)
        m_pressed.insert(pressed->what);
    m_messages.push_back({message, now});
    m_bytes += static_cast<std::size_t>(message.size());
    return !std::exchange(m_emptying, true);
}

std::optional<ControlQueue::Message> ControlQueue::next()
{
    const std::scoped_lock guard(m_lock);
    if (m_messages.empty()) {
        m_emptying = false;
        return std::nullopt;
    }
    auto message = std::move(m_messages.front());
    m_messages.pop_front();
    m_bytes -= static_cast<std::size_t>(message.bytes.size());
    return message;
}

std::size_t ControlQueue::size() const
{
    const std::scoped_lock guard(m_lock);
    return m_messages.size();
}

std::size_t ControlQueue::bytes() const
{
    const std::scoped_lock guard(m_lock);
    return m_bytes;
}

std::uint64_t ControlQueue::dropped() const
{
    const std::scoped_lock guard(m_lock);
    return m_dropped;
}

} // namespace quillnest
