#include "packages/PackageServer.h"

#include "common/Sockets.h"
#include "packages/PackageLists.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QUrlQuery>

#include <chrono>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <thread>

namespace standin
{

using namespace Qt::StringLiterals;

namespace
{

constexpr auto root = "/android/repository/"_L1;

/// The faults, and whether their argument is a number.
const QMap<QString, bool> faultNames = {
    {u"missing"_s, false}, {u"garbled"_s, false}, {u"wrong-checksum"_s, false}, {u"cut"_s, true},
    {u"slow"_s, true},     {u"stall"_s, true},    {u"no-length"_s, false},      {u"escape"_s, false},
};

std::optional<Escape> escapeNamed(const QString &name)
{
    if (name == u"dotdot")
        return Escape::dotDot;
    if (name == u"absolute")
        return Escape::absolute;
    if (name == u"link")
        return Escape::link;
    return std::nullopt;
}

QByteArray words(int status)
{
    return status == 200 ? "200 OK" : status == 400 ? "400 Bad Request" : "404 Not Found";
}

} // namespace

bool PackageServer::start(quint16 port)
{
    m_listener = listenOnLoopback(port);
    if (!m_listener.isValid())
        return false;
    sockaddr_in address = {};
    socklen_t size = sizeof address;
    ::getsockname(m_listener.get(), reinterpret_cast<sockaddr *>(&address), &size);
    m_port = ntohs(address.sin_port);
    serveEachConnection(m_listener.get(), [this](const UniqueFd &connection) { serve(connection); });
    return true;
}

QUrl PackageServer::repository() const
{
    return QUrl(u"http://127.0.0.1:%1"_s.arg(m_port) + root);
}

bool PackageServer::addFault(const PackageFault &fault)
{
    bool isNumber = false;
    fault.argument.toLongLong(&isNumber);
    if (!faultNames.contains(fault.name) || (faultNames[fault.name] && !isNumber)
        || (fault.name == u"escape" && !escapeNamed(fault.argument)))
        return false;
    const std::scoped_lock guard(m_lock);
    m_faults.append(fault);
    return true;
}

std::optional<QString> PackageServer::fault(const QString &name, const QString &address) const
{
    const std::scoped_lock guard(m_lock);
    for (const auto &fault : m_faults) {
        if (fault.name == name && address.contains(fault.where))
            return fault.argument;
    }
    return std::nullopt;
}

void PackageServer::serve(const UniqueFd &connection)
{
    QByteArray head;
    char letter = 0;
    while (!head.endsWith("\r\n\r\n")) {
        if (head.size() > 65536 || !readExactly(connection.get(), &letter, 1))
            return;
        head += letter;
    }
    const auto line = head.left(head.indexOf('\r')).split(' ');
    const QUrl url(QString::fromLatin1(line.value(1)));
    if (line.value(0) != "GET" || !url.isValid())
        send(connection, {}, {400, "text/plain", "only GET is understood\n"});
    else if (url.path().startsWith("/standin/"_L1))
        send(connection, {}, control(url));
    else
        send(connection, url.path(), answer(url));
}

PackageServer::Answer PackageServer::answer(const QUrl &url)
{
    const QString path = url.path();
    if (fault(u"missing"_s, path) || !path.startsWith(root))
        return {404, "text/html", "<html>Not Found</html>\n"};
    const QString address = path.sliced(root.size());
    const bool images = address == u"sys-img/android/sys-img2-3.xml";
    if (images || address == u"repository2-3.xml") {
        auto xml = list(images);
        if (fault(u"garbled"_s, path))
            xml = xml.left(xml.size() / 2) + "</who>" + xml.sliced(xml.size() / 2);
        return {200, "text/xml", xml};
    }
    for (const auto &archive : m_archives) {
        if (archive.address != address)
            continue;
        auto bytes = bytesOf(archive);
        if (fault(u"wrong-checksum"_s, path))
            bytes[bytes.size() / 2] = static_cast<char>(bytes[bytes.size() / 2] ^ 1);
        return {200, "application/zip", bytes};
    }
    return {404, "text/html", "<html>Not Found</html>\n"};
}

PackageServer::Answer PackageServer::control(const QUrl &url)
{
    const QUrlQuery query(url);
    const auto value = [&query](const QString &key) { return query.queryItemValue(key, QUrl::FullyDecoded); };
    if (url.path() == u"/standin/requests") {
        const std::scoped_lock guard(m_lock);
        return {200, "application/json", QJsonDocument(m_requests).toJson()};
    }
    if (url.path() == u"/standin/clear") {
        const std::scoped_lock guard(m_lock);
        m_faults.clear();
        return {200, "text/plain", "ok\n"};
    }
    if (url.path() == u"/standin/fault" && addFault({value(u"name"_s), value(u"argument"_s), value(u"where"_s)}))
        return {200, "text/plain", "ok\n"};
    return {400, "text/plain", "not understood\n"};
}

QByteArray PackageServer::bytesOf(const PackageArchive &archive) const
{
    const auto escape = fault(u"escape"_s, root + archive.address);
    return escape ? withEscape(archive, *escapeNamed(*escape)) : archive.bytes;
}

QByteArray PackageServer::list(bool images) const
{
    QList<ListedArchive> listed;
    for (const auto &archive : m_archives) {
        const auto bytes = bytesOf(archive);
        listed.append({archive.package, archive.address, bytes.size(), checksumOf(bytes)});
    }
    return images ? imagesList(listed) : toolsList(listed);
}

void PackageServer::send(const UniqueFd &connection, const QString &path, const Answer &answer)
{
    QByteArray head
        = "HTTP/1.1 " + words(answer.status) + "\r\nContent-Type: " + answer.type + "\r\nConnection: close\r\n";
    if (!fault(u"no-length"_s, path))
        head += "Content-Length: " + QByteArray::number(answer.body.size()) + "\r\n";
    const bool isAsked = !path.isEmpty();
    const auto cut = isAsked ? fault(u"cut"_s, path) : std::nullopt;
    const auto stall = isAsked ? fault(u"stall"_s, path) : std::nullopt;
    const auto slow = isAsked ? fault(u"slow"_s, path) : std::nullopt;
    const auto limit = cut ? cut : stall;
    const QByteArray body = limit ? answer.body.left(limit->toLongLong()) : answer.body;
    const qsizetype piece = slow ? qMax<qsizetype>(1, slow->toLongLong() / 20) : qsizetype(1024) * 1024;
    if (isAsked) {
        const std::scoped_lock guard(m_lock);
        m_requests.append(QJsonObject{{u"path"_s, path}, {u"status"_s, answer.status}});
    }
    bool sent = writeAll(connection.get(), head + "\r\n");
    for (qsizetype at = 0; sent && at < body.size(); at += piece) {
        sent = writeAll(connection.get(), body.sliced(at, qMin(piece, body.size() - at)));
        if (slow)
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    // Silent, but there, for as long as the other side is.
    pollfd watched{connection.get(), POLLIN | POLLRDHUP, 0};
    if (sent && stall)
        ::poll(&watched, 1, -1);
    ::shutdown(connection.get(), SHUT_RDWR);
}

} // namespace standin
