#pragma once

#include "platform/LocalSockets.h"
#include "platform/posix/PosixLocalListener.h"

namespace quillnest
{

class PosixLocalSockets : public LocalSockets
{
public:
    std::shared_ptr<LocalListener> listen() override { return std::make_shared<PosixLocalListener>(); }
};

} // namespace quillnest
