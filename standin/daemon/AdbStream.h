#pragma once

#include <QByteArray>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>

namespace standin
{

class AdbTransport;

/// One conversation over the transport: a byte stream both ways. A payload is on its way to the host until the host
/// says okay, and only one may be on its way; that is the whole flow control. All functions are thread safe.
class AdbStream
{
public:
    AdbStream(std::shared_ptr<AdbTransport> transport, quint32 localId, quint32 remoteId);
    ~AdbStream();

    /// Waits until the host took what was written before, then sends. False when the stream has ended.
    bool write(const QByteArray &bytes);
    /// Waits for the next payload; absent at the end of the stream.
    std::optional<QByteArray> read();
    /// Waits for exactly this many bytes; absent when the stream ends before.
    std::optional<QByteArray> readExactly(qsizetype size);
    void close();
    bool isClosed() const;
    quint32 localId() const { return m_localId; }

    // What the transport tells the stream.
    void acknowledged(quint32 remoteId);
    void received(QByteArray payload);
    void closedByHost();
    /// For a stream that the device opens: waits for the host's answer.
    bool waitUntilOpen(std::chrono::milliseconds timeout);

private:
    const std::shared_ptr<AdbTransport> m_transport;
    const quint32 m_localId;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    quint32 m_remoteId;
    bool m_writable;
    bool m_closed = false;
    std::deque<QByteArray> m_inbox;
    QByteArray m_rest; // used by readExactly alone, which has one caller at a time
};

} // namespace standin
