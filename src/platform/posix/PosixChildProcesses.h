#pragma once

#include "platform/ChildProcesses.h"
#include "platform/posix/ChildDeadlines.h"

namespace quillnest
{

/// Child processes by posix_spawn, which costs the same from a process of any size. `start` gives each child a thread
/// that reads its output and reaps it.
class PosixChildProcesses : public ChildProcesses
{
public:
    ChildResult run(const ChildCommand &command) override;
    ChildResult runEndable(const ChildCommand &command, const Started &started) override;
    std::shared_ptr<RunningChild> start(const ChildCommand &command, Handlers handlers) override;
    using ChildProcesses::start;
    void endRunsWithin(std::chrono::milliseconds time) override { m_deadlines.endAllWithin(time); }
    void waitForRuns() override { m_deadlines.waitForAll(); }

private:
    ChildDeadlines m_deadlines;
};

} // namespace quillnest
