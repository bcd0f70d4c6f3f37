#pragma once

#include "base/LatencyHistogram.h"
#include "base/QuillnestLog.h"
#include "platform/Platform.h"
#include "stream/ControlQueue.h"
#include "stream/LocalListener.h"
#include "stream/PCMAudioPlayer.h"
#include "stream/StreamSocket.h"

#include <QByteArray>
#include <QImage>
#include <QSizeF>
#include <QString>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace quillnest
{

/// A still picture on its way between threads.
class ImageBox
{
public:
    QImage image;
};

/// What a stream has carried so far.
struct StreamStatistics {
    std::uint64_t framesEnqueued = 0;
    std::uint64_t audioFramesPlayed = 0;
    std::uint64_t audioPackets = 0;
    /// Control messages that wait for the device, and those that were replaced or refused because too many did.
    std::uint64_t controlWaiting = 0;
    std::uint64_t controlDropped = 0;
    /// From `since` of `send` until a message's last byte was given to the socket.
    LatencyHistogram controlLatency;
    /// From `start` to the first frame in the renderer's queue, in seconds.
    std::optional<double> firstFrameSeconds;
};

/// One session with the device's stream server: the link between one app window and Android. It pushes the server,
/// tunnels the device's socket to a loopback listener, starts the server on a new virtual display, accepts the video,
/// audio and control sockets in that order, starts the app there and runs the readers until the stream ends, which it
/// reports exactly once.
///
/// Made by `create`, started once and never restarted. Its threads keep it alive until they have ended.
class AndroidStreamClient : public std::enable_shared_from_this<AndroidStreamClient>
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
        std::shared_ptr<QuillnestLog> log);
    ~AndroidStreamClient();
    AndroidStreamClient(const AndroidStreamClient &) = delete;
    AndroidStreamClient &operator=(const AndroidStreamClient &) = delete;

    // Set before `start`; called on the main thread.
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

    /// Queues a control message and returns at once; messages go out in the order of the calls. Dropped without a word
    /// when there is no control socket; what happens while the device doesn't read is told at ControlQueue. Any thread.
    ///
    /// The message came about at `since`, by the monotonic clock; without it, now.
    void send(const QByteArray &message, std::optional<std::chrono::nanoseconds> since = std::nullopt);

    /// Raises the number of the last clipboard message by one and gives it.
    std::uint64_t nextClipboardSequence();

    /// Asks for the next key frame as a still through `onSnapshot`.
    void requestSnapshot();

    /// Current video size in pixels; empty until it is announced.
    QSizeF videoSize() const;
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

    /// The control socket, apart from the client, so that queued messages don't keep the client alive.
    struct ControlLink {
        std::mutex lock;
        std::shared_ptr<StreamSocket> socket;
        ControlQueue queue;

        LatencyHistogram latency;

        /// The message that is being written, what is left of it. It belongs to whoever empties the queue.
        std::optional<ControlQueue::Message> underWay;

        enum class Wait { No, Yes };
        /// Writes all that waits and answers true, or, when it mustn't wait for the device to read, as much of it as
        /// the socket takes.
        bool empty(const Clock &clock, Wait wait);

    private:
        /// The same for the message under way.
        bool writeUnderWay(StreamSocket &to, Wait wait);
    };

    AndroidStreamClient(
        const Platform &platform, Config config, std::shared_ptr<SampleRenderer> renderer,
        std::shared_ptr<QuillnestLog> log);

    // AndroidStreamClient.cpp: the connection.
    void connect();
    void finish(std::optional<QString> error);
    AdbResult adb(const QStringList &arguments) const;
    QStringList serverArguments(const QString &scid, QSize display) const;
    void launchServer(const QString &scid, QSize display);
    void readServerOutput(const QByteArray &chunk);
    std::shared_ptr<StreamSocket> controlSocket() const;
    void onMain(std::function<void()> work) const;

    // VideoStream.cpp
    void readVideo(const std::shared_ptr<StreamSocket> &socket, std::chrono::nanoseconds startedAt);
    void takeSnapshot(const VideoSample &sample);
    void countFrame();

    // DeviceMessages.cpp
    void drainDeviceMessages();
    void androidClipboardChanged(const QString &text) const;

    // AudioStream.cpp
    void readAudio(const std::shared_ptr<StreamSocket> &socket);
    void levelCheck(std::span<const std::uint8_t> bytes);

    const Platform m_platform;
    const Config m_config;
    const std::shared_ptr<SampleRenderer> m_renderer;
    const std::shared_ptr<QuillnestLog> m_log;
    const bool m_forwardAudio;
    /// Session id, 1 to 0x7FFFFFFE.
    const std::uint32_t m_scid;

    /// Guards the fields up to the blank line; held only for short reads and writes.
    mutable std::mutex m_lock;
    std::shared_ptr<RunningChild> m_serverProcess;
    std::shared_ptr<LocalListener> m_listener;
    std::shared_ptr<StreamSocket> m_video;
    std::shared_ptr<StreamSocket> m_audio;
    std::shared_ptr<PCMAudioPlayer> m_audioPlayer;
    std::optional<std::uint64_t> m_playedBeforeStop;
    bool m_stopped = false;
    bool m_endReported = false;
    QSizeF m_videoSize{0, 0};
    std::uint64_t m_clipboardSequence = 1;
    std::optional<int> m_displayID;
    bool m_snapshotRequested = false;
    std::optional<double> m_firstFrameSeconds;

    const std::shared_ptr<ControlLink> m_control;
    const std::unique_ptr<SerialQueue> m_sendQueue;

    // The video thread's own, but for the counter that others read.
    std::atomic<std::uint64_t> m_framesDecoded{0};
    std::chrono::nanoseconds m_fpsWindowStart{};
    int m_fpsFrames = 0;

    // The audio thread's own.
    std::atomic<std::uint64_t> m_audioPackets{0};
    std::chrono::nanoseconds m_levelWindowStart{};
    int m_levelPeak = 0;
    int m_levelReports = 0;
};

} // namespace quillnest
