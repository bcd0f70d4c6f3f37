#pragma once

#include <QByteArray>
#include <QtEndian>

namespace standin
{

/// The twelve bytes in front of every packet of the video and audio sockets, all big-endian: flags and time in
/// microseconds, then the size of what follows. A session packet has the video's size in place of both.
enum PacketFlag : quint64 { ConfigPacket = 1ULL << 62, KeyFramePacket = 1ULL << 61 };

inline QByteArray packetHeader(quint64 flagsAndTime, quint32 size)
{
    QByteArray header(12, Qt::Uninitialized);
    qToBigEndian(flagsAndTime, header.data());
    qToBigEndian(size, header.data() + 8);
    return header;
}

inline QByteArray sessionPacket(quint32 width, quint32 height)
{
    QByteArray header(12, '\0');
    header[0] = '\x80';
    qToBigEndian(width, header.data() + 4);
    qToBigEndian(height, header.data() + 8);
    return header;
}

inline QByteArray bigEndian32(quint32 value)
{
    QByteArray bytes(4, Qt::Uninitialized);
    qToBigEndian(value, bytes.data());
    return bytes;
}

} // namespace standin
