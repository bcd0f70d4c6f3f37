#include "stream/LocalListener.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace quillnest
{

LocalListener::LocalListener() : m_descriptor(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    if (m_descriptor < 0)
        throw SocketError::failed("socket");
    const int on = 1;
    ::setsockopt(m_descriptor, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (::bind(m_descriptor, reinterpret_cast<const sockaddr *>(&address), length) != 0
        || ::listen(m_descriptor, 4) != 0
        || ::getsockname(m_descriptor, reinterpret_cast<sockaddr *>(&address), &length) != 0) {
        ::close(m_descriptor);
        throw SocketError::failed("bind/listen");
    }
    m_port = ntohs(address.sin_port);
}

LocalListener::~LocalListener()
{
    ::close(m_descriptor);
}

std::shared_ptr<StreamSocket> LocalListener::accept(double timeout)
{
    pollfd entry{m_descriptor, POLLIN, 0};
    if (::poll(&entry, 1, static_cast<int>(timeout * 1000)) < 1)
        throw SocketError::failed("timed out waiting for the Android side to connect");
    const int descriptor = ::accept4(m_descriptor, nullptr, nullptr, SOCK_CLOEXEC);
    if (descriptor < 0)
        throw SocketError::failed("accept");
    const int on = 1;
    ::setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    return std::make_shared<StreamSocket>(descriptor);
}

void LocalListener::wake()
{
    ::shutdown(m_descriptor, SHUT_RDWR);
}

} // namespace quillnest
