#pragma once

#include "stream/StreamSocket.h"

#include <cstdint>
#include <memory>

namespace quillnest
{

/// A listening socket on a free port of 127.0.0.1. Closed when the last reference goes.
class LocalListener
{
public:
    /// Throws SocketError.
    LocalListener();
    ~LocalListener();
    LocalListener(const LocalListener &) = delete;
    LocalListener &operator=(const LocalListener &) = delete;

    std::uint16_t port() const { return m_port; }

    /// Waits for the next connection; throws SocketError after `timeout` seconds, and at once after `wake`.
    std::shared_ptr<StreamSocket> accept(double timeout);

    /// Makes this and every later `accept` fail. Any thread.
    void wake();

private:
    int m_descriptor = -1;
    std::uint16_t m_port = 0;
};

} // namespace quillnest
