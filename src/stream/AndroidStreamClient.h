#pragma once

#include "base/QuillnestLog.h"
#include "platform/LocalListener.h"
#include "platform/Platform.h"
#include "stream/AudioReader.h"
#include "stream/ControlLink.h"
#include "stream/ControlSender.h"
#include "stream/DeviceMessageReader.h"
#include "stream/SampleFeed.h"
#include "stream/StreamStatistics.h"
#include "stream/StreamThreads.h"
#include "stream/VideoReader.h"

#include <QByteArray>
#include <QSizeF>
#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace quillnest
{

/// One session with the device's stream server: the link between one app window and Android. It pushes the server,
/// tunnels the device's socket to a loopback listener, starts the server on a new virtual display, accepts the video,
/// audio and control sockets in that order, starts the app there and runs the readers until the stream ends, which it
/// reports exactly once. Connection and lifetime are its own; what goes over the sockets is the readers' and the
/// link's.
///
/// Made by `create`, started once and never restarted. Its threads keep it alive until they have ended.
class AndroidStreamClient : public ControlSender, public std::enable_shared_from_this<AndroidStreamClient>
{
public:
    /// Seconds that the device's side gets for each connection. The first one waits for the server to start.
    struct Timeouts {
        double firstAccept = 15.0;
        double nextAccept = 5.0;
    };

    struct Config {
        QString adb;
        QString serial;
        /// The server file on this machine.
        QString server;
        QString package;
        /// Wanted size of the virtual display in physical pixels.
        QSizeF pixelSize;
        int dpi = 320;
        /// Bits per second.
        int bitRate = 8000000;
        int maxFPS = 60;
        Timeouts timeouts{};
    };

    static std::shared_ptr<AndroidStreamClient> create(
        const Platform &platform, Config config, std::shared_ptr<SampleRenderer> renderer,
        std::shared_ptr<QuillnestLog> log, std::shared_ptr<StreamThreads> threads = std::make_shared<StreamThreads>());
    ~AndroidStreamClient() override;
    AndroidStreamClient(const AndroidStreamClient &) = delete;
    AndroidStreamClient &operator=(const AndroidStreamClient &) = delete;

    // Set before `start`; called on the main thread.
    /// From now on control messages reach the device.
    std::function<void()> onConnected;
    std::function<void(QSizeF)> onVideoSize;
    /// After the first frame was enqueued.
    std::function<void()> onFirstFrame;
    /// At most once, with an error text for the user or nothing.
    std::function<void(std::optional<QString>)> onEnded;
    std::function<void(ImageBox)> onSnapshot;

    /// Connects on a thread of its own; returns at once.
    void start();

    /// Ends the session: closes the sockets, stops the sound, ends the server. May be called more than once, from any
    /// thread; doesn't report the end by itself.
    void stop();

    using ControlSender::send;
    /// What happens while the device doesn't read is told at ControlQueue. Any thread.
    void send(const QByteArray &message, std::optional<std::chrono::nanoseconds> since) override;
    std::uint64_t nextClipboardSequence() override { return m_control.nextClipboardSequence(); }
    QSizeF videoSize() const override { return m_videoReader.videoSize(); }

    /// Asks for the next key frame as a still through `onSnapshot`.
    void requestSnapshot() { m_videoReader.requestSnapshot(); }

    /// The samples, for those who want them beside the renderer and the loudspeaker.
    SampleFeed &samples() { return m_feed; }

    /// Id of the virtual display, once the server has told it.
    std::optional<int> displayID() const;
    const Config &config() const { return m_config; }
    StreamStatistics statistics() const;

    /// The size asked for at the server's start: each side cut down to a multiple of 8.
    static QSize displaySize(QSizeF pixelSize);

private:
    struct AdbResult {
        int status = -1;
        QString output;
    };

    struct Sockets {
        std::shared_ptr<StreamSocket> video;
        std::shared_ptr<StreamSocket> audio;
        /// The session was stopped before they could be stored.
        bool cameTooLate = false;
    };

    AndroidStreamClient(
        const Platform &platform, Config config, std::shared_ptr<SampleRenderer> renderer,
        std::shared_ptr<QuillnestLog> log, std::shared_ptr<StreamThreads> threads);

    void connect();
    /// The device's connections in their order; the control socket goes to its link.
    Sockets takeSockets(LocalListener &listener);
    void finish(std::optional<QString> error);
    AdbResult adb(const QStringList &arguments);
    QStringList serverArguments(const QString &scid, QSize display) const;
    void launchServer(const QString &scid, QSize display);
    void readServerOutput(const QByteArray &chunk);

    const Platform m_platform;
    const Config m_config;
    const std::shared_ptr<QuillnestLog> m_log;
    const std::shared_ptr<StreamThreads> m_threads;
    const bool m_forwardAudio;
    /// Session id, 1 to 0x7FFFFFFE.
    const std::uint32_t m_scid;

    SampleFeed m_feed;
    VideoReader m_videoReader;
    AudioReader m_audioReader;
    DeviceMessageReader m_messageReader;
    ControlLink m_control;

    /// Guards the fields below; held only for short reads and writes.
    mutable std::mutex m_lock;
    /// The adb that this session waits for.
    std::shared_ptr<RunningChild> m_adb;
    std::shared_ptr<RunningChild> m_serverProcess;
    std::shared_ptr<LocalListener> m_listener;
    std::shared_ptr<StreamSocket> m_video;
    std::shared_ptr<StreamSocket> m_audio;
    bool m_stopped = false;
    bool m_endReported = false;
    std::optional<int> m_displayID;
};

} // namespace quillnest
