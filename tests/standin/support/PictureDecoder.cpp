#include "support/PictureDecoder.h"

#include <cstring>
#include <libyuv/convert_argb.h>

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace test
{

void PictureDecoder::Deleter::operator()(AVCodecContext *context) const
{
    avcodec_free_context(&context);
}

void PictureDecoder::Deleter::operator()(AVFrame *frame) const
{
    av_frame_free(&frame);
}

void PictureDecoder::Deleter::operator()(AVPacket *packet) const
{
    av_packet_free(&packet);
}

PictureDecoder::PictureDecoder() : m_frame(av_frame_alloc()), m_packet(av_packet_alloc())
{
    const AVCodec *codec = avcodec_find_decoder(AV_CODEC_ID_H264);
    m_context.reset(avcodec_alloc_context3(codec));
    m_context->flags |= AV_CODEC_FLAG_LOW_DELAY;
    m_context->thread_count = 1;
    avcodec_open2(m_context.get(), codec, nullptr);
}

PictureDecoder::~PictureDecoder() = default;

QImage PictureDecoder::decode(const QByteArray &packet)
{
    av_new_packet(m_packet.get(), static_cast<int>(packet.size()));
    std::memcpy(m_packet->data, packet.constData(), static_cast<size_t>(packet.size()));
    const bool sent = avcodec_send_packet(m_context.get(), m_packet.get()) == 0;
    av_packet_unref(m_packet.get());
    if (!sent || avcodec_receive_frame(m_context.get(), m_frame.get()) != 0)
        return {};
    QImage picture(m_frame->width, m_frame->height, QImage::Format_RGB32);
    libyuv::I420ToARGB(
        m_frame->data[0], m_frame->linesize[0], m_frame->data[1], m_frame->linesize[1], m_frame->data[2],
        m_frame->linesize[2], picture.bits(), static_cast<int>(picture.bytesPerLine()), picture.width(),
        picture.height());
    return picture;
}

} // namespace test
