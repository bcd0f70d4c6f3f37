#include "stream/AndroidStreamClient.h"

#include "base/QuillnestSettings.h"
#include "stream/ScrcpyControl.h"

#include <QRandomGenerator>
#include <QRegularExpression>
#include <QStringDecoder>

#include <thread>

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
} // namespace

std::shared_ptr<AndroidStreamClient> AndroidStreamClient::create(
    const Platform &platform, Config config, std::shared_ptr<SampleRenderer> renderer,
    std::shared_ptr<QuillnestLog> log)
{
    return std::shared_ptr<AndroidStreamClient>(
        new AndroidStreamClient(platform, std::move(config), std::move(renderer), std::move(log)));
}

AndroidStreamClient::AndroidStreamClient(
    const Platform &platform, Config config, std::shared_ptr<SampleRenderer> renderer,
    std::shared_ptr<QuillnestLog> log)
    : m_platform(platform)
    , m_config(std::move(config))
    , m_renderer(std::move(renderer))
    , m_log(std::move(log))
    , m_forwardAudio(QuillnestSettings::flag(*platform.settings, QStringLiteral("QuillnestForwardAudio"), true))
    , m_scid(static_cast<std::uint32_t>(QRandomGenerator::system()->bounded(1, 0x7FFFFFFF)))
    , m_control(std::make_shared<ControlLink>())
    , m_sendQueue(platform.executor->serialQueue("quillnest.android.control"))
{
}

AndroidStreamClient::~AndroidStreamClient()
{
    stop();
}

void AndroidStreamClient::start()
{
    std::thread([self = shared_from_this()] {
        try {
            self->connect();
        } catch (const std::exception &error) {
            const auto text = QString::fromUtf8(error.what());
            self->m_log->write(QStringLiteral("Quillnest: stream start failed: %1").arg(text));
            self->finish(QStringLiteral("Could not connect to Android: %1").arg(text));
        }
    }).detach();
}

