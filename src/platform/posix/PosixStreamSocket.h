#pragma once

#include "platform/StreamSocket.h"
#include "platform/posix/Descriptor.h"

namespace quillnest
{

class PosixStreamSocket : public StreamSocket
{
public:
    /// Takes over a connected socket.
    explicit PosixStreamSocket(Descriptor socket);

    int descriptor() const { return m_socket.get(); }

    void shutDown() override;
    bool readExactly(std::span<std::uint8_t> bytes) override;
    using StreamSocket::readExactly;
    bool writeAll(std::span<const std::uint8_t> bytes) override;
    std::optional<std::size_t> writeAtOnce(std::span<const std::uint8_t> bytes) override;

private:
    const Descriptor m_socket;
};

} // namespace quillnest
