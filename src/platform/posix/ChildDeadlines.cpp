#include "platform/posix/ChildDeadlines.h"

#include <algorithm>
#include <utility>

namespace quillnest
{

ChildDeadlines::~ChildDeadlines()
{
    {
        const std::scoped_lock guard(m_lock);
        m_stopping = true;
    }
    m_changed.notify_all();
    if (m_thread.joinable())
        m_thread.join();
}

void ChildDeadlines::endAllWithin(std::chrono::milliseconds time)
{
    const std::scoped_lock guard(m_lock);
    m_end = std::chrono::steady_clock::now() + time;
    wake();
}

void ChildDeadlines::waitForAll()
{
    std::unique_lock guard(m_lock);
    if (!m_end)
        return;
    m_changed.wait(guard, [this] { return m_entries.empty(); });
    // Work between two commands doesn't begin the next one.
    m_isClosed = true;
}

/// Under the lock.
void ChildDeadlines::wake()
{
    if (!m_thread.joinable())
        m_thread = std::thread([this] { work(); });
    m_changed.notify_all();
}

void ChildDeadlines::work()
{
    std::unique_lock guard(m_lock);
    while (!m_stopping) {
        const auto now = std::chrono::steady_clock::now();
        std::optional<Time> next;
        for (auto &entry : m_entries) {
            if (entry.isOver || !entry.child)
                continue;
            const auto deadline = std::min(entry.deadline.value_or(Time::max()), m_end.value_or(Time::max()));
            if (deadline <= now) {
                entry.isOver = true;
                entry.child->kill();
            } else if (deadline < next.value_or(Time::max())) {
                next = deadline;
            }
        }
        if (next)
            m_changed.wait_until(guard, *next);
        else
            m_changed.wait(guard);
    }
}

ChildDeadlines::Watch::Watch(ChildDeadlines &deadlines, std::optional<std::chrono::milliseconds> limit)
    : m_deadlines(deadlines)
{
    std::optional<Time> deadline;
    if (limit)
        deadline = std::chrono::steady_clock::now() + *limit;
    const std::scoped_lock guard(m_deadlines.m_lock);
    if (m_deadlines.m_isClosed || (m_deadlines.m_end && *m_deadlines.m_end <= std::chrono::steady_clock::now()))
        throw LaunchError(QStringLiteral("Quillnest is ending"));
    m_entry = m_deadlines.m_entries.insert(m_deadlines.m_entries.end(), {nullptr, deadline});
}

void ChildDeadlines::Watch::setChild(std::shared_ptr<RunningChild> child)
{
    const std::scoped_lock guard(m_deadlines.m_lock);
    m_entry->child = std::move(child);
    if (m_entry->deadline || m_deadlines.m_end)
        m_deadlines.wake();
}

ChildDeadlines::Watch::~Watch()
{
    const std::scoped_lock guard(m_deadlines.m_lock);
    m_deadlines.m_entries.erase(m_entry);
    m_deadlines.m_changed.notify_all();
}

bool ChildDeadlines::Watch::isOver() const
{
    const std::scoped_lock guard(m_deadlines.m_lock);
    return m_entry->isOver;
}

} // namespace quillnest
