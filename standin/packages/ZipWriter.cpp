#include "packages/ZipWriter.h"

#include <QtEndian>

#include <array>
#include <sys/stat.h>

namespace standin
{

namespace
{

constexpr quint16 deflated = 8;
/// What is larger is stored as it is: nobody is to wait for it.
constexpr qsizetype largestPacked = 1 << 24;

template <typename Number> void append(QByteArray &bytes, Number value)
{
    const Number little = qToLittleEndian(value);
    bytes.append(reinterpret_cast<const char *>(&little), sizeof little);
}

/// The bare stream: Qt writes its own length and zlib's header before it, and a sum behind; of nothing it makes none.
QByteArray deflate(const QByteArray &content)
{
    if (content.isEmpty())
        return QByteArray("\x03\x00", 2);
    return qCompress(content, 1).chopped(4).sliced(6);
}

} // namespace

quint32 crc32(const QByteArray &bytes)
{
    static const auto table = [] {
        std::array<quint32, 256> result = {};
        for (quint32 i = 0; i < result.size(); ++i) {
            quint32 value = i;
            for (int bit = 0; bit < 8; ++bit)
                value = (value >> 1) ^ ((value & 1) != 0 ? 0xEDB88320U : 0U);
            result[i] = value;
        }
        return result;
    }();
    quint32 sum = 0xFFFFFFFFU;
    for (const char byte : bytes)
        sum = table[(sum ^ static_cast<quint8>(byte)) & 0xFF] ^ (sum >> 8);
    return ~sum;
}

void ZipWriter::addFile(const QByteArray &name, const QByteArray &content, quint32 mode)
{
    add(name, content, S_IFREG | mode);
}

void ZipWriter::addFolder(const QByteArray &name, quint32 mode)
{
    add(name.endsWith('/') ? name : name + '/', {}, S_IFDIR | mode);
}

void ZipWriter::addLink(const QByteArray &name, const QByteArray &target)
{
    add(name, target, S_IFLNK | 0777);
}

void ZipWriter::add(const QByteArray &name, const QByteArray &content, quint32 mode)
{
    const auto packed = content.size() <= largestPacked ? deflate(content) : content;
    const bool isSmaller = packed.size() < content.size();
    const auto &stored = isSmaller ? packed : content;
    // What an entry's own header and its line in the directory have in common.
    QByteArray common;
    append<quint16>(common, 20); // version 2.0 reads it
    append<quint16>(common, 0x0800); // names are UTF-8
    append<quint16>(common, isSmaller ? deflated : 0);
    append<quint16>(common, 0); // midnight
    append<quint16>(common, ((2024 - 1980) << 9) | (1 << 5) | 1);
    append<quint32>(common, crc32(content));
    append<quint32>(common, static_cast<quint32>(stored.size()));
    append<quint32>(common, static_cast<quint32>(content.size()));
    append<quint16>(common, static_cast<quint16>(name.size()));
    append<quint16>(common, 0); // no extra fields

    const auto offset = static_cast<quint32>(m_entries.size());
    append<quint32>(m_entries, 0x04034b50);
    m_entries += common + name + stored;

    append<quint32>(m_directory, 0x02014b50);
    append<quint16>(m_directory, (3 << 8) | 20); // written on Unix
    m_directory += common;
    append<quint16>(m_directory, 0); // no comment
    append<quint16>(m_directory, 0); // the first disk
    append<quint16>(m_directory, 0);
    append<quint32>(m_directory, mode << 16);
    append<quint32>(m_directory, offset);
    m_directory += name;
    ++m_count;
}

QByteArray ZipWriter::archive() const
{
    QByteArray result = m_entries + m_directory;
    append<quint32>(result, 0x06054b50);
    append<quint16>(result, 0);
    append<quint16>(result, 0);
    append<quint16>(result, m_count);
    append<quint16>(result, m_count);
    append<quint32>(result, static_cast<quint32>(m_directory.size()));
    append<quint32>(result, static_cast<quint32>(m_entries.size()));
    append<quint16>(result, 0);
    return result;
}

} // namespace standin
