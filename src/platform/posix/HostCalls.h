#pragma once

#include "platform/SocketOwner.h"
#include "platform/posix/Descriptor.h"

#include <spawn.h>
#include <sys/types.h>

#include <cstdint>

namespace quillnest
{

// What a Mac and Linux can do by different calls only. Each host's folder implements it.

/// The two ends of a pipe.
struct Pipe {
    Descriptor readEnd;
    Descriptor writeEnd;
};

// No child inherits what these open, not even one that another thread starts at the same moment. A descriptor that
// isn't one is a failure, which errno tells.
Descriptor newStreamSocket();
Descriptor acceptConnection(int listener);
Pipe newPipe();

/// Makes the child close everything but its standard streams, also what libraries have opened without marking it.
/// `flags` are those of the spawn's attributes.
void closeAllButStandardStreams(posix_spawn_file_actions_t &actions, short &flags);

/// A descriptor that can be read once this child has ended, whether or not it was waited for; none if the system has no
/// such thing.
Descriptor endOfChild(pid_t child);

/// Who listens on this port of the loopback address.
SocketOwner ownerOfListener(std::uint16_t port);

/// Who has the end at port `from` of a connection between two ports of 127.0.0.1. Nobody when it has been closed.
SocketOwner ownerOfConnection(std::uint16_t from, std::uint16_t to);

} // namespace quillnest
