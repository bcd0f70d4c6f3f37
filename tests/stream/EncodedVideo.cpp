#include "EncodedVideo.h"

#include <memory>
#include <stdexcept>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/opt.h>
}

namespace quillnest
{

namespace
{
struct Free {
    void operator()(AVCodecContext *context) const { avcodec_free_context(&context); }
    void operator()(AVFrame *frame) const { av_frame_free(&frame); }
    void operator()(AVPacket *packet) const { av_packet_free(&packet); }
};

void require(bool good, const char *what)
{
    if (!good)
        throw std::runtime_error(what);
}
} // namespace

EncodedVideo encodeRed(int width, int height, int count)
{
    const auto *codec = avcodec_find_encoder_by_name("libx264");
    require(codec, "no H.264 encoder");
    const std::unique_ptr<AVCodecContext, Free> context(avcodec_alloc_context3(codec));
    context->width = width;
    context->height = height;
    context->pix_fmt = AV_PIX_FMT_YUV420P;
    context->time_base = {1, 60};
    context->gop_size = count + 1;
    context->max_b_frames = 0;
    context->thread_count = 1;
    // The parameter sets come by themselves and not in front of each key frame, as a device's encoder has it.
    context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    av_opt_set(context->priv_data, "preset", "ultrafast", 0);
    av_opt_set(context->priv_data, "tune", "zerolatency", 0);
    av_opt_set(context->priv_data, "x264-params", "log=-1", 0);
    require(avcodec_open2(context.get(), codec, nullptr) == 0, "the encoder doesn't open");

    EncodedVideo video;
    video.parameterSets = QByteArray(reinterpret_cast<const char *>(context->extradata), context->extradata_size);
    const std::unique_ptr<AVFrame, Free> frame(av_frame_alloc());
    frame->format = AV_PIX_FMT_YUV420P;
    frame->width = width;
    frame->height = height;
    require(av_frame_get_buffer(frame.get(), 0) == 0, "no memory for a picture");
    const std::unique_ptr<AVPacket, Free> encoded(av_packet_alloc());
    for (int i = 0; i <= count; ++i) {
        if (i < count) {
            require(av_frame_make_writable(frame.get()) == 0, "no memory for a picture");
            const int values[3] = {81, 90, 240};
            for (int plane = 0; plane < 3; ++plane) {
                const int rows = plane == 0 ? height : height / 2;
                memset(frame->data[plane], values[plane], static_cast<size_t>(frame->linesize[plane]) * rows);
            }
            frame->pts = i;
        }
        require(avcodec_send_frame(context.get(), i < count ? frame.get() : nullptr) == 0, "the encoder fails");
        while (avcodec_receive_packet(context.get(), encoded.get()) == 0) {
            video.units.push_back(
                {QByteArray(reinterpret_cast<const char *>(encoded->data), encoded->size),
                 (encoded->flags & AV_PKT_FLAG_KEY) != 0});
            av_packet_unref(encoded.get());
        }
    }
    require(static_cast<int>(video.units.size()) == count, "the encoder kept pictures back");
    return video;
}

} // namespace quillnest
