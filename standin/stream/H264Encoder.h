#pragma once

#include <QByteArray>
#include <QImage>
#include <QRect>
#include <QSize>
#include <memory>
#include <optional>

struct AVCodecContext;
struct AVFrame;
struct AVPacket;

namespace standin
{

/// Encodes pictures of one size as an H.264 byte stream with start codes, one packet for one picture, without
/// delay. Belongs to one thread.
class H264Encoder
{
public:
    struct Packet {
        QByteArray bytes;
        bool isKeyFrame = false;
    };

    H264Encoder(QSize size, int bitRate, int fps);
    ~H264Encoder();
    H264Encoder(const H264Encoder &) = delete;
    H264Encoder &operator=(const H264Encoder &) = delete;

    bool isValid() const { return m_isOpen; }
    /// The sequence and picture parameter sets, with start codes.
    QByteArray parameterSets() const;
    /// Takes the changed parts of the picture over into the encoder's own. The picture is RGB32.
    void update(const QImage &picture, const QRect &changed);
    std::optional<Packet> encode(qint64 microseconds, bool keyFrame);

private:
    struct Deleter {
        void operator()(AVCodecContext *context) const;
        void operator()(AVFrame *frame) const;
        void operator()(AVPacket *packet) const;
    };

    std::unique_ptr<AVCodecContext, Deleter> m_context;
    std::unique_ptr<AVFrame, Deleter> m_frame;
    std::unique_ptr<AVPacket, Deleter> m_packet;
    bool m_isOpen = false;
};

} // namespace standin
