#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace quillnest
{

/// The threads of streams. A stream ends them by ending what they wait for, and doesn't wait for them itself, so that
/// no window waits; but the program must not end before them, since at its end the things go away that they use. Who
/// ends the program waits here. Any thread.
class StreamThreads
{
public:
    StreamThreads();
    /// Waits for nobody.
    ~StreamThreads();
    StreamThreads(const StreamThreads &) = delete;
    StreamThreads &operator=(const StreamThreads &) = delete;

    /// Runs the work on a thread of its own. What the work owns is gone before its thread counts as ended.
    void run(std::function<void()> work);

    /// Whether all of them have ended, after this long at most. Not on one of them.
    bool waitForEnd(std::chrono::milliseconds limit);

private:
    struct State;

    const std::shared_ptr<State> m_state;
};

} // namespace quillnest
