#include "stream/StreamSocket.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

namespace quillnest
{

StreamSocket::~StreamSocket()
{
    ::close(m_descriptor);
}

void StreamSocket::shutDown()
{
    ::shutdown(m_descriptor, SHUT_RDWR);
}

std::optional<std::vector<std::uint8_t>> StreamSocket::readExactly(std::size_t count)
{
    std::vector<std::uint8_t> bytes(count);
    if (!readExactly(bytes))
        return std::nullopt;
    return bytes;
}

bool StreamSocket::readExactly(std::span<std::uint8_t> bytes)
{
    while (!bytes.empty()) {
        const auto count = ::read(m_descriptor, bytes.data(), bytes.size());
        if (count < 1)
            return false;
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

bool StreamSocket::writeAll(std::span<const std::uint8_t> bytes)
{
    while (!bytes.empty()) {
        const auto count = ::send(m_descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count < 1)
            return false;
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

std::optional<std::size_t> StreamSocket::writeAtOnce(std::span<const std::uint8_t> bytes)
{
    const auto count = ::send(m_descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (count >= 0)
        return static_cast<std::size_t>(count);
    return errno == EAGAIN || errno == EWOULDBLOCK ? std::optional<std::size_t>(0) : std::nullopt;
}

} // namespace quillnest
