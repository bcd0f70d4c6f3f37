#include "platform/CurrentThread.h"

#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

namespace quillnest
{

void nameCurrentThread(const std::string &name)
{
    // The kernel keeps fifteen characters: the last ones tell the most.
    constexpr std::size_t longest = 15;
    pthread_setname_np(pthread_self(), name.substr(name.size() > longest ? name.size() - longest : 0).c_str());
}

void lowerCurrentThread()
{
    // The system's own priorities of threads have no effect for ordinary ones; niceness has, and belongs to each
    // thread.
    constexpr int niceness = 10;
    setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), niceness);
}

} // namespace quillnest
