#pragma once

#include <QByteArray>
#include <QImage>
#include <memory>

struct AVCodecContext;
struct AVFrame;
struct AVPacket;

namespace test
{

/// Decodes an H.264 byte stream packet by packet, so that a test can look at what a client would show.
class PictureDecoder
{
public:
    PictureDecoder();
    ~PictureDecoder();

    /// Null while there is no picture yet, and for bytes that are none.
    QImage decode(const QByteArray &packet);

private:
    struct Deleter {
        void operator()(AVCodecContext *context) const;
        void operator()(AVFrame *frame) const;
        void operator()(AVPacket *packet) const;
    };

    std::unique_ptr<AVCodecContext, Deleter> m_context;
    std::unique_ptr<AVFrame, Deleter> m_frame;
    std::unique_ptr<AVPacket, Deleter> m_packet;
};

} // namespace test
