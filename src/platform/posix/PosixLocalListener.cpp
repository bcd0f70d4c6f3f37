#include "platform/posix/PosixLocalListener.h"

#include "platform/posix/PosixStreamSocket.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <chrono>

namespace quillnest
{

namespace
{
std::uint16_t peerPort(const Descriptor &connection)
{
    sockaddr_in address{};
    socklen_t length = sizeof address;
    ::getpeername(connection.get(), reinterpret_cast<sockaddr *>(&address), &length);
    return ntohs(address.sin_port);
}

void dropContent(const Descriptor &connection)
{
    ::shutdown(connection.get(), SHUT_RD);
    char buffer[65536];
    while (::recv(connection.get(), buffer, sizeof buffer, MSG_DONTWAIT) > 0) { }
}
} // namespace

PosixLocalListener::PosixLocalListener() : m_socket(newStreamSocket()), m_wake(newPipe())
{
    if (!m_socket || !m_wake.readEnd)
        throw SocketError::failed("socket");
    const int on = 1;
    ::setsockopt(m_socket.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (::bind(m_socket.get(), reinterpret_cast<const sockaddr *>(&address), length) != 0
        || ::listen(m_socket.get(), 4) != 0
        || ::getsockname(m_socket.get(), reinterpret_cast<sockaddr *>(&address), &length) != 0)
        throw SocketError::failed("bind/listen");
    m_port = ntohs(address.sin_port);
}

std::shared_ptr<StreamSocket> PosixLocalListener::accept(double timeout)
{
    using std::chrono::milliseconds;
    const auto deadline = std::chrono::steady_clock::now() + milliseconds(static_cast<int>(timeout * 1000));
    while (true) {
        const auto left = std::chrono::ceil<milliseconds>(deadline - std::chrono::steady_clock::now());
        pollfd entries[2]{{m_socket.get(), POLLIN, 0}, {m_wake.readEnd.get(), POLLIN, 0}};
        if (left < milliseconds(0) || ::poll(entries, 2, static_cast<int>(left.count())) < 1)
            throw SocketError::failed("timed out waiting for the Android side to connect");
        auto connection = entries[1].revents ? Descriptor() : acceptConnection(m_socket.get());
        if (!connection)
            throw SocketError::failed("accept");
        // Any user of the machine may knock at the port.
        const auto owner = ownerOfConnection(peerPort(connection), m_port);
        if (owner == SocketOwner::another)
            continue;
        // One that was closed at once may have been anybody's: it counts as that, and nothing of it is read.
        if (owner == SocketOwner::nobody)
            dropContent(connection);
        return std::make_shared<PosixStreamSocket>(std::move(connection));
    }
}

void PosixLocalListener::wake()
{
    // A byte is enough for ever: nobody reads it.
    [[maybe_unused]] const auto count = ::write(m_wake.writeEnd.get(), "", 1);
}

} // namespace quillnest
