#include "stream/DeviceMessages.h"

#include "stream/PacketHeader.h"

namespace standin
{

namespace
{

enum MessageType : char { Clipboard = 0, AcknowledgeClipboard = 1 };

} // namespace

DeviceMessages::DeviceMessages(SessionSocket &socket) : m_socket(socket) { }

void DeviceMessages::run()
{
    for (;;) {
        QByteArray message;
        {
            std::unique_lock lock(m_mutex);
            m_changed.wait(lock, [this] { return m_stopped || !m_queue.empty(); });
            if (m_stopped)
                return;
            message = std::move(m_queue.front());
            m_queue.pop_front();
        }
        if (!m_socket.write(message))
            return;
    }
}

void DeviceMessages::stop()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stopped = true;
    }
    m_changed.notify_all();
}

void DeviceMessages::sendClipboard(const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    send(QByteArray(1, Clipboard) + bigEndian32(static_cast<quint32>(bytes.size())) + bytes);
}

void DeviceMessages::acknowledgeClipboard(quint64 sequence)
{
    QByteArray message(9, AcknowledgeClipboard);
    qToBigEndian(sequence, message.data() + 1);
    send(message);
}

void DeviceMessages::send(const QByteArray &message)
{
    {
        const std::lock_guard lock(m_mutex);
        m_queue.push_back(message);
    }
    m_changed.notify_all();
}

} // namespace standin
