#include "fakes/DeviceSocket.h"

#include <QtEndian>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>
#include <utility>

namespace quillnest
{

namespace
{
constexpr int patience = 30000;
}

DeviceSocket::DeviceSocket(std::uint16_t port) : m_descriptor(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    if (::connect(m_descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
        close();
}

DeviceSocket::~DeviceSocket()
{
    close();
}

DeviceSocket::DeviceSocket(DeviceSocket &&other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) { }

DeviceSocket &DeviceSocket::operator=(DeviceSocket &&other) noexcept
{
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
}

bool DeviceSocket::send(const QByteArray &bytes)
{
    for (qsizetype done = 0; done < bytes.size();) {
        const auto count = ::send(
            m_descriptor, bytes.constData() + done, static_cast<std::size_t>(bytes.size() - done), MSG_NOSIGNAL);
        if (count < 1)
            return false;
        done += count;
    }
    return true;
}

QByteArray DeviceSocket::receive(int count)
{
    QByteArray bytes;
    while (bytes.size() < count) {
        pollfd entry{m_descriptor, POLLIN, 0};
        char buffer[65536];
        if (::poll(&entry, 1, patience) < 1)
            break;
        const auto wanted = std::min<std::size_t>(sizeof buffer, static_cast<std::size_t>(count - bytes.size()));
        const auto got = ::recv(m_descriptor, buffer, wanted, 0);
        if (got < 1)
            break;
        bytes.append(buffer, got);
    }
    return bytes;
}

QByteArray DeviceSocket::receiveUntil(const QByteArray &end)
{
    QByteArray bytes;
    while (!bytes.endsWith(end)) {
        const auto more = receive(1);
        if (more.isEmpty())
            break;
        bytes += more;
        char buffer[65536];
        // What is there already, but not past the end that is looked for.
        const auto peeked = ::recv(m_descriptor, buffer, sizeof buffer, MSG_PEEK | MSG_DONTWAIT);
        const auto at = peeked > 0 ? QByteArray(buffer, peeked).indexOf(end) : -1;
        const auto take = at >= 0 ? at + end.size() : std::max<qsizetype>(0, peeked - end.size());
        bytes += receive(static_cast<int>(take));
    }
    return bytes;
}

bool DeviceSocket::ends()
{
    while (true) {
        pollfd entry{m_descriptor, POLLIN, 0};
        char buffer[65536];
        if (::poll(&entry, 1, patience) < 1)
            return false;
        if (::recv(m_descriptor, buffer, sizeof buffer, 0) < 1)
            return true;
    }
}

void DeviceSocket::close()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
    m_descriptor = -1;
}

QByteArray bigEndian(std::uint32_t value)
{
    const auto swapped = qToBigEndian(value);
    return QByteArray(reinterpret_cast<const char *>(&swapped), sizeof swapped);
}

QByteArray videoPreamble(std::uint32_t codec)
{
    return QByteArray("a device").leftJustified(64, '\0') + bigEndian(codec);
}

QByteArray packetHeader(std::uint8_t flags, std::uint32_t size)
{
    // The seven bytes of time are never looked at.
    return QByteArray(1, static_cast<char>(flags)) + QByteArray(7, '\x5a') + bigEndian(size);
}

QByteArray packet(std::uint8_t flags, const QByteArray &payload)
{
    return packetHeader(flags, static_cast<std::uint32_t>(payload.size())) + payload;
}

QByteArray sessionPacket(std::uint32_t width, std::uint32_t height)
{
    return bigEndian(0x80000000) + bigEndian(width) + bigEndian(height);
}

} // namespace quillnest
