#include "platform/desktop/FFmpegStillDecoder.h"

#include "platform/desktop/FFmpegSampleRenderer.h"
#include "platform/desktop/FFmpegSupport.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <cstring>

namespace quillnest
{

QImage FFmpegStillDecoder::decode(const VideoSample &keyFrame) const
{
    const auto context = keyFrame.format ? ffmpeg::openDecoder(*keyFrame.format) : nullptr;
    const ffmpeg::Packet packet(av_packet_alloc());
    ffmpeg::Frame frame(av_frame_alloc());
    if (!context || !packet || !frame || av_new_packet(packet.get(), static_cast<int>(keyFrame.data.size())) < 0)
        return {};
    std::memcpy(packet->data, keyFrame.data.data(), keyFrame.data.size());
    packet->flags |= AV_PKT_FLAG_KEY;
    if (avcodec_send_packet(context.get(), packet.get()) < 0)
        return {};
    avcodec_send_packet(context.get(), nullptr);
    if (avcodec_receive_frame(context.get(), frame.get()) < 0 || !ffmpeg::DecodedFrame::isSupported(*frame))
        return {};
    return ffmpeg::DecodedFrame(std::move(frame), {}, nullptr).toImage();
}

std::shared_ptr<SampleRenderer> FFmpegVideoDecoding::sampleRenderer()
{
    return std::make_shared<FFmpegSampleRenderer>();
}

std::shared_ptr<StillDecoder> FFmpegVideoDecoding::stillDecoder()
{
    return std::make_shared<FFmpegStillDecoder>();
}

bool FFmpegVideoDecoding::accepts(const VideoFormat &format) const
{
    return ffmpeg::openDecoder(format) != nullptr;
}

} // namespace quillnest
