#pragma once

#include "platform/LocalListener.h"
#include "platform/SocketOwner.h"

namespace quillnest
{

/// Sockets of this machine's loopback address, which no child process inherits. Any thread.
class LocalSockets
{
public:
    virtual ~LocalSockets() = default;

    /// Throws SocketError.
    virtual std::shared_ptr<LocalListener> listen() = 0;

    /// Who listens on a port of the loopback address.
    virtual SocketOwner listenerOwner(std::uint16_t port) const = 0;
};

} // namespace quillnest
