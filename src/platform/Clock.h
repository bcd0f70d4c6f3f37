#pragma once

#include <QDateTime>

#include <chrono>
#include <functional>
#include <memory>

namespace quillnest
{

/// A timer that has been set. Dropping the handle cancels it.
class Timer
{
public:
    virtual ~Timer() = default;
    virtual bool isActive() const = 0;
};

/// Time as a service: nothing outside the platform layer reads a clock or sets a timer by other means, so that
/// tests can move time by hand.
class Clock
{
public:
    using Duration = std::chrono::milliseconds;

    virtual ~Clock() = default;

    /// Monotonic time since some fixed point. Any thread.
    virtual std::chrono::nanoseconds monotonic() const = 0;

    /// Wall clock time, UTC, with milliseconds. Any thread.
    virtual QDateTime wallTime() const = 0;

    /// Calls `action` on the main thread once, `delay` from now, unless the handle has gone by then. Main thread.
    [[nodiscard]] virtual std::unique_ptr<Timer> after(Duration delay, std::function<void()> action) = 0;

    /// Calls `action` on the main thread every `interval` for as long as the handle lives. Main thread.
    [[nodiscard]] virtual std::unique_ptr<Timer> every(Duration interval, std::function<void()> action) = 0;

    /// As `after`, but nothing can cancel it: for actions that check for themselves whether they are still wanted.
    virtual void later(Duration delay, std::function<void()> action) = 0;
};

/// Seconds between two readings of `Clock::monotonic`.
inline double secondsBetween(std::chrono::nanoseconds from, std::chrono::nanoseconds to)
{
    return std::chrono::duration<double>(to - from).count();
}

} // namespace quillnest
