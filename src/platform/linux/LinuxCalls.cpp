#include "platform/linux/SocketTable.h"
#include "platform/posix/HostCalls.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/syscall.h>

namespace quillnest
{

Descriptor newStreamSocket()
{
    return Descriptor(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
}

Descriptor acceptConnection(int listener)
{
    return Descriptor(::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC));
}

Pipe newPipe()
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return {};
    return {Descriptor(ends[0]), Descriptor(ends[1])};
}

void closeAllButStandardStreams(posix_spawn_file_actions_t &actions, short &)
{
    posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
}

Descriptor endOfChild(pid_t child)
{
    return Descriptor(static_cast<int>(::syscall(SYS_pidfd_open, child, 0)));
}

SocketOwner ownerOfListener(std::uint16_t port)
{
    return SocketTable::ofThisMachine().listenerOwner(port);
}

SocketOwner ownerOfConnection(std::uint16_t from, std::uint16_t to)
{
    return SocketTable::ofThisMachine().connectionOwner(from, to);
}

} // namespace quillnest
