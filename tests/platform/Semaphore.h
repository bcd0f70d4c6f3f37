#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace quillnest
{

/// A counting semaphore of the standard library's parts. Qt's own is invisible to the thread sanitizer, which would
/// then see no order between the two sides.
class Semaphore
{
public:
    void release(int count = 1)
    {
        // Notified under the lock: whoever wakes may destroy this at once.
        const std::scoped_lock guard(m_lock);
        m_count += count;
        m_changed.notify_all();
    }
    void acquire(int count = 1)
    {
        std::unique_lock guard(m_lock);
        m_changed.wait(guard, [&] { return m_count >= count; });
        m_count -= count;
    }
    /// False if the count doesn't come together in half a minute.
    bool tryAcquire(int count = 1)
    {
        std::unique_lock guard(m_lock);
        if (!m_changed.wait_for(guard, std::chrono::seconds(30), [&] { return m_count >= count; }))
            return false;
        m_count -= count;
        return true;
    }

private:
    std::mutex m_lock;
    std::condition_variable m_changed;
    int m_count = 0;
};

} // namespace quillnest
