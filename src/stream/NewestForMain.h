#pragma once

#include "platform/Platform.h"

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace quillnest
{

/// Takes what a device says to the main thread, as quickly as it may say it: one value waits at a time, the newest, and
/// is taken at most once in a pause. The last one always arrives, unless this has gone before. Held by a shared
/// pointer.
template <typename Value> class NewestForMain : public std::enable_shared_from_this<NewestForMain<Value>>
{
public:
    /// `take` is called on the main thread and owns what it uses.
    NewestForMain(const Platform &platform, std::chrono::milliseconds pause, std::function<void(const Value &)> take)
        : m_clock(platform.clock), m_executor(platform.executor), m_pause(pause), m_take(std::move(take))
    {
    }

    /// Any thread.
    void put(Value value)
    {
        {
            const std::scoped_lock guard(m_lock);
            // Otherwise somebody is on the way to take it.
            if (std::exchange(m_newest, std::move(value)))
                return;
        }
        m_executor->onMain([weak = this->weak_from_this()] {
            if (const auto self = weak.lock())
                self->takeInTime();
        });
    }

private:
    // The main thread.

    void takeInTime()
    {
        const auto next = m_lastTaken ? *m_lastTaken + m_pause : std::chrono::nanoseconds(0);
        const auto now = m_clock->monotonic();
        if (now >= next)
            return take();
        m_clock->later(std::chrono::ceil<Clock::Duration>(next - now), [weak = this->weak_from_this()] {
            if (const auto self = weak.lock())
                self->take();
        });
    }

    void take()
    {
        std::optional<Value> value;
        {
            const std::scoped_lock guard(m_lock);
            value = std::exchange(m_newest, std::nullopt);
        }
        m_lastTaken = m_clock->monotonic();
        m_take(*value);
    }

    const std::shared_ptr<Clock> m_clock;
    const std::shared_ptr<Executor> m_executor;
    const std::chrono::milliseconds m_pause;
    const std::function<void(const Value &)> m_take;
    /// Guards the value.
    std::mutex m_lock;
    std::optional<Value> m_newest;
    /// The main thread's own.
    std::optional<std::chrono::nanoseconds> m_lastTaken;
};

} // namespace quillnest
