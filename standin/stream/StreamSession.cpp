#include "stream/StreamSession.h"

namespace standin
{

using namespace Qt::StringLiterals;

StreamSession::StreamSession(Device &device, CommandIo &io, StreamOptions options, Connect connect)
    : m_device(device)
    , m_io(io)
    , m_options(std::move(options))
    , m_connect(std::move(connect))
    , m_display(device.displays.create(
          QSize(m_options.displaySize.width() & ~7, m_options.displaySize.height() & ~7), m_options.dpi))
{
}

StreamSession::~StreamSession()
{
    if (m_video)
        m_video->stop();
    if (m_audio)
        m_audio->stop();
    if (m_messages)
        m_messages->stop();
    if (m_clipboardListener != 0)
        m_device.clipboard.removeListener(m_clipboardListener);
    for (const auto *socket : {&m_videoSocket, &m_audioSocket, &m_controlSocket}) {
        if (*socket)
            (*socket)->close();
    }
    for (std::thread &thread : m_threads)
        thread.join();
    m_device.displays.remove(m_display->id());
}

int StreamSession::run()
{
    const QString model = m_device.property(u"ro.product.model"_s);
    m_io.out(u"[server] INFO: Device: [Google] google %1 (Android %2)\n"_s.arg(
        model, m_device.property(u"ro.build.version.release"_s)));
    const QSize size = m_display->model().size;
    m_io.out(u"[server] INFO: New display: %1x%2/%3 (id=%4)\n"_s.arg(size.width())
                 .arg(size.height())
                 .arg(m_options.dpi)
                 .arg(m_display->id()));
    if (m_device.faults.has(u"never-connect"_s)) {
        m_io.waitForTool();
        return 0;
    }
    if (const auto seconds = m_device.faults.number(u"connect-late"_s))
        std::this_thread::sleep_for(std::chrono::seconds(*seconds));
    if (!connectSockets()) {
        m_io.error(u"[server] ERROR: java.io.IOException: Connection refused: localabstract:%1\n"_s.arg(
            QString::fromLatin1(m_options.socketName())));
        return 1;
    }
    startThreads();
    m_io.waitForTool();
    return 0;
}

void StreamSession::end()
{
    m_io.end();
}

void StreamSession::endByItself()
{
    if (!m_device.faults.has(u"server-outlives-its-sockets"_s))
        end();
}

bool StreamSession::connectSockets()
{
    const auto open = [this](std::unique_ptr<SessionSocket> &socket, const QString &closeFault) {
        std::shared_ptr<AdbStream> stream = m_connect(m_options.socketName());
        if (!stream)
            return false;
        const std::lock_guard lock(m_mutex);
        socket = std::make_unique<SessionSocket>(std::move(stream));
        socket->closeAfter(m_device.faults.number(closeFault));
        return true;
    };
    return open(m_videoSocket, u"close-video-after"_s)
        && (!m_options.audio || open(m_audioSocket, u"close-audio-after"_s)) && open(m_controlSocket, {});
}

void StreamSession::startThreads()
{
    const std::lock_guard lock(m_mutex);
    m_messages = std::make_shared<DeviceMessages>(*m_controlSocket);
    m_video = std::make_unique<VideoSender>(m_device, m_display, m_options, *m_videoSocket);
    const bool autosync = m_options.clipboardAutosync;
    m_clipboardListener = m_device.clipboard.addListener([messages = m_messages, autosync](const QString &text) {
        if (autosync)
            messages->sendClipboard(text);
    });
    m_threads.emplace_back([this] { m_messages->run(); });
    m_threads.emplace_back([this] {
        m_video->run();
        endByItself();
    });
    if (m_audioSocket) {
        m_audio = std::make_unique<AudioSender>(m_device, m_display, *m_audioSocket);
        m_threads.emplace_back([this] {
            m_audio->run();
            m_audioSocket->close(); // the picture goes on without sound
        });
    }
    m_threads.emplace_back([this] {
        ControlReader reader(
            {m_device, m_display, m_options, *m_controlSocket, *m_messages, *m_video, m_clipboardListener,
             [this](const QString &line) { m_io.out(line); }});
        // A control socket lost on purpose is to show how a client lives without it.
        if (reader.run() != ControlReader::End::fault)
            endByItself();
    });
}

QJsonObject StreamSession::toJson() const
{
    const std::lock_guard lock(m_mutex);
    const ScreenModel model = m_display->model();
    const auto sent = [](const std::unique_ptr<SessionSocket> &socket) { return socket ? socket->bytesSent() : 0; };
    return {
        {u"scid"_s, QString::number(m_options.scid, 16).rightJustified(8, u'0')},
        {u"package"_s, model.app ? model.app->package : QString()},
        {u"displayId"_s, model.displayId},
        {u"width"_s, model.size.width()},
        {u"height"_s, model.size.height()},
        {u"dpi"_s, model.dpi},
        {u"audio"_s, m_options.audio},
        {u"framesEncoded"_s, m_video ? m_video->framesEncoded() : 0},
        {u"framesSkipped"_s, m_video ? m_video->framesSkipped() : 0},
        {u"bytesSent"_s, sent(m_videoSocket) + sent(m_audioSocket) + sent(m_controlSocket)},
        {u"videoBytesSent"_s, sent(m_videoSocket)},
        {u"audioFramesSent"_s, m_audio ? m_audio->framesSent() : 0},
        {u"tone"_s, AudioSender::toneOf(model.app ? model.app->package : QString())},
        {u"text"_s, model.text},
    };
}

} // namespace standin
