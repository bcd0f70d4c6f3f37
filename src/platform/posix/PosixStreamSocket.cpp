#include "platform/posix/PosixStreamSocket.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <cerrno>

namespace quillnest
{

namespace
{
// A write to somebody who has left must fail and not end the process. That is asked for by the write on one host, and
// of the socket on the other.
#ifdef MSG_NOSIGNAL
constexpr int quietly = MSG_NOSIGNAL;
#else
constexpr int quietly = 0;
#endif
} // namespace

PosixStreamSocket::PosixStreamSocket(Descriptor socket) : m_socket(std::move(socket))
{
    const int on = 1;
    ::setsockopt(m_socket.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
#ifdef SO_NOSIGPIPE
    ::setsockopt(m_socket.get(), SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof on);
#endif
}

void PosixStreamSocket::shutDown()
{
    ::shutdown(m_socket.get(), SHUT_RDWR);
}

bool PosixStreamSocket::readExactly(std::span<std::uint8_t> bytes)
{
    while (!bytes.empty()) {
        const auto count = ::read(m_socket.get(), bytes.data(), bytes.size());
        if (count < 1)
            return false;
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

bool PosixStreamSocket::writeAll(std::span<const std::uint8_t> bytes)
{
    while (!bytes.empty()) {
        const auto count = ::send(m_socket.get(), bytes.data(), bytes.size(), quietly);
        if (count < 1)
            return false;
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

std::optional<std::size_t> PosixStreamSocket::writeAtOnce(std::span<const std::uint8_t> bytes)
{
    const auto count = ::send(m_socket.get(), bytes.data(), bytes.size(), quietly | MSG_DONTWAIT);
    if (count >= 0)
        return static_cast<std::size_t>(count);
    return errno == EAGAIN || errno == EWOULDBLOCK ? std::optional<std::size_t>(0) : std::nullopt;
}

} // namespace quillnest
