#pragma once

#include "fakes/FakePlatform.h"
#include "windows/AppSession.h"

#include <QTcpSocket>

#include <atomic>
#include <memory>

namespace quillnest
{

/// The device's end of one stream: a scripted adb, and real sockets over the loopback address. The stream carries no
/// sound. What the session sends can be read byte for byte.
class LoopbackDevice
{
public:
    explicit LoopbackDevice(const FakePlatform &fakes);

    /// How many servers were started so far.
    int servers() const { return m_servers; }

    /// Connects to the session whose server was started last, as the server would, and waits until the stream stands.
    void connect(const AppSession &session);
    /// Tells the size of the video and waits until the session knows it.
    void announce(const AppSession &session, QSize size);

    /// Sends parameter sets and a key frame.
    void sendPicture();

    /// All that the session has sent since the last look.
    QByteArray sent(AppSession &session);

    /// Ends the stream from the device's side.
    void hangUp();

private:
    QByteArray receive(qsizetype count);

    const FakePlatform &m_fakes;
    std::atomic_int m_port = 0;
    std::atomic_int m_servers = 0;
    std::unique_ptr<QTcpSocket> m_video;
    std::unique_ptr<QTcpSocket> m_control;
    int m_connections = 0;
    QByteArray m_received;
};

/// Runs the event loop and what waits in the fakes until the condition holds; false after half a minute.
bool comesTrue(const FakePlatform &fakes, const std::function<bool()> &condition);

} // namespace quillnest
