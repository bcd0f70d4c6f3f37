#include "stream/SessionSocket.h"

namespace standin
{

SessionSocket::SessionSocket(std::shared_ptr<AdbStream> stream) : m_stream(std::move(stream)) { }

bool SessionSocket::write(const QByteArray &bytes)
{
    if (m_limit && m_sent + bytes.size() >= *m_limit) {
        const QByteArray allowed = bytes.left(*m_limit - m_sent);
        if (m_stream->write(allowed))
            m_sent += allowed.size();
        m_stream->close();
        return false;
    }
    if (!m_stream->write(bytes))
        return false;
    m_sent += bytes.size();
    return true;
}

} // namespace standin
