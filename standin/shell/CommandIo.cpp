#include "shell/CommandIo.h"

#include "common/Sockets.h"

#include <cstring>
#include <sys/socket.h>

namespace standin
{

namespace
{

constexpr quint32 textLimit = 1024 * 1024;

std::optional<QByteArray> readCounted(int fd)
{
    quint32 size = 0;
    if (!readExactly(fd, &size, sizeof size) || size > textLimit)
        return std::nullopt;
    QByteArray bytes(static_cast<qsizetype>(size), Qt::Uninitialized);
    if (!readExactly(fd, bytes.data(), size))
        return std::nullopt;
    return bytes;
}

} // namespace

CommandIo::CommandIo(UniqueFd socket) : m_socket(std::move(socket)) { }

bool CommandIo::readRequest()
{
    quint32 count = 0;
    if (!readExactly(m_socket.get(), &count, sizeof count) || count < 3 || count > 4096)
        return false;
    QStringList texts;
    for (quint32 i = 0; i < count; ++i) {
        const std::optional<QByteArray> text = readCounted(m_socket.get());
        if (!text)
            return false;
        texts.append(QString::fromUtf8(*text));
    }
    m_folder = texts.takeFirst();
    m_classPath = texts.takeFirst();
    m_name = texts.takeFirst();
    m_arguments = texts;
    return true;
}

QString CommandIo::absolute(const QString &path) const
{
    return path.startsWith(u'/') ? path : m_folder + u'/' + path;
}

QByteArray CommandIo::readInput()
{
    send('i', {});
    return readCounted(m_socket.get()).value_or(QByteArray());
}

void CommandIo::waitForTool()
{
    char byte = 0;
    while (::recv(m_socket.get(), &byte, 1, 0) > 0) { }
}

void CommandIo::end()
{
    ::shutdown(m_socket.get(), SHUT_RD);
}

void CommandIo::send(char kind, const QByteArray &data)
{
    QByteArray frame(5, Qt::Uninitialized);
    frame[0] = kind;
    const auto size = static_cast<quint32>(data.size());
    std::memcpy(frame.data() + 1, &size, sizeof size);
    const std::lock_guard lock(m_sendMutex);
    writeAll(m_socket.get(), frame + data);
}

} // namespace standin
