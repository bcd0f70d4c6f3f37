#pragma once

#include "platform/SocketOwner.h"

#include <QByteArray>

#include <cstdint>
#include <sys/types.h>

#include <optional>
#include <vector>

namespace quillnest
{

/// The kernel's tables of TCP sockets, /proc/net/tcp and /proc/net/tcp6 (Documentation/networking/proc_net_tcp): a line
/// for each socket of this network namespace, with addresses as the machine's own hexadecimal integers.
class SocketTable
{
public:
    static SocketTable ofThisMachine();

    /// `text` is what the tables hold, one behind the other; none when they can't be read.
    SocketTable(const std::optional<QByteArray> &text, uid_t user);

    SocketOwner listenerOwner(std::uint16_t port) const;
    SocketOwner connectionOwner(std::uint16_t from, std::uint16_t to) const;

private:
    struct Row {
        QByteArray localAddress;
        QByteArray remoteAddress;
        std::uint16_t localPort = 0;
        std::uint16_t remotePort = 0;
        bool isListening = false;
        uid_t user = 0;
        /// False for one that its process has closed, whose user isn't told any more.
        bool isOpen = false;
    };
    SocketOwner ownerOf(const Row &row) const;

    bool m_isKnown = false;
    uid_t m_user = 0;
    std::vector<Row> m_rows;
};

} // namespace quillnest
