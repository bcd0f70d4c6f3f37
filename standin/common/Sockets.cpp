#include "common/Sockets.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>

namespace standin
{

namespace
{

sockaddr_in loopback(quint16 port)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

void disableDelay(int fd)
{
    const int on = 1;
    ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

/// The address of a Unix socket; `folder` keeps the descriptor alive that a long path goes through.
bool unixAddress(const QByteArray &path, sockaddr_un &address, UniqueFd &folder)
{
    address = {};
    address.sun_family = AF_UNIX;
    QByteArray reachable = path;
    if (static_cast<size_t>(path.size()) >= sizeof address.sun_path) {
        const auto slash = path.lastIndexOf('/');
        folder.reset(::open(slash > 0 ? path.left(slash).constData() : ".", O_PATH | O_DIRECTORY | O_CLOEXEC));
        if (!folder.isValid())
            return false;
        reachable = "/proc/self/fd/" + QByteArray::number(folder.get()) + '/' + path.mid(slash + 1);
        if (static_cast<size_t>(reachable.size()) >= sizeof address.sun_path) {
            errno = ENAMETOOLONG;
            return false;
        }
    }
    std::memcpy(address.sun_path, reachable.constData(), static_cast<size_t>(reachable.size()));
    return true;
}

} // namespace

UniqueFd listenOnLoopback(quint16 port)
{
    UniqueFd fd(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const int on = 1;
    ::setsockopt(fd.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    const sockaddr_in address = loopback(port);
    if (::bind(fd.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0
        || ::listen(fd.get(), 16) != 0)
        return {};
    return fd;
}

UniqueFd connectToLoopback(quint16 port)
{
    UniqueFd fd(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const sockaddr_in address = loopback(port);
    if (::connect(fd.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
        return {};
    disableDelay(fd.get());
    return fd;
}

UniqueFd listenOnUnixPath(const QByteArray &path)
{
    sockaddr_un address;
    UniqueFd folder;
    if (!unixAddress(path, address, folder))
        return {};
    ::unlink(path.constData());
    UniqueFd fd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (::bind(fd.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0
        || ::listen(fd.get(), 64) != 0)
        return {};
    return fd;
}

UniqueFd connectToUnixPath(const QByteArray &path)
{
    sockaddr_un address;
    UniqueFd folder;
    if (!unixAddress(path, address, folder))
        return {};
    UniqueFd fd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (::connect(fd.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
        return {};
    return fd;
}

UniqueFd acceptConnection(int listener)
{
    UniqueFd connection(::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC));
    if (connection.isValid())
        disableDelay(connection.get());
    return connection;
}

void serveEachConnection(int listener, std::function<void(UniqueFd connection)> serve)
{
    std::thread([listener, serve = std::move(serve)] {
        for (;;) {
            UniqueFd connection = acceptConnection(listener);
            if (connection.isValid())
                std::thread([serve, connection = std::move(connection)]() mutable {
                    serve(std::move(connection));
                }).detach();
        }
    }).detach();
}

bool readExactly(int fd, void *data, size_t size)
{
    auto *at = static_cast<char *>(data);
    while (size > 0) {
        const ssize_t got = ::read(fd, at, size);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return false;
        at += got;
        size -= static_cast<size_t>(got);
    }
    return true;
}

bool writeAll(int fd, const void *data, size_t size)
{
    const auto *at = static_cast<const char *>(data);
    while (size > 0) {
        const ssize_t put = ::write(fd, at, size);
        if (put < 0 && errno == EINTR)
            continue;
        if (put <= 0)
            return false;
        at += put;
        size -= static_cast<size_t>(put);
    }
    return true;
}

} // namespace standin
