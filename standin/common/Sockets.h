#pragma once

#include "common/UniqueFd.h"

#include <QByteArray>

#include <functional>

namespace standin
{

/// Blocking POSIX sockets for any thread. An invalid descriptor means failure; errno tells why.
UniqueFd listenOnLoopback(quint16 port);
UniqueFd connectToLoopback(quint16 port);

/// A Unix socket's address holds 107 bytes of path. Longer paths are reached through a descriptor of their folder,
/// so that a deep home folder does not keep the device from starting.
UniqueFd listenOnUnixPath(const QByteArray &path);
UniqueFd connectToUnixPath(const QByteArray &path);

UniqueFd acceptConnection(int listener);
/// Gives each connection to `serve`, on a thread of its own, for as long as this process lives.
void serveEachConnection(int listener, std::function<void(UniqueFd connection)> serve);

bool readExactly(int fd, void *data, size_t size);
bool writeAll(int fd, const void *data, size_t size);
inline bool writeAll(int fd, const QByteArray &bytes)
{
    return writeAll(fd, bytes.constData(), static_cast<size_t>(bytes.size()));
}

} // namespace standin
