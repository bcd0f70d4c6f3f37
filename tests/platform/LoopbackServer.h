#pragma once

#include "common/Sockets.h"

#include <QByteArray>
#include <QUrl>

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace quillnest
{

/// A web server on a free port whose answers are a test's: bytes on the wire, as they are. Every connection is one
/// request.
class LoopbackServer
{
public:
    /// Gets the request's head and writes what it likes; the connection ends with the call.
    using Answer = std::function<void(int connection, const QByteArray &head)>;

    explicit LoopbackServer(Answer answer)
        : m_answer(std::move(answer)), m_listener(standin::listenOnLoopback(0)), m_accepting([this] { accept(); })
    {
    }
    ~LoopbackServer()
    {
        ::shutdown(m_listener.get(), SHUT_RDWR);
        m_accepting.join();
        const std::scoped_lock guard(m_lock);
        for (const int connection : m_open)
            ::shutdown(connection, SHUT_RDWR);
        for (auto &thread : m_serving)
            thread.join();
    }
    LoopbackServer(const LoopbackServer &) = delete;
    LoopbackServer &operator=(const LoopbackServer &) = delete;

    QUrl url(const QString &path = QStringLiteral("/file")) const
    {
        sockaddr_in address = {};
        socklen_t size = sizeof address;
        ::getsockname(m_listener.get(), reinterpret_cast<sockaddr *>(&address), &size);
        return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(ntohs(address.sin_port)).arg(path));
    }

    /// The heads of all requests so far.
    std::vector<QByteArray> requests() const
    {
        const std::scoped_lock guard(m_requestLock);
        return m_requests;
    }

    static bool write(int connection, const QByteArray &bytes) { return standin::writeAll(connection, bytes); }

    /// Whether the other side ends the connection in half a minute.
    static bool waitsForEnd(int connection)
    {
        pollfd watched{connection, POLLIN, 0};
        char byte = 0;
        return ::poll(&watched, 1, 30000) == 1 && ::recv(connection, &byte, 1, 0) <= 0;
    }

    static QByteArray head(const QByteArray &status, qint64 length, const QByteArray &more = {})
    {
        return "HTTP/1.1 " + status + "\r\nContent-Length: " + QByteArray::number(length) + "\r\nConnection: close\r\n"
            + more + "\r\n";
    }

private:
    void accept()
    {
        for (;;) {
            auto connection = standin::acceptConnection(m_listener.get());
            if (!connection.isValid())
                return;
            const std::scoped_lock guard(m_lock);
            m_open.push_back(connection.get());
            m_serving.emplace_back([this, socket = connection.get()] { serve(socket); });
            m_connections.push_back(std::move(connection));
        }
    }

    void serve(int connection)
    {
        QByteArray head;
        char letter = 0;
        while (!head.endsWith("\r\n\r\n")) {
            if (!standin::readExactly(connection, &letter, 1))
                return;
            head += letter;
        }
        {
            const std::scoped_lock guard(m_requestLock);
            m_requests.push_back(head);
        }
        m_answer(connection, head);
        ::shutdown(connection, SHUT_RDWR);
    }

    const Answer m_answer;
    standin::UniqueFd m_listener;
    std::mutex m_lock;
    mutable std::mutex m_requestLock;
    std::vector<QByteArray> m_requests;
    std::vector<int> m_open;
    std::vector<standin::UniqueFd> m_connections;
    std::vector<std::thread> m_serving;
    std::thread m_accepting;
};

} // namespace quillnest
