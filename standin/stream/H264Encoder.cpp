#include "stream/H264Encoder.h"

#include <libyuv/convert.h>
#include <libyuv/convert_from_argb.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/opt.h>
}

namespace standin
{

void H264Encoder::Deleter::operator()(AVCodecContext *context) const
{
    avcodec_free_context(&context);
}

void H264Encoder::Deleter::operator()(AVFrame *frame) const
{
    av_frame_free(&frame);
}

void H264Encoder::Deleter::operator()(AVPacket *packet) const
{
    av_packet_free(&packet);
}

H264Encoder::H264Encoder(QSize size, int bitRate, int fps) : m_frame(av_frame_alloc()), m_packet(av_packet_alloc())
{
    av_log_set_level(AV_LOG_ERROR); // the encoder's statistics are not the emulator's output
    const AVCodec *codec = avcodec_find_encoder_by_name("libx264");
    if (codec == nullptr)
        return;
    m_context.reset(avcodec_alloc_context3(codec));
    m_context->width = size.width();
    m_context->height = size.height();
    m_context->pix_fmt = AV_PIX_FMT_YUV420P;
    m_context->time_base = {1, 1000000};
    m_context->framerate = {fps, 1};
    m_context->bit_rate = bitRate;
    m_context->rc_max_rate = bitRate;
    m_context->rc_buffer_size = bitRate;
    m_context->gop_size = fps * 10;
    m_context->max_b_frames = 0;
    m_context->thread_count = 1; // nine of these share the machine with the program under test
    m_context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER; // parameter sets go out on their own
    m_context->color_range = AVCOL_RANGE_MPEG;
    m_context->colorspace = AVCOL_SPC_SMPTE170M; // libyuv's conversion below
    m_context->color_primaries = AVCOL_PRI_SMPTE170M;
    m_context->color_trc = AVCOL_TRC_SMPTE170M;
    av_opt_set(m_context->priv_data, "preset", "ultrafast", 0);
    av_opt_set(m_context->priv_data, "tune", "zerolatency", 0);
    av_opt_set(m_context->priv_data, "forced-idr", "1", 0);
    av_opt_set(m_context->priv_data, "x264-params", "scenecut=0:sliced-threads=0", 0);
    m_frame->format = AV_PIX_FMT_YUV420P;
    m_frame->width = size.width();
    m_frame->height = size.height();
    m_isOpen = avcodec_open2(m_context.get(), codec, nullptr) == 0 && av_frame_get_buffer(m_frame.get(), 0) == 0;
}

H264Encoder::~H264Encoder() = default;

QByteArray H264Encoder::parameterSets() const
{
    // The encoder adds a message of its own with its settings; a device sends the two sets alone.
    const QByteArray all(reinterpret_cast<const char *>(m_context->extradata), m_context->extradata_size);
    QByteArray sets;
    const QByteArray start("\0\0\1", 3);
    for (auto at = all.indexOf(start); at >= 0;) {
        auto next = all.indexOf(start, at + 3);
        const auto end = next < 0 ? all.size() : (all[next - 1] == '\0' ? next - 1 : next);
        const int type = all.at(at + 3) & 0x1f;
        if (type == 7 || type == 8)
            sets += '\0' + all.mid(at, end - at);
        at = next;
    }
    return sets;
}

void H264Encoder::update(const QImage &picture, const QRect &changed)
{
    av_frame_make_writable(m_frame.get());
    // Chroma covers two by two pixels, so a changed part begins and ends on even ones.
    const QRect whole(0, 0, m_frame->width, m_frame->height);
    QRect part = changed.intersected(whole);
    part.setLeft(part.left() & ~1);
    part.setTop(part.top() & ~1);
    part.setRight(qMin(part.right() | 1, whole.right()));
    part.setBottom(qMin(part.bottom() | 1, whole.bottom()));
    if (part.isEmpty())
        return;
    const auto stride = static_cast<int>(picture.bytesPerLine());
    const uchar *source = picture.constScanLine(part.top()) + 4 * part.left();
    const auto plane = [&](int index, int shift) {
        return m_frame->data[index] + (part.top() >> shift) * m_frame->linesize[index] + (part.left() >> shift);
    };
    libyuv::ARGBToI420(
        source, stride, plane(0, 0), m_frame->linesize[0], plane(1, 1), m_frame->linesize[1], plane(2, 1),
        m_frame->linesize[2], part.width(), part.height());
}

std::optional<H264Encoder::Packet> H264Encoder::encode(qint64 microseconds, bool keyFrame)
{
    m_frame->pts = microseconds;
    m_frame->pict_type = keyFrame ? AV_PICTURE_TYPE_I : AV_PICTURE_TYPE_NONE;
    if (avcodec_send_frame(m_context.get(), m_frame.get()) != 0
        || avcodec_receive_packet(m_context.get(), m_packet.get()) != 0)
        return std::nullopt;
    Packet packet;
    packet.bytes = QByteArray(reinterpret_cast<const char *>(m_packet->data), m_packet->size);
    packet.isKeyFrame = (m_packet->flags & AV_PKT_FLAG_KEY) != 0;
    av_packet_unref(m_packet.get());
    return packet;
}

} // namespace standin
