#pragma once

#include "common/UniqueFd.h"
#include "packages/PackageArchive.h"

#include <QJsonArray>
#include <QMap>
#include <QUrl>

#include <mutex>

namespace standin
{

/// Something that goes wrong with whatever has `where` in its address; with everything if that is empty.
struct PackageFault {
    QString name;
    QString argument;
    QString where;
};

/// A web server on the loopback address that has the package lists and the archives in them, and shows faults on
/// demand. The README lists them, and what can be asked under "/standin/". A thread for each connection, each of which
/// is one request.
class PackageServer
{
public:
    explicit PackageServer(QList<PackageArchive> archives) : m_archives(std::move(archives)) { }

    /// Port 0 is any that is free.
    bool start(quint16 port);
    /// Where the lists are; ends with a slash.
    QUrl repository() const;
    /// False for a name that means nothing, or an argument that makes no sense of it.
    bool addFault(const PackageFault &fault);

private:
    struct Answer {
        int status = 200;
        QByteArray type;
        QByteArray body;
    };

    void serve(const UniqueFd &connection);
    Answer answer(const QUrl &url);
    Answer control(const QUrl &url);
    QByteArray bytesOf(const PackageArchive &archive) const;
    QByteArray list(bool images) const;
    void send(const UniqueFd &connection, const QString &path, const Answer &answer);
    /// The argument of the fault for this address, if it is to be shown.
    std::optional<QString> fault(const QString &name, const QString &address) const;

    const QList<PackageArchive> m_archives;
    UniqueFd m_listener;
    quint16 m_port = 0;
    mutable std::mutex m_lock;
    QList<PackageFault> m_faults;
    QJsonArray m_requests;
};

} // namespace standin