void AndroidStreamClient::connect()
{
    const auto startedAt = m_platform.clock->monotonic();
    const auto scid = QStringLiteral("%1").arg(m_scid, 8, 16, QLatin1Char('0'));
    const auto socketName = QStringLiteral("localabstract:scrcpy_%1").arg(scid);

    const auto push = adb({QStringLiteral("push"), m_config.server, devicePath});
    if (push.status != 0)
        throw SocketError::failed("push server: " + push.output.toStdString());

    const auto listener = std::make_shared<LocalListener>();
    const auto reverse = adb({QStringLiteral("reverse"), socketName, QStringLiteral("tcp:%1").arg(listener->port())});
    if (reverse.status != 0)
        throw SocketError::failed("adb reverse: " + reverse.output.toStdString());
    {
        const std::scoped_lock guard(m_lock);
        m_listener = listener;
    }

    launchServer(scid, displaySize(m_config.pixelSize));

    const auto video = listener->accept(m_config.timeouts.firstAccept);
    const auto audio = m_forwardAudio ? listener->accept(m_config.timeouts.nextAccept) : nullptr;
    const auto control = listener->accept(m_config.timeouts.nextAccept);
    {
        const std::scoped_lock guard(m_control->lock);
        m_control->socket = control;
    }
    bool stopped = false;
    {
        const std::scoped_lock guard(m_lock);
        m_video = video;
        m_audio = audio;
        stopped = m_stopped;
    }

    adb({QStringLiteral("reverse"), QStringLiteral("--remove"), socketName});
    // A stop that came before the sockets were stored has closed none of them.
    if (stopped) {
        stop();
        return;
    }

    m_log->write(QStringLiteral("Quillnest: sockets connected after %1s (port %2)")
                     .arg(secondsBetween(startedAt, m_platform.clock->monotonic()), 0, 'f', 2)
                     .arg(listener->port()));
    // Nothing else brings the app up on the virtual display.
    send(ScrcpyControl::startApp(QLatin1Char('+') + m_config.package));

    std::thread([self = shared_from_this()] { self->drainDeviceMessages(); }).detach();
    if (audio)
        std::thread([self = shared_from_this(), audio] { self->readAudio(audio); }).detach();
    readVideo(video, startedAt);
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
    command.errors = ChildCommand::Errors::Merged;
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

AndroidStreamClient::AdbResult AndroidStreamClient::adb(const QStringList &arguments) const
{
    ChildCommand command{
        .program = m_config.adb, .arguments = QStringList{QStringLiteral("-s"), m_config.serial} + arguments};
    command.errors = ChildCommand::Errors::Merged;
    const auto result = m_platform.processes->run(command);
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
        onMain([callback = onEnded, error = std::move(error)] { callback(error); });
}

void AndroidStreamClient::stop()
{
    std::shared_ptr<StreamSocket> video;
    std::shared_ptr<StreamSocket> control;
    std::shared_ptr<StreamSocket> audio;
    std::shared_ptr<LocalListener> listener;
    std::shared_ptr<RunningChild> server;
    std::shared_ptr<PCMAudioPlayer> player;
    {
        const std::scoped_lock guard(m_lock);
        m_stopped = true;
        video = std::exchange(m_video, nullptr);
        audio = std::exchange(m_audio, nullptr);
        listener = std::exchange(m_listener, nullptr);
        server = m_serverProcess;
        player = std::exchange(m_audioPlayer, nullptr);
    }
    {
        const std::scoped_lock guard(m_control->lock);
        control = std::exchange(m_control->socket, nullptr);
    }
    for (const auto &socket : {video, control, audio}) {
        if (socket)
            socket->shutDown();
    }
    if (listener)
        listener->wake();
    if (player) {
        const auto played = player->framesPlayed();
        {
            const std::scoped_lock guard(m_lock);
            m_playedBeforeStop = played;
        }
        m_platform.executor->inBackground([player] { player->stop(); });
    }
    if (server && server->isRunning())
        server->terminate();
}

void AndroidStreamClient::send(const QByteArray &message, std::optional<std::chrono::nanoseconds> since)
{
    if (!m_control->queue.push(message, since.value_or(m_platform.clock->monotonic())))
        return;
    // A thread that has to be woken gets a processor when the decoder leaves one, which a finger would feel; so the
    // message goes out here, and only what would have to wait for the device goes out there.
    if (!m_control->empty(*m_platform.clock, ControlLink::Wait::No))
        m_sendQueue->post(
            [control = m_control, clock = m_platform.clock] { control->empty(*clock, ControlLink::Wait::Yes); });
}

bool AndroidStreamClient::ControlLink::empty(const Clock &clock, Wait wait)
{
    while (true) {
        if (!underWay) {
            // With nothing left the queue is anybody's to empty, and what is under way with it.
            auto message = queue.next();
            if (!message)
                return true;
            underWay = std::move(message);
        }
        std::shared_ptr<StreamSocket> current;
        {
            const std::scoped_lock guard(lock);
            current = socket;
        }
        if (current && !writeUnderWay(*current, wait))
            return false;
        const auto since = underWay->since;
        underWay.reset();
        if (!current)
            continue;
        const std::scoped_lock guard(lock);
        latency.add(clock.monotonic() - since);
    }
}

bool AndroidStreamClient::ControlLink::writeUnderWay(StreamSocket &to, Wait wait)
{
    const std::span bytes(
        reinterpret_cast<const std::uint8_t *>(underWay->bytes.constData()),
        static_cast<std::size_t>(underWay->bytes.size()));
    if (wait == Wait::Yes) {
        to.writeAll(bytes);
        return true;
    }
    const auto written = to.writeAtOnce(bytes);
    // After an error nothing more goes out, so the rest is as good as written.
    if (!written || *written == bytes.size())
        return true;
    underWay->bytes.remove(0, static_cast<qsizetype>(*written));
    return false;
}

std::shared_ptr<StreamSocket> AndroidStreamClient::controlSocket() const
{
    const std::scoped_lock guard(m_control->lock);
    return m_control->socket;
}

std::uint64_t AndroidStreamClient::nextClipboardSequence()
{
    const std::scoped_lock guard(m_lock);
    return ++m_clipboardSequence;
}

void AndroidStreamClient::requestSnapshot()
{
    const std::scoped_lock guard(m_lock);
    m_snapshotRequested = true;
}

QSizeF AndroidStreamClient::videoSize() const
{
    const std::scoped_lock guard(m_lock);
    return m_videoSize;
}

std::optional<int> AndroidStreamClient::displayID() const
{
    const std::scoped_lock guard(m_lock);
    return m_displayID;
}

StreamStatistics AndroidStreamClient::statistics() const
{
    StreamStatistics result;
    std::shared_ptr<PCMAudioPlayer> player;
    {
        const std::scoped_lock guard(m_lock);
        result.firstFrameSeconds = m_firstFrameSeconds;
        result.audioFramesPlayed = m_playedBeforeStop.value_or(0);
        player = m_audioPlayer;
    }
    if (player)
        result.audioFramesPlayed = player->framesPlayed();
    result.framesEnqueued = m_framesDecoded;
    result.audioPackets = m_audioPackets;
    result.controlWaiting = m_control->queue.size();
    result.controlDropped = m_control->queue.dropped();
    {
        const std::scoped_lock guard(m_control->lock);
        result.controlLatency = m_control->latency;
    }
    return result;
}

void AndroidStreamClient::onMain(std::function<void()> work) const
{
    m_platform.executor->onMain(std::move(work));
}

} // namespace quillnest
