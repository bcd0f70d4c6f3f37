#pragma once

#include "platform/Executor.h"

#include <deque>
#include <memory>
#include <mutex>

namespace quillnest
{

/// Nothing runs until the test says so, and then on the test's thread. Posting is safe on any thread.
class ManualExecutor : public Executor
{
public:
    void onMain(std::function<void()> work) override;
    void inBackground(std::function<void()> work) override;
    void asUtility(std::function<void()> work) override;
    /// Its closures wait among the background work. Dropping the queue discards those that have not begun.
    std::unique_ptr<SerialQueue> serialQueue(const char *label) override;

    /// Runs the oldest piece of background work; false if there is none.
    bool runOneInBackground();

    /// Runs the oldest piece of work for which nobody waits; false if there is none.
    bool runOneAsUtility();

    /// Runs what waits for the main thread, and what that posts, until nothing is left. How many ran.
    std::size_t drainMain();

    /// Runs all work until nothing is left, that for which nobody waits last. How many ran.
    std::size_t drain();

    std::size_t pendingInBackground() const;
    std::size_t pendingAsUtility() const;

private:
    std::function<void()> take(std::deque<std::function<void()>> &queue);

    mutable std::mutex m_lock;
    std::deque<std::function<void()>> m_main;
    std::deque<std::function<void()>> m_background;
    std::deque<std::function<void()>> m_utility;
};

/// Background and utility work and serial queues run at once, inside the call; the main thread's work waits for
/// `drain`.
class InlineExecutor : public ManualExecutor
{
public:
    void inBackground(std::function<void()> work) override { work(); }
    void asUtility(std::function<void()> work) override { work(); }
};

} // namespace quillnest
