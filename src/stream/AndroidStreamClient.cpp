#include "stream/AndroidStreamClient.h"

#include "base/BaseSettings.h"
#include "platform/DescribedError.h"
#include "stream/ScrcpyControl.h"

#include <QRandomGenerator>
#include <QRegularExpression>
#include <QStringDecoder>

#include <utility>

namespace quillnest
{

namespace
{
const auto devicePath = QStringLiteral("/data/local/tmp/scrcpy-server.jar");
const auto serverVersion = QStringLiteral("5.0.1");

/// The text, or nothing when the bytes aren't UTF-8 from the first to the last. A decoder that keeps its state would
/// wait for the rest of a character that is cut off at the end, and call the bytes good.
std::optional<QString> fromWholeUtf8(const QByteArray &bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder(bytes);
    return decoder.hasError() ? std::nullopt : std::optional(std::move(text));
}

/// What a tool has printed, as a part of a sentence: without the ends of its lines.
std::string inOneLine(const QString &output)
{
    return output.simplified().toStdString();
}
} // namespace

std::shared_ptr<AndroidStreamClient> AndroidStreamClient::create(
    const Platform &platform, Config config, std::shared_ptr<SampleRenderer> renderer,
    std::shared_ptr<QuillnestLog> log, std::shared_ptr<StreamThreads> threads)
{
    return std::shared_ptr<AndroidStreamClient>(
        new AndroidStreamClient(platform, std::move(config), std::move(renderer), std::move(log), std::move(threads)));
}

AndroidStreamClient::AndroidStreamClient(
    const Platform &platform, Config config, std::shared_ptr<SampleRenderer> renderer,
    std::shared_ptr<QuillnestLog> log, std::shared_ptr<StreamThreads> threads)
    : m_platform(platform)
    , m_config(std::move(config))
    , m_log(std::move(log))
    , m_threads(std::move(threads))
    , m_forwardAudio(BaseSettings::forwardAudio.value(*platform.settings))
    , m_scid(static_cast<std::uint32_t>(QRandomGenerator::system()->bounded(1, 0x7FFFFFFF)))
    , m_feed(platform.executor, m_log)
    , m_videoReader(platform, std::move(renderer), m_log, m_feed)
    , m_audioReader(platform, m_log, m_feed)
    , m_messageReader(platform, m_log)
    , m_control(platform.clock, *platform.executor)
{
}

AndroidStreamClient::~AndroidStreamClient()
{
    stop();
}

void AndroidStreamClient::start()
{
    m_threads->run([self = shared_from_this()] {
        try {
            self->connect();
        } catch (const std::exception &error) {
            const auto text = descriptionOf(error);
            self->m_log->write(QStringLiteral("Quillnest: stream start failed: %1").arg(text));
            self->finish(QStringLiteral("Could not connect to Android: %1").arg(text));
        }
    });
}

void AndroidStreamClient::connect()
{
    const auto startedAt = m_platform.clock->monotonic();
    const auto scid = QStringLiteral("%1").arg(m_scid, 8, 16, QLatin1Char('0'));
    const auto socketName = QStringLiteral("localabstract:scrcpy_%1").arg(scid);

    const auto push = adb({QStringLiteral("push"), m_config.server, devicePath});
    if (push.status != 0)
        throw SocketError::failed("push server: " + inOneLine(push.output));

    const auto listener = m_platform.sockets->listen();
    const auto reverse = adb({QStringLiteral("reverse"), socketName, QStringLiteral("tcp:%1").arg(listener->port())});
    if (reverse.status != 0)
        throw SocketError::failed("adb reverse: " + inOneLine(reverse.output));
    {
        const std::scoped_lock guard(m_lock);
        m_listener = listener;
    }

    launchServer(scid, displaySize(m_config.pixelSize));

    const auto sockets = takeSockets(*listener);
    adb({QStringLiteral("reverse"), QStringLiteral("--remove"), socketName});
    // A stop that came before the sockets were stored has closed none of them.
    if (sockets.cameTooLate) {
        stop();
        return;
    }
    m_log->write(QStringLiteral("Quillnest: sockets connected after %1s (port %2)")
                     .arg(secondsBetween(startedAt, m_platform.clock->monotonic()), 0, 'f', 2)
                     .arg(listener->port()));
    // Nothing else brings the app up on the virtual display.
    send(ScrcpyControl::startApp(QLatin1Char('+') + m_config.package));
    if (onConnected)
        m_platform.executor->onMain(onConnected);

    m_threads->run([self = shared_from_this()] {
        if (const auto socket = self->m_control.socket())
            self->m_messageReader.read(*socket);
    });
    if (sockets.audio)
        m_threads->run([self = shared_from_this(), audio = sockets.audio] { self->m_audioReader.read(*audio); });
    m_videoReader.onVideoSize = onVideoSize;
    m_videoReader.onFirstFrame = onFirstFrame;
    m_videoReader.onSnapshot = onSnapshot;
    finish(m_videoReader.read(*sockets.video, startedAt));
}

AndroidStreamClient::Sockets AndroidStreamClient::takeSockets(LocalListener &listener)
{
    Sockets sockets;
    sockets.video = listener.accept(m_config.timeouts.firstAccept);
    if (m_forwardAudio)
        sockets.audio = listener.accept(m_config.timeouts.nextAccept);
    m_control.connect(listener.accept(m_config.timeouts.nextAccept));
    const std::scoped_lock guard(m_lock);
    m_video = sockets.video;
    m_audio = sockets.audio;
    sockets.cameTooLate = m_stopped;
    return sockets;
}

QSize AndroidStreamClient::displaySize(QSizeF pixelSize)
{
    return {static_cast<int>(pixelSize.width()) & ~7, static_cast<int>(pixelSize.height()) & ~7};
}

QStringList AndroidStreamClient::serverArguments(const QString &scid, QSize display) const
{
    return {
        QStringLiteral("-s"),
        m_config.serial,
        QStringLiteral("shell"),
        QStringLiteral("CLASSPATH=") + devicePath,
        QStringLiteral("app_process"),
        QStringLiteral("/"),
        QStringLiteral("com.genymobile.scrcpy.Server"),
        serverVersion,
        QStringLiteral("scid=%1").arg(scid),
        QStringLiteral("log_level=info"),
        m_forwardAudio ? QStringLiteral("audio_codec=raw") : QStringLiteral("audio=false"),
        QStringLiteral("video_bit_rate=%1").arg(m_config.bitRate),
        QStringLiteral("max_fps=%1").arg(m_config.maxFPS),
        QStringLiteral("new_display=%1x%2/%3").arg(display.width()).arg(display.height()).arg(m_config.dpi),
        QStringLiteral("flex_display=true"),
        QStringLiteral("vd_system_decorations=false"),
        QStringLiteral("clipboard_autosync=true"),
        QStringLiteral("power_on=false"),
    };
}

void AndroidStreamClient::launchServer(const QString &scid, QSize display)
{
    ChildCommand command{.program = m_config.adb, .arguments = serverArguments(scid, display)};
    command.errors = ChildCommand::Errors::merged;
    ChildProcesses::Handlers handlers;
    handlers.onOutput = [weak = weak_from_this()](const QByteArray &chunk) {
        if (const auto self = weak.lock())
            self->readServerOutput(chunk);
    };
    handlers.onExit = [weak = weak_from_this()](int status) {
        if (const auto self = weak.lock()) {
            self->m_log->write(QStringLiteral("Quillnest: android server exited status=%1").arg(status));
            self->finish(std::nullopt);
        }
    };
    const auto process = m_platform.processes->start(command, std::move(handlers));
    bool stopped = false;
    {
        const std::scoped_lock guard(m_lock);
        m_serverProcess = process;
        stopped = m_stopped;
    }
    // A stop that came before the process was stored has ended nothing; without this it would go on until a time-out.
    if (stopped)
        stop();
}

void AndroidStreamClient::readServerOutput(const QByteArray &chunk)
{
    const auto decoded = fromWholeUtf8(chunk);
    if (!decoded)
        return;
    const auto &text = *decoded;
    m_log->write(text);
    static const QRegularExpression displayPattern(QStringLiteral("\\(id=\\d+\\)"));
    const auto match = displayPattern.match(text);
    if (!match.hasMatch())
        return;
    bool good = false;
    const int id = match.captured().mid(4).chopped(1).toInt(&good);
    if (good) {
        const std::scoped_lock guard(m_lock);
        m_displayID = id;
    }
}

AndroidStreamClient::AdbResult AndroidStreamClient::adb(const QStringList &arguments)
{
    ChildCommand command{
        .program = m_config.adb, .arguments = QStringList{QStringLiteral("-s"), m_config.serial} + arguments};
    command.errors = ChildCommand::Errors::merged;
    const auto result = m_platform.processes->runEndable(command, [this](const std::shared_ptr<RunningChild> &child) {
        const std::scoped_lock guard(m_lock);
        m_adb = child;
        // A stop that came before this has found nothing to end.
        if (m_stopped)
            child->terminate();
    });
    {
        const std::scoped_lock guard(m_lock);
        m_adb.reset();
    }
    if (result.launchError)
        return {-1, *result.launchError};
    return {result.status, fromWholeUtf8(result.output).value_or(QString())};
}

void AndroidStreamClient::finish(std::optional<QString> error)
{
    {
        const std::scoped_lock guard(m_lock);
        if (m_endReported)
            return;
        m_endReported = true;
    }
    stop();
    if (onEnded)
        m_platform.executor->onMain([callback = onEnded, error = std::move(error)] { callback(error); });
}

void AndroidStreamClient::stop()
{
    std::shared_ptr<StreamSocket> video;
    std::shared_ptr<StreamSocket> audio;
    std::shared_ptr<LocalListener> listener;
    std::shared_ptr<RunningChild> waitedFor;
    std::shared_ptr<RunningChild> server;
    {
        const std::scoped_lock guard(m_lock);
        m_stopped = true;
        video = std::exchange(m_video, nullptr);
        audio = std::exchange(m_audio, nullptr);
        listener = std::exchange(m_listener, nullptr);
        waitedFor = m_adb;
        server = m_serverProcess;
    }
    if (video)
        video->shutDown();
    m_control.disconnect();
    if (audio)
        audio->shutDown();
    m_audioReader.stop();
    m_feed.end();
    if (listener)
        listener->wake();
    // A device that is stuck lets adb wait for ever.
    if (waitedFor)
        waitedFor->terminate();
    if (server && server->isRunning())
        server->terminate();
}

void AndroidStreamClient::send(const QByteArray &message, std::optional<std::chrono::nanoseconds> since)
{
    m_control.send(message, since);
}

std::optional<int> AndroidStreamClient::displayID() const
{
    const std::scoped_lock guard(m_lock);
    return m_displayID;
}

StreamStatistics AndroidStreamClient::statistics() const
{
    const auto control = m_control.counters();
    return {
        .framesEnqueued = m_videoReader.framesEnqueued(),
        .audioFramesPlayed = m_audioReader.framesPlayed(),
        .audioPackets = m_audioReader.packets(),
        .controlWaiting = control.waiting,
        .controlDropped = control.dropped,
        .controlLatency = control.latency,
        .firstFrameSeconds = m_videoReader.firstFrameSeconds(),
    };
}

} // namespace quillnest
