#include "support/StreamClient.h"

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QtEndian>

namespace test
{

using namespace Qt::StringLiterals;

namespace
{

template <typename T> QByteArray big(T value)
{
    QByteArray bytes(sizeof(T), Qt::Uninitialized);
    qToBigEndian(value, bytes.data());
    return bytes;
}

quint32 word(const QByteArray &bytes, qsizetype at)
{
    return qFromBigEndian<quint32>(bytes.constData() + at);
}

} // namespace

StreamClient::StreamClient(StandinDevice &device) : m_device(device) { }

StreamClient::~StreamClient()
{
    m_server.kill();
    m_server.waitForFinished();
}

bool StreamClient::connect(const QString &display, int seconds)
{
    const QString scid
        = QString::number(1 + QRandomGenerator::system()->bounded(0x7ffffffd), 16).rightJustified(8, u'0');
    const QString socket = u"localabstract:scrcpy_"_s + scid;
    const QString jar = u"/data/local/tmp/scrcpy-server.jar"_s;
    m_listener.listen(QHostAddress::LocalHost);
    if (m_device.adb({u"push"_s, QStringLiteral(STREAM_SERVER), jar}).status != 0
        || m_device.adb({u"reverse"_s, socket, u"tcp:%1"_s.arg(m_listener.serverPort())}).status != 0)
        return false;
    m_server.setProcessEnvironment(m_device.environment);
    m_server.setProcessChannelMode(QProcess::MergedChannels);
    m_server.start(
        m_device.adbProgram(),
        {u"-s"_s, m_device.serial(), u"shell"_s, u"CLASSPATH="_s + jar, u"app_process"_s, u"/"_s,
         u"com.genymobile.scrcpy.Server"_s, version, u"scid="_s + scid, u"log_level=info"_s,
         wantAudio ? u"audio_codec=raw"_s : u"audio=false"_s, u"video_bit_rate=8000000"_s, u"max_fps=60"_s,
         u"new_display="_s + display, u"flex_display=true"_s, u"vd_system_decorations=false"_s,
         u"clipboard_autosync=true"_s, u"power_on=false"_s});
    m_server.waitForStarted();
    const auto accept = [&](QTcpSocket *&into) {
        if (!m_listener.hasPendingConnections() && !m_listener.waitForNewConnection(seconds * 1000))
            return false;
        into = m_listener.nextPendingConnection();
        return true;
    };
    const bool connected = accept(m_video) && (!wantAudio || accept(m_audio)) && accept(m_control);
    m_device.adb({u"reverse"_s, u"--remove"_s, socket});
    return connected;
}

bool StreamClient::readGreetings()
{
    const std::optional<QByteArray> name = readVideo(64);
    const std::optional<QByteArray> codec = readVideo(4);
    const std::optional<QByteArray> sound = wantAudio ? readAudio(4) : big(quint32(0));
    if (!name || !codec || !sound)
        return false;
    m_deviceName = *name;
    m_videoCodec = word(*codec, 0);
    m_audioCodec = word(*sound, 0);
    return true;
}

void StreamClient::startApp(const QString &package)
{
    const QByteArray name = '+' + package.toUtf8();
    send(big(quint8(16)) + big(static_cast<quint8>(name.size())) + name);
}

void StreamClient::send(const QByteArray &message)
{
    m_control->write(message);
    m_control->flush();
}

void StreamClient::key(int action, quint32 code)
{
    send(big(quint8(0)) + big(static_cast<quint8>(action)) + big(code) + big(quint32(0)) + big(quint32(0)));
}

void StreamClient::text(const QByteArray &text)
{
    send(big(quint8(1)) + big(static_cast<quint32>(text.size())) + text);
}

void StreamClient::touch(int action, QPoint at, QSize frame)
{
    send(
        big(quint8(2)) + big(static_cast<quint8>(action)) + big(quint64(0xfffffffffffffffe)) + big(qint32(at.x()))
        + big(qint32(at.y())) + big(static_cast<quint16>(frame.width())) + big(static_cast<quint16>(frame.height()))
        + big(quint16(action == 1 ? 0 : 0xffff)) + big(quint32(0)) + big(quint32(0)));
}

void StreamClient::setClipboard(const QByteArray &text, bool paste, quint64 sequence)
{
    send(big(quint8(9)) + big(sequence) + big(quint8(paste ? 1 : 0)) + big(static_cast<quint32>(text.size())) + text);
}

std::optional<StreamClient::VideoPacket> StreamClient::nextVideo()
{
    const std::optional<QByteArray> header = readVideo(12);
    if (!header)
        return std::nullopt;
    const auto flags = static_cast<uchar>(header->at(0));
    if ((flags & 0x80) != 0) {
        m_videoSize = QSize(static_cast<int>(word(*header, 4)), static_cast<int>(word(*header, 8)));
        return VideoPacket{VideoPacket::Session, m_videoSize, false, {}, 0};
    }
    VideoPacket packet{
        (flags & 0x40) != 0 ? VideoPacket::Config : VideoPacket::Media, {}, (flags & 0x20) != 0, {}, word(*header, 8)};
    if (packet.declaredSize > 0x1ffffff)
        return packet;
    const std::optional<QByteArray> payload = readVideo(static_cast<qsizetype>(packet.declaredSize));
    if (!payload)
        return std::nullopt;
    packet.payload = *payload;
    return packet;
}

QImage StreamClient::pictureWhere(const std::function<bool(const QImage &)> &passes, int seconds)
{
    QImage picture;
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < seconds * 1000) {
        const std::optional<VideoPacket> packet = nextVideo();
        if (!packet)
            break;
        if (packet->kind == VideoPacket::Session)
            continue;
        if (const QImage decoded = m_decoder.decode(packet->payload); !decoded.isNull()) {
            picture = decoded;
            if (passes(picture))
                return picture;
        }
    }
    return picture;
}

std::optional<QByteArray> StreamClient::nextAudio()
{
    const std::optional<QByteArray> header = readAudio(12);
    return header ? readAudio(static_cast<qsizetype>(word(*header, 8))) : std::nullopt;
}

std::optional<QByteArray> StreamClient::nextMessage(int type)
{
    for (;;) {
        const std::optional<QByteArray> head = readControl(1);
        if (!head)
            return std::nullopt;
        std::optional<QByteArray> body;
        if (head->at(0) == 0) {
            const std::optional<QByteArray> length = readControl(4);
            body = length ? readControl(static_cast<qsizetype>(word(*length, 0))) : std::nullopt;
        } else if (head->at(0) == 1) {
            body = readControl(8);
        }
        if (!body || head->at(0) == type)
            return body;
    }
}

bool StreamClient::waitForClose(QTcpSocket &socket, int seconds)
{
    QElapsedTimer timer;
    timer.start();
    while (socket.state() == QAbstractSocket::ConnectedState && timer.elapsed() < seconds * 1000) {
        socket.readAll();
        socket.waitForReadyRead(100);
    }
    return socket.state() != QAbstractSocket::ConnectedState;
}

QByteArray StreamClient::serverOutput()
{
    m_server.waitForReadyRead(0);
    m_output += m_server.readAll();
    return m_output;
}

std::optional<QByteArray> StreamClient::read(QTcpSocket *socket, qsizetype size) const
{
    QElapsedTimer timer;
    timer.start();
    while (socket->bytesAvailable() < size) {
        if (timer.elapsed() > 10000)
            return std::nullopt;
        if (!socket->waitForReadyRead(1000) && socket->state() != QAbstractSocket::ConnectedState
            && socket->bytesAvailable() < size)
            return std::nullopt;
    }
    return socket->read(size);
}

} // namespace test
