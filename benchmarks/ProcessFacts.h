#pragma once

#include <QByteArray>
#include <QString>

#include <map>
#include <vector>

namespace quillnest::bench
{

/// Memory of a running process in MiB.
struct Memory {
    /// All of its pages that are in memory.
    double resident = 0;
    /// The same, with what others use too divided among all of them.
    double proportional = 0;
    /// What would be free without it.
    double own = 0;
};
Memory memoryOf(qint64 process);

/// How often each thread of a process has been taken off its processor, by itself or by the kernel, since it began.
struct ThreadSwitches {
    QByteArray name;
    qint64 voluntary = 0;
    qint64 involuntary = 0;
};
std::map<int, ThreadSwitches> switchesOf(qint64 process);

} // namespace quillnest::bench
