#include "daemon/AdbPacket.h"

#include "common/Sockets.h"

#include <QtEndian>
#include <array>
#include <sys/uio.h>

namespace standin
{

std::optional<AdbPacket> AdbPacket::read(int fd)
{
    std::array<uchar, 24> header;
    if (!readExactly(fd, header.data(), header.size()))
        return std::nullopt;
    const auto word = [&](size_t index) { return qFromLittleEndian<quint32>(header.data() + 4 * index); };
    AdbPacket packet;
    packet.command = word(0);
    packet.arg0 = word(1);
    packet.arg1 = word(2);
    const quint32 size = word(3);
    if (word(5) != ~packet.command || size > MaxPayload)
        return std::nullopt;
    packet.payload.resize(static_cast<qsizetype>(size));
    if (!readExactly(fd, packet.payload.data(), size))
        return std::nullopt;
    return packet;
}

bool AdbPacket::write(int fd) const
{
    quint32 sum = 0;
    if (command == Connect) { // the versions are not agreed upon yet, so this one packet needs its sum
        for (const char byte : payload)
            sum += static_cast<uchar>(byte);
    }
    std::array<uchar, 24> header;
    const std::array<quint32, 6> words = {command, arg0, arg1, static_cast<quint32>(payload.size()), sum, ~command};
    for (size_t i = 0; i < words.size(); ++i)
        qToLittleEndian(words[i], header.data() + 4 * i);
    const auto size = static_cast<size_t>(payload.size());
    const std::array<iovec, 2> parts = {
        iovec{header.data(), header.size()},
        iovec{const_cast<char *>(payload.constData()), size},
    };
    const ssize_t put = ::writev(fd, parts.data(), size > 0 ? 2 : 1);
    if (put < 0)
        return false;
    const auto done = static_cast<size_t>(put);
    if (done < header.size())
        return writeAll(fd, header.data() + done, header.size() - done) && writeAll(fd, payload);
    return writeAll(fd, payload.constData() + (done - header.size()), size - (done - header.size()));
}

} // namespace standin
