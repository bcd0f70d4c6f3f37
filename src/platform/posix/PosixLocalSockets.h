#pragma once

#include "platform/LocalSockets.h"
#include "platform/posix/HostCalls.h"
#include "platform/posix/PosixLocalListener.h"

namespace quillnest
{

class PosixLocalSockets : public LocalSockets
{
public:
    std::shared_ptr<LocalListener> listen() override { return std::make_shared<PosixLocalListener>(); }
    SocketOwner listenerOwner(std::uint16_t port) const override { return ownerOfListener(port); }
};

} // namespace quillnest
