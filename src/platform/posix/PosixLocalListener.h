#pragma once

#include "platform/LocalListener.h"
#include "platform/posix/HostCalls.h"

namespace quillnest
{

class PosixLocalListener : public LocalListener
{
public:
    /// Throws SocketError.
    PosixLocalListener();

    std::uint16_t port() const override { return m_port; }
    std::shared_ptr<StreamSocket> accept(double timeout) override;
    void wake() override;

private:
    const Descriptor m_socket;
    /// Once something stands in it, nobody waits any more.
    const Pipe m_wake;
    std::uint16_t m_port = 0;
};

} // namespace quillnest
