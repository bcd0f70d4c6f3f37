#pragma once

#include "support/PictureDecoder.h"
#include "support/StandinDevice.h"

#include <QSize>
#include <QTcpServer>
#include <QTcpSocket>

namespace test
{

/// The client's side of one stream session, small and without threads: what has arrived is read when a test asks.
class StreamClient
{
public:
    explicit StreamClient(StandinDevice &device);
    ~StreamClient();

    bool wantAudio = true;
    QString version = QStringLiteral("5.0.1");

    /// Push, tunnel and server start; then waits for the sockets. False when one does not come within the deadline.
    bool connect(const QString &display = QStringLiteral("776x1448/320"), int seconds = 10);
    void startApp(const QString &package);
    void send(const QByteArray &message);

    void key(int action, quint32 code);
    void text(const QByteArray &text);
    void touch(int action, QPoint at, QSize frame);
    void setClipboard(const QByteArray &text, bool paste, quint64 sequence);

    /// What the video socket brought next.
    struct VideoPacket {
        enum Kind { Session, Config, Media } kind;
        QSize size; ///< of a session packet
        bool isKeyFrame = false;
        QByteArray payload;
        quint32 declaredSize = 0;
    };
    std::optional<VideoPacket> nextVideo();
    /// Decodes until the picture passes; the last picture seen either way.
    QImage pictureWhere(const std::function<bool(const QImage &)> &passes, int seconds = 10);
    std::optional<QByteArray> readAudio(qsizetype size) { return read(m_audio, size); }
    std::optional<QByteArray> readControl(qsizetype size) { return read(m_control, size); }
    std::optional<QByteArray> readVideo(qsizetype size) { return read(m_video, size); }
    /// The next PCM payload behind its header.
    std::optional<QByteArray> nextAudio();
    /// The next device message of the type, as its body; other messages are passed over.
    std::optional<QByteArray> nextMessage(int type);
    static bool waitForClose(QTcpSocket &socket, int seconds = 10);
    QTcpSocket &videoSocket() { return *m_video; }
    QTcpSocket &audioSocket() { return *m_audio; }
    QTcpSocket &controlSocket() { return *m_control; }

    QProcess &server() { return m_server; }
    QByteArray serverOutput();
    QSize videoSize() const { return m_videoSize; }
    const QByteArray &deviceName() const { return m_deviceName; }
    quint32 videoCodec() const { return m_videoCodec; }
    quint32 audioCodec() const { return m_audioCodec; }
    /// Reads the greetings of video and audio; `connect` leaves them on the sockets.
    bool readGreetings();

private:
    std::optional<QByteArray> read(QTcpSocket *socket, qsizetype size) const;

    StandinDevice &m_device;
    QTcpServer m_listener;
    QProcess m_server;
    QByteArray m_output;
    QTcpSocket *m_video = nullptr;
    QTcpSocket *m_audio = nullptr;
    QTcpSocket *m_control = nullptr;
    PictureDecoder m_decoder;
    QByteArray m_deviceName;
    QSize m_videoSize;
    quint32 m_videoCodec = 0;
    quint32 m_audioCodec = 0;
};

} // namespace test
