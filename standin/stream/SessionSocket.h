#pragma once

#include "daemon/AdbStream.h"

#include <atomic>

namespace standin
{

/// One of a session's sockets: counts what goes out, and closes itself after so many bytes when a fault asks for it.
/// One thread writes, one reads, and any may close.
class SessionSocket
{
public:
    explicit SessionSocket(std::shared_ptr<AdbStream> stream);

    void closeAfter(std::optional<qint64> bytes) { m_limit = bytes; }
    bool write(const QByteArray &bytes);
    std::optional<QByteArray> readExactly(qsizetype size) { return m_stream->readExactly(size); }
    void close() { m_stream->close(); }
    bool isClosed() const { return m_stream->isClosed(); }
    qint64 bytesSent() const { return m_sent; }

private:
    const std::shared_ptr<AdbStream> m_stream;
    std::optional<qint64> m_limit;
    std::atomic<qint64> m_sent = 0;
};

} // namespace standin
