#pragma once

#include <QByteArray>

namespace standin
{

/// Writes a zip archive into memory, as a Unix host would. Takes any name and any kind of entry: what an honest tool
/// would never write is what its readers have to be tried with.
class ZipWriter
{
public:
    /// A file with its permissions.
    void addFile(const QByteArray &name, const QByteArray &content, quint32 mode = 0644);
    /// The name's closing slash is added if it lacks.
    void addFolder(const QByteArray &name, quint32 mode = 0755);
    void addLink(const QByteArray &name, const QByteArray &target);
    /// Any entry: the mode says by its upper bits what kind it is.
    void add(const QByteArray &name, const QByteArray &content, quint32 mode);

    /// The archive as it is so far.
    QByteArray archive() const;

private:
    QByteArray m_entries;
    QByteArray m_directory;
    quint16 m_count = 0;
};

/// The sum that zip archives keep of each file.
quint32 crc32(const QByteArray &bytes);

} // namespace standin
