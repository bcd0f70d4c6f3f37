#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace standin
{

/// Beats at absolute times, so that the work between two beats does not slow the beat down. `wait` and `stop` may be
/// called from different threads.
class Pacer
{
public:
    using Clock = std::chrono::steady_clock;

    explicit Pacer(std::chrono::nanoseconds period) : m_period(period), m_next(Clock::now()) { }

    /// Waits for the next beat. Gives the number of beats that were missed, or -1 after `stop`.
    int wait()
    {
        std::unique_lock lock(m_mutex);
        m_next += m_period;
        int missed = 0;
        const auto now = Clock::now();
        if (now > m_next + m_period) {
            missed = static_cast<int>((now - m_next) / m_period);
            m_next += missed * m_period;
        }
        m_changed.wait_until(lock, m_next, [this] { return m_stopped; });
        return m_stopped ? -1 : missed;
    }

    void stop()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_stopped = true;
        }
        m_changed.notify_all();
    }

private:
    const std::chrono::nanoseconds m_period;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    Clock::time_point m_next;
    bool m_stopped = false;
};

} // namespace standin
