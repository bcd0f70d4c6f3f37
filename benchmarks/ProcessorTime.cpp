#include "benchmarks/ProcessorTime.h"

#include <ctime>

namespace quillnest::bench
{

namespace
{

double read(clockid_t clock)
{
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

} // namespace

double processorMilliseconds(qint64 process)
{
    clockid_t clock{};
    return clock_getcpuclockid(static_cast<pid_t>(process), &clock) == 0 ? read(clock) : 0;
}

double threadMilliseconds()
{
    return read(CLOCK_THREAD_CPUTIME_ID);
}

} // namespace quillnest::bench
