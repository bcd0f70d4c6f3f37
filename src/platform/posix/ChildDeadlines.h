#pragma once

#include "platform/ChildProcesses.h"

#include <chrono>
#include <condition_variable>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace quillnest
{

/// Ends children whose time is over, from a thread that is there once somebody has set a time. Any thread.
class ChildDeadlines
{
public:
    ChildDeadlines() = default;
    ~ChildDeadlines();
    ChildDeadlines(const ChildDeadlines &) = delete;
    ChildDeadlines &operator=(const ChildDeadlines &) = delete;

    /// The time of all children, and of those that come later, is over then.
    void endAllWithin(std::chrono::milliseconds time);
    /// After that: returns when the last child's watch is gone.
    void waitForAll();

private:
    using Time = std::chrono::steady_clock::time_point;
    struct Entry {
        std::shared_ptr<RunningChild> child;
        std::optional<Time> deadline;
        bool isOver = false;
    };

public:
    /// While it lives a child has a time, if only that of all. Made before the child, for which the end then waits;
    /// throws LaunchError when the time of all is over.
    class Watch
    {
    public:
        Watch(ChildDeadlines &deadlines, std::optional<std::chrono::milliseconds> limit);
        ~Watch();
        Watch(const Watch &) = delete;
        Watch &operator=(const Watch &) = delete;

        void setChild(std::shared_ptr<RunningChild> child);

        /// Whether the child was ended for its time.
        bool isOver() const;

    private:
        ChildDeadlines &m_deadlines;
        std::list<Entry>::iterator m_entry;
    };

private:
    void work();
    void wake();

    mutable std::mutex m_lock;
    std::condition_variable m_changed;
    std::list<Entry> m_entries;
    std::optional<Time> m_end;
    bool m_isClosed = false;
    bool m_stopping = false;
    std::thread m_thread;
};

} // namespace quillnest
