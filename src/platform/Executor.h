#pragma once

#include <functional>
#include <memory>

namespace quillnest
{

/// Runs closures one after the other, in the order of the calls, on a thread of its own choice. Dropping the queue
/// waits for the closure that is running and discards the ones that have not begun.
class SerialQueue
{
public:
    virtual ~SerialQueue() = default;

    /// Returns at once. Any thread.
    virtual void post(std::function<void()> work) = 0;
};

/// Where work runs: the main thread, the background pool, the few threads for what has time, serial queues.
class Executor
{
public:
    virtual ~Executor() = default;

    /// Runs `work` on the main thread as soon as its event loop gets to it, in the order of the calls. Any thread.
    virtual void onMain(std::function<void()> work) = 0;

    /// Runs blocking `work` on the pool, which grows for workers that wait. Any thread.
    virtual void inBackground(std::function<void()> work) = 0;

    /// Runs blocking `work` for which nobody waits, in the order of the calls: on about as many threads as there are
    /// processors, apart from the pool, and with low priority, which child processes take over. Work that has not begun
    /// at the end of the program is dropped. Any thread.
    virtual void asUtility(std::function<void()> work) = 0;

    virtual std::unique_ptr<SerialQueue> serialQueue(const char *label) = 0;
};

} // namespace quillnest
