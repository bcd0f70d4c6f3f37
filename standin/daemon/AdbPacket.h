#pragma once

#include <QByteArray>
#include <optional>

namespace standin
{

/// One message of adb's transport: six little-endian words (command, two arguments, payload length, payload sum,
/// command inverted), then the payload. The format is the one that adb's protocol document describes.
struct AdbPacket {
    enum Command : quint32 {
        Connect = 0x4e584e43, // "CNXN"
        Open = 0x4e45504f, // "OPEN"
        Okay = 0x59414b4f, // "OKAY"
        Write = 0x45545257, // "WRTE"
        Close = 0x45534c43, // "CLSE"
    };
    static constexpr quint32 Version = 0x01000001; // from this version on nobody looks at the sum of the payload
    static constexpr quint32 MaxPayload = 1024 * 1024;

    quint32 command = 0;
    quint32 arg0 = 0;
    quint32 arg1 = 0;
    QByteArray payload;

    /// Absent at the end of the connection and for anything that is not a packet.
    static std::optional<AdbPacket> read(int fd);
    bool write(int fd) const;
};

} // namespace standin
