#include "daemon/SyncService.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>

namespace standin
{

namespace
{

constexpr qsizetype maxData = 64 * 1024; // what the protocol allows in one "DATA"

template <typename T> void append(QByteArray &bytes, T value)
{
    value = qToLittleEndian(value);
    bytes.append(reinterpret_cast<const char *>(&value), sizeof value);
}

} // namespace

SyncService::SyncService(const DeviceTree &tree, AdbStream &stream) : m_tree(tree), m_stream(stream) { }

void SyncService::serve()
{
    while (const std::optional<QByteArray> header = m_stream.readExactly(8)) {
        const QByteArray id = header->left(4);
        const quint32 size = qFromLittleEndian<quint32>(header->constData() + 4);
        if (id == "QUIT" || size > 1024)
            return;
        const std::optional<QByteArray> argument = m_stream.readExactly(static_cast<qsizetype>(size));
        if (!argument)
            return;
        const QString path = QString::fromUtf8(*argument);
        bool goOn = false;
        if (id == "STAT")
            goOn = answerStat(path);
        else if (id == "STA2" || id == "LST2")
            goOn = answerStatV2(id, path);
        else if (id == "LIST")
            goOn = answerList(path);
        else if (id == "SEND")
            goOn = receiveFile(*argument);
        else if (id == "RECV")
            goOn = sendFile(path);
        else
            fail("unknown request '" + id + "'");
        if (!goOn)
            return;
    }
}

bool SyncService::answerStat(const QString &path)
{
    struct stat status = {};
    ::lstat(QFile::encodeName(m_tree.hostPathOfLink(path)).constData(), &status); // zeros tell that there is none
    return send(
        "STAT", {status.st_mode, static_cast<quint32>(status.st_size), static_cast<quint32>(status.st_mtim.tv_sec)});
}

bool SyncService::answerStatV2(const QByteArray &id, const QString &path)
{
    struct stat status = {};
    const QString host = id == "LST2" ? m_tree.hostPathOfLink(path) : m_tree.hostPath(path);
    const int error = ::lstat(QFile::encodeName(host).constData(), &status) == 0 ? 0 : errno;
    QByteArray bytes = id;
    append(bytes, static_cast<quint32>(error));
    append(bytes, static_cast<quint64>(status.st_dev));
    append(bytes, static_cast<quint64>(status.st_ino));
    append(bytes, static_cast<quint32>(status.st_mode));
    append(bytes, static_cast<quint32>(status.st_nlink));
    append(bytes, static_cast<quint32>(status.st_uid));
    append(bytes, static_cast<quint32>(status.st_gid));
    append(bytes, static_cast<quint64>(status.st_size));
    append(bytes, static_cast<qint64>(status.st_atim.tv_sec));
    append(bytes, static_cast<qint64>(status.st_mtim.tv_sec));
    append(bytes, static_cast<qint64>(status.st_ctim.tv_sec));
    return m_stream.write(bytes);
}

bool SyncService::answerList(const QString &path)
{
    const QDir folder(m_tree.hostPath(path));
    const QStringList names = folder.entryList(QDir::AllEntries | QDir::Hidden | QDir::System);
    QByteArray bytes;
    for (const QString &name : names) {
        struct stat status = {};
        ::lstat(QFile::encodeName(folder.filePath(name)).constData(), &status);
        const QByteArray encoded = name.toUtf8();
        bytes += "DENT";
        for (const auto word :
             {static_cast<quint32>(status.st_mode), static_cast<quint32>(status.st_size),
              static_cast<quint32>(status.st_mtim.tv_sec), static_cast<quint32>(encoded.size())})
            append(bytes, word);
        bytes += encoded;
    }
    return m_stream.write(bytes) && send("DONE", {0, 0, 0, 0});
}

bool SyncService::receiveFile(const QByteArray &pathAndMode)
{
    const auto comma = pathAndMode.lastIndexOf(',');
    const QString path = m_tree.hostPath(QString::fromUtf8(pathAndMode.left(comma)));
    const mode_t mode = pathAndMode.mid(comma + 1).toUInt();
    QDir().mkpath(QFileInfo(path).path());
    // A link's data is its target. Written to a side file first, so that a push cut short leaves the old file.
    // Its name is this push's own, as several clients may push the same file at once, and short, as the file's may be
    // as long as a name can be.
    static std::atomic<int> pushes = 0;
    const QString partial = QFileInfo(path).path() + QStringLiteral("/.partial%1").arg(++pushes);
    QByteArray problem;
    QFile file(partial);
    QByteArray target;
    const bool isLink = S_ISLNK(mode);
    if (QFileInfo(path).isDir())
        problem = "couldn't create file: Is a directory";
    else if (!isLink && !file.open(QFile::WriteOnly | QFile::Truncate))
        problem = "couldn't create file: " + file.errorString().toUtf8();
    while (const std::optional<QByteArray> header = m_stream.readExactly(8)) {
        const quint32 size = qFromLittleEndian<quint32>(header->constData() + 4);
        if (header->startsWith("DONE")) { // here the word is the time of the last change
            if (!problem.isEmpty())
                return fail(problem);
            const QByteArray encoded = QFile::encodeName(path);
            if (isLink) {
                QFile::remove(path);
                return ::symlink(target.constData(), encoded.constData()) == 0 ? send("OKAY", {0})
                                                                               : fail(std::strerror(errno));
            }
            file.flush();
            const timespec times[2] = {{static_cast<time_t>(size), 0}, {static_cast<time_t>(size), 0}};
            ::futimens(file.handle(), times);
            ::fchmod(file.handle(), (mode & 0777) | S_IRUSR | S_IWUSR);
            file.close();
            if (file.error() != QFile::NoError)
                return fail("write failed: " + file.errorString().toUtf8());
            if (::rename(QFile::encodeName(partial).constData(), encoded.constData()) != 0) {
                const int reason = errno;
                file.remove();
                return fail(QByteArray("couldn't create file: ") + std::strerror(reason));
            }
            return send("OKAY", {0});
        }
        if (!header->startsWith("DATA") || static_cast<qsizetype>(size) > maxData)
            break;
        const std::optional<QByteArray> data = m_stream.readExactly(static_cast<qsizetype>(size));
        if (!data)
            break;
        if (isLink)
            target += *data;
        else if (problem.isEmpty() && file.write(*data) != data->size())
            problem = "write failed: " + file.errorString().toUtf8();
    }
    file.remove();
    return false;
}

bool SyncService::sendFile(const QString &path)
{
    QFile file(m_tree.hostPath(path));
    if (!file.open(QFile::ReadOnly))
        return fail("open failed: " + file.errorString().toUtf8());
    for (;;) {
        const QByteArray data = file.read(maxData);
        if (data.isEmpty())
            return send("DONE", {0});
        if (!send("DATA", {static_cast<quint32>(data.size())}, data))
            return false;
    }
}

bool SyncService::fail(const QByteArray &words)
{
    return send("FAIL", {static_cast<quint32>(words.size())}, words);
}

bool SyncService::send(const QByteArray &id, const QList<quint32> &words, const QByteArray &data)
{
    QByteArray bytes = id;
    for (const quint32 word : words)
        append(bytes, word);
    return m_stream.write(bytes + data);
}

} // namespace standin
