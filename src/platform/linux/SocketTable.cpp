#include "platform/linux/SocketTable.h"

#include <QFile>

#include <unistd.h>

namespace quillnest
{

namespace
{

// 127.0.0.1 of both families, whichever way the machine's integers lie in memory: only little-endian hosts are known.
bool isLoopback(const QByteArray &address)
{
    return address == "0100007F" || address == "0000000000000000FFFF00000100007F"
        || address == "00000000000000000000000001000000";
}

bool isAny(const QByteArray &address)
{
    return address == "0000000000000000FFFF000000000000" || address.count('0') == address.size();
}

std::optional<QByteArray> contentOf(const char *path)
{
    QFile file(QString::fromLatin1(path));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return file.readAll();
}

} // namespace

SocketTable SocketTable::ofThisMachine()
{
    auto text = contentOf("/proc/net/tcp");
    if (text)
        *text += contentOf("/proc/net/tcp6").value_or(QByteArray());
    return {text, ::getuid()};
}

SocketTable::SocketTable(const std::optional<QByteArray> &text, uid_t user) : m_isKnown(text.has_value()), m_user(user)
{
    constexpr int localField = 1;
    constexpr int remoteField = 2;
    constexpr int stateField = 3;
    constexpr int userField = 7;
    constexpr int inodeField = 9;
    if (!text)
        return;
    for (const auto &line : text->split('\n')) {
        const auto fields = line.simplified().split(' ');
        if (fields.size() <= inodeField)
            continue;
        const auto local = fields[localField].split(':');
        const auto remote = fields[remoteField].split(':');
        bool good = false;
        const auto owner = fields[userField].toUInt(&good);
        if (!good || local.size() != 2 || remote.size() != 2)
            continue;
        m_rows.push_back({
            .localAddress = local[0],
            .remoteAddress = remote[0],
            .localPort = local[1].toUShort(nullptr, 16),
            .remotePort = remote[1].toUShort(nullptr, 16),
            .isListening = fields[stateField] == "0A",
            .user = owner,
            .isOpen = fields[inodeField] != "0",
        });
    }
}

SocketOwner SocketTable::ownerOf(const Row &row) const
{
    return row.isOpen && (row.user == m_user || row.user == 0) ? SocketOwner::trusted : SocketOwner::another;
}

SocketOwner SocketTable::listenerOwner(std::uint16_t port) const
{
    if (!m_isKnown)
        return SocketOwner::trusted;
    auto result = SocketOwner::nobody;
    for (const auto &row : m_rows) {
        const bool isThis
            = row.isListening && row.localPort == port && (isLoopback(row.localAddress) || isAny(row.localAddress));
        // Two may share a port by the two families; one stranger is enough.
        if (isThis && result != SocketOwner::another)
            result = ownerOf(row);
    }
    return result;
}

SocketOwner SocketTable::connectionOwner(std::uint16_t from, std::uint16_t to) const
{
    if (!m_isKnown)
        return SocketOwner::trusted;
    for (const auto &row : m_rows) {
        if (row.localPort == from && row.remotePort == to && isLoopback(row.localAddress)
            && isLoopback(row.remoteAddress))
            return row.isOpen ? ownerOf(row) : SocketOwner::nobody;
    }
    return SocketOwner::nobody;
}

} // namespace quillnest
