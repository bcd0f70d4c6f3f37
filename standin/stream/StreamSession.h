#pragma once

#include "device/Device.h"
#include "shell/CommandIo.h"
#include "stream/AudioSender.h"
#include "stream/ControlReader.h"
#include "stream/StreamOptions.h"
#include "stream/VideoSender.h"

#include <thread>

namespace standin
{

/// One run of the stream server: a virtual display, its sockets, and the threads that serve them. Lives as long as
/// the command that started it, and ends that command when it ends by itself.
class StreamSession
{
public:
    /// Opens a connection to the named socket of the device; empty when nobody listens.
    using Connect = std::function<std::shared_ptr<AdbStream>(const QByteArray &name)>;

    StreamSession(Device &device, CommandIo &io, StreamOptions options, Connect connect);
    ~StreamSession();

    /// Returns the command's exit status.
    int run();
    void end();
    QJsonObject toJson() const;
    QString commandLine() const { return m_io.name() + QLatin1Char(' ') + m_io.arguments().join(QLatin1Char(' ')); }

private:
    bool connectSockets();
    void startThreads();
    /// A socket is gone, and with it what the server runs for.
    void endByItself();

    Device &m_device;
    CommandIo &m_io;
    const StreamOptions m_options;
    const Connect m_connect;
    const std::shared_ptr<Display> m_display;

    mutable std::mutex m_mutex; // over the parts, which come up while others look at the session
    std::unique_ptr<SessionSocket> m_videoSocket;
    std::unique_ptr<SessionSocket> m_audioSocket;
    std::unique_ptr<SessionSocket> m_controlSocket;
    std::unique_ptr<VideoSender> m_video;
    std::unique_ptr<AudioSender> m_audio;
    std::shared_ptr<DeviceMessages> m_messages; ///< shared with a change of the clipboard that is under way
    int m_clipboardListener = 0;
    std::vector<std::thread> m_threads;
};

} // namespace standin
