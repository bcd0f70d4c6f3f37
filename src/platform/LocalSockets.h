#pragma once

#include "platform/LocalListener.h"

namespace quillnest
{

/// Sockets of this machine's loopback address, which no child process inherits. Any thread.
class LocalSockets
{
public:
    virtual ~LocalSockets() = default;

    /// Throws SocketError.
    virtual std::shared_ptr<LocalListener> listen() = 0;
};

} // namespace quillnest
