#pragma once

#include "platform/SocketError.h"
#include "platform/StreamSocket.h"

#include <cstdint>
#include <memory>

namespace quillnest
{

/// A listening socket on a free port of 127.0.0.1. Closed when the last reference goes.
class LocalListener
{
public:
    virtual ~LocalListener() = default;

    virtual std::uint16_t port() const = 0;

    /// Waits for the next connection of somebody trusted, in the order in which they were made; throws SocketError
    /// after `timeout` seconds, and at once after `wake`. What is sent through it goes out at once.
    virtual std::shared_ptr<StreamSocket> accept(double timeout) = 0;

    /// Makes this and every later `accept` fail. Any thread.
    virtual void wake() = 0;
};

} // namespace quillnest
