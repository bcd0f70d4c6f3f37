#include "daemon/AdbStream.h"

#include "daemon/AdbTransport.h"

namespace standin
{

AdbStream::AdbStream(std::shared_ptr<AdbTransport> transport, quint32 localId, quint32 remoteId)
    : m_transport(std::move(transport)), m_localId(localId), m_remoteId(remoteId), m_writable(remoteId != 0)
{
}

AdbStream::~AdbStream()
{
    close();
}

bool AdbStream::write(const QByteArray &bytes)
{
    const auto limit = static_cast<qsizetype>(m_transport->maxPayload());
    for (qsizetype at = 0; at < bytes.size(); at += limit) {
        quint32 remoteId = 0;
        {
            std::unique_lock lock(m_mutex);
            m_changed.wait(lock, [this] { return m_writable || m_closed; });
            if (m_closed)
                return false;
            m_writable = false;
            remoteId = m_remoteId;
        }
        if (!m_transport->send({AdbPacket::Write, m_localId, remoteId, bytes.mid(at, limit)}))
            return false;
    }
    return true;
}

std::optional<QByteArray> AdbStream::read()
{
    QByteArray payload;
    quint32 remoteId = 0;
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return !m_inbox.empty() || m_closed; });
        if (m_inbox.empty())
            return std::nullopt;
        payload = std::move(m_inbox.front());
        m_inbox.pop_front();
        remoteId = m_closed ? 0 : m_remoteId;
    }
    if (remoteId != 0)
        m_transport->send({AdbPacket::Okay, m_localId, remoteId, {}});
    return payload;
}

std::optional<QByteArray> AdbStream::readExactly(qsizetype size)
{
    while (m_rest.size() < size) {
        const std::optional<QByteArray> payload = read();
        if (!payload)
            return std::nullopt;
        m_rest += *payload;
    }
    QByteArray result = m_rest.left(size);
    m_rest.remove(0, size);
    return result;
}

void AdbStream::close()
{
    quint32 remoteId = 0;
    {
        const std::lock_guard lock(m_mutex);
        if (m_closed)
            return;
        m_closed = true;
        remoteId = m_remoteId;
    }
    m_changed.notify_all();
    m_transport->forget(m_localId);
    m_transport->send({AdbPacket::Close, m_localId, remoteId, {}});
}

bool AdbStream::isClosed() const
{
    const std::lock_guard lock(m_mutex);
    return m_closed;
}

void AdbStream::acknowledged(quint32 remoteId)
{
    {
        const std::lock_guard lock(m_mutex);
        m_remoteId = remoteId;
        m_writable = true;
    }
    m_changed.notify_all();
}

void AdbStream::received(QByteArray payload)
{
    {
        const std::lock_guard lock(m_mutex);
        m_inbox.push_back(std::move(payload));
    }
    m_changed.notify_all();
}

void AdbStream::closedByHost()
{
    {
        const std::lock_guard lock(m_mutex);
        m_closed = true;
    }
    m_changed.notify_all();
}

bool AdbStream::waitUntilOpen(std::chrono::milliseconds timeout)
{
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, timeout, [this] { return m_writable || m_closed; });
    return m_writable && !m_closed;
}

} // namespace standin
