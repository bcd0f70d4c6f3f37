#include "platform/posix/PosixInstanceDoor.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalSocket>
#include <QPointer>
#include <QThread>

#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>

namespace quillnest
{

namespace
{
/// More than any command line holds.
constexpr qint64 longestLine = 4 * 1024 * 1024;
constexpr int visitorsAtOnce = 8;
const QByteArray taken("taken\n");

/// The name of the socket. An address holds about a hundred bytes, and a home folder's name may be longer: then the
/// socket has no place, and later starts find the lock alone.
QString socketPath(const QString &folder)
{
    return folder + QStringLiteral("/instance.socket");
}

std::chrono::milliseconds left(const QDeadlineTimer &deadline)
{
    return std::chrono::milliseconds(deadline.remainingTime());
}
} // namespace

InstanceDoor::Entry PosixInstanceDoor::enter(const QString &folder, const QStringList &arguments)
{
    m_folder = folder;
    const QJsonObject message{
        {QStringLiteral("arguments"), QJsonArray::fromStringList(arguments)},
        {QStringLiteral("folder"), QDir::currentPath()}};
    const auto line = QJsonDocument(message).toJson(QJsonDocument::Compact) + '\n';
    const QDeadlineTimer deadline(m_patience);
    for (;;) {
        if (lock() != Lock::busy) {
            open();
            return Entry::first;
        }
        if (knock(line, left(deadline)))
            return Entry::handedOver;
        if (deadline.hasExpired())
            return Entry::noAnswer;
        // It is just opening, or on its way out.
        QThread::msleep(20);
    }
}

PosixInstanceDoor::Lock PosixInstanceDoor::lock()
{
    if (!m_lock) {
        QDir().mkpath(m_folder);
        m_lock = Descriptor(::open(
            QFile::encodeName(m_folder + QStringLiteral("/instance.lock")).constData(),
            O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
        if (!m_lock)
            return Lock::impossible;
    }
    if (::flock(m_lock.get(), LOCK_EX | LOCK_NB) == 0)
        return Lock::taken;
    return errno == EWOULDBLOCK ? Lock::busy : Lock::impossible;
}

void PosixInstanceDoor::open()
{
    m_server = std::make_unique<QLocalServer>();
    // With this option the socket is renamed into its place, over what a killed one may have left there.
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    m_server->setMaxPendingConnections(visitorsAtOnce);
    connect(m_server.get(), &QLocalServer::newConnection, this, [this] {
        while (auto *visitor = m_server->nextPendingConnection())
            listenTo(*visitor);
    });
    m_server->listen(socketPath(m_folder));
}

void PosixInstanceDoor::listenTo(QLocalSocket &visitor)
{
    connect(&visitor, &QLocalSocket::disconnected, &visitor, &QObject::deleteLater);
    const auto read = [this, &visitor] {
        if (visitor.bytesAvailable() > longestLine) {
            visitor.abort();
            return;
        }
        if (!visitor.canReadLine())
            return;
        const auto message = QJsonDocument::fromJson(visitor.readLine()).object();
        QStringList arguments;
        for (const auto &argument : message.value(QStringLiteral("arguments")).toArray())
            arguments.append(argument.toString());
        if (arguments.isEmpty()) {
            visitor.abort();
            return;
        }
        visitor.write(taken);
        visitor.flush();
        visitor.disconnectFromServer();
        Q_EMIT knocked(arguments, message.value(QStringLiteral("folder")).toString());
    };
    connect(&visitor, &QLocalSocket::readyRead, this, read);
    // What came with the connection is told by nobody.
    read();
}

bool PosixInstanceDoor::knock(const QByteArray &line, std::chrono::milliseconds patience) const
{
    const QDeadlineTimer deadline(patience);
    QLocalSocket socket;
    socket.connectToServer(socketPath(m_folder));
    if (!socket.waitForConnected(static_cast<int>(patience.count())))
        return false;
    socket.write(line);
    while (!socket.canReadLine()) {
        const auto time = static_cast<int>(left(deadline).count());
        if (time <= 0 || !socket.waitForReadyRead(time))
            return false;
    }
    return socket.readLine() == taken;
}

} // namespace quillnest
