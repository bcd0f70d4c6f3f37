#pragma once

#include "stream/SessionSocket.h"

#include <QString>
#include <condition_variable>
#include <deque>
#include <mutex>

namespace standin
{

/// Writes the device's messages to the control socket, in order, on a thread of its own: a change of the clipboard
/// must not wait for a client that does not read. All functions but `run` return at once, from any thread.
class DeviceMessages
{
public:
    explicit DeviceMessages(SessionSocket &socket);

    void run();
    void stop();
    void sendClipboard(const QString &text);
    void acknowledgeClipboard(quint64 sequence);

private:
    void send(const QByteArray &message);

    SessionSocket &m_socket;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<QByteArray> m_queue;
    bool m_stopped = false;
};

} // namespace standin
