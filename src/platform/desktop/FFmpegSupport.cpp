#include "platform/desktop/FFmpegSupport.h"

#include "platform/desktop/FrameDifference.h"

extern "C" {
#include <libavcodec/avcodec.h>
}
#include <libyuv.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace quillnest::ffmpeg
{

void Deleter::operator()(AVCodecContext *context) const
{
    avcodec_free_context(&context);
}

void Deleter::operator()(AVFrame *frame) const
{
    av_frame_free(&frame);
}

void Deleter::operator()(AVPacket *packet) const
{
    av_packet_free(&packet);
}

namespace
{

/// The parameter sets as an AVCDecoderConfigurationRecord (ISO/IEC 14496-15, 5.3.3.1), which is also what tells the
/// decoder that its samples carry lengths and not start codes.
std::vector<std::uint8_t> configurationRecord(const VideoFormat &format)
{
    std::vector<std::uint8_t> record{1, format.sps[1], format.sps[2], format.sps[3], 0xFF, 0xE1};
    const auto append = [&record](const std::vector<std::uint8_t> &unit) {
        record.push_back(static_cast<std::uint8_t>(unit.size() >> 8));
        record.push_back(static_cast<std::uint8_t>(unit.size()));
        record.insert(record.end(), unit.begin(), unit.end());
    };
    append(format.sps);
    record.push_back(1);
    append(format.pps);
    return record;
}

/// The matrix that the stream names. One that names none is taken as BT.601, which is what a software encoder on
/// Android writes at any size.
const libyuv::YuvConstants *matrix(const AVFrame &frame)
{
    const bool full = frame.color_range == AVCOL_RANGE_JPEG || frame.format == AV_PIX_FMT_YUVJ420P;
    switch (frame.colorspace) {
    case AVCOL_SPC_BT709:
        return full ? &libyuv::kYuvF709Constants : &libyuv::kYuvH709Constants;
    case AVCOL_SPC_BT2020_NCL:
        return full ? &libyuv::kYuvV2020Constants : &libyuv::kYuv2020Constants;
    default:
        return full ? &libyuv::kYuvJPEGConstants : &libyuv::kYuvI601Constants;
    }
}

/// How much of the blue difference libyuv leaves out: its factors end at 2, and two of the matrices go on.
double missingBlue(const AVFrame &frame)
{
    const auto *used = matrix(frame);
    if (used == &libyuv::kYuvH709Constants)
        return 255.0 / 224 * 2 * (1 - 0.0722) - 2;
    if (used == &libyuv::kYuv2020Constants)
        return 255.0 / 224 * 2 * (1 - 0.0593) - 2;
    return 0;
}

/// Adds what is missing to a converted picture, from the plane that it was converted from.
void addBlue(
    std::uint8_t *picture, std::ptrdiff_t stride, const std::uint8_t *u, std::ptrdiff_t uStride, QSize size,
    double missing)
{
    if (missing == 0)
        return;
    std::array<int, 256> more{};
    for (int value = 0; value < 256; ++value)
        more.at(static_cast<std::size_t>(value)) = static_cast<int>(std::lround(missing * (value - 128)));
    for (int y = 0; y < size.height(); ++y) {
        const auto *difference = u + (y / 2) * uStride;
        auto *blue = picture + y * stride;
        for (int x = 0; x < size.width(); ++x, blue += 4)
            *blue = static_cast<std::uint8_t>(std::clamp(*blue + more[difference[x / 2]], 0, 255));
    }
}

} // namespace

Context openDecoder(const VideoFormat &format)
{
    if (format.sps.size() < 4 || format.pps.empty() || format.sps.size() > 0xFFFF || format.pps.size() > 0xFFFF)
        return nullptr;
    const auto *codec = avcodec_find_decoder(AV_CODEC_ID_H264);
    Context context(codec ? avcodec_alloc_context3(codec) : nullptr);
    if (!context)
        return nullptr;
    const auto record = configurationRecord(format);
    context->extradata = static_cast<std::uint8_t *>(av_mallocz(record.size() + AV_INPUT_BUFFER_PADDING_SIZE));
    if (!context->extradata)
        return nullptr;
    std::memcpy(context->extradata, record.data(), record.size());
    context->extradata_size = static_cast<int>(record.size());
    context->thread_count = 1;
    context->flags |= AV_CODEC_FLAG_LOW_DELAY;
    // A parameter set may name a picture of gigabytes. No screen has more than these.
    context->max_pixels = std::int64_t{8192} * 8192;
    if (avcodec_open2(context.get(), codec, nullptr) < 0)
        return nullptr;
    return context;
}

DecodedFrame::DecodedFrame(Frame frame, std::chrono::nanoseconds arrival, const DecodedFrame *before)
    : m_frame(std::move(frame))
    , m_arrival(arrival)
    , m_sequence(before ? before->m_sequence + 1 : 1)
    , m_changedParts(
          before ? differingParts(*before->m_frame, *m_frame)
                 : std::vector<QRect>{QRect(0, 0, m_frame->width, m_frame->height)})
{
}

DecodedFrame::~DecodedFrame() = default;

bool DecodedFrame::isSupported(const AVFrame &frame)
{
    return frame.format == AV_PIX_FMT_YUV420P || frame.format == AV_PIX_FMT_YUVJ420P;
}

QSize DecodedFrame::size() const
{
    return {m_frame->width, m_frame->height};
}

void DecodedFrame::convertTo(std::uint8_t *destination, std::ptrdiff_t stride, QRect part) const
{
    const auto plane = [this, part](int index, int shift) {
        return m_frame->data[index] + std::ptrdiff_t{part.y() >> shift} * m_frame->linesize[index]
            + (part.x() >> shift);
    };
    libyuv::I420ToARGBMatrix(
        plane(0, 0), m_frame->linesize[0], plane(1, 1), m_frame->linesize[1], plane(2, 1), m_frame->linesize[2],
        destination, static_cast<int>(stride), matrix(*m_frame), part.width(), part.height());
    addBlue(destination, stride, plane(1, 1), m_frame->linesize[1], part.size(), missingBlue(*m_frame));
}

void DecodedFrame::scaleTo(std::uint8_t *destination, std::ptrdiff_t stride, QSize size) const
{
    // Scaling the planes before the conversion moves fewer bytes than scaling the converted picture.
    const int width = size.width();
    const int height = size.height();
    const int halfWidth = (width + 1) / 2;
    const int halfHeight = (height + 1) / 2;
    const auto lumaSize = static_cast<size_t>(width) * static_cast<size_t>(height);
    const auto chromaSize = static_cast<size_t>(halfWidth) * static_cast<size_t>(halfHeight);
    std::vector<std::uint8_t> planes(lumaSize + 2 * chromaSize);
    auto *luma = planes.data();
    auto *u = luma + lumaSize;
    auto *v = u + chromaSize;
    libyuv::I420Scale(
        m_frame->data[0], m_frame->linesize[0], m_frame->data[1], m_frame->linesize[1], m_frame->data[2],
        m_frame->linesize[2], m_frame->width, m_frame->height, luma, width, u, halfWidth, v, halfWidth, width, height,
        libyuv::kFilterBox);
    libyuv::I420ToARGBMatrix(
        luma, width, u, halfWidth, v, halfWidth, destination, static_cast<int>(stride), matrix(*m_frame), width,
        height);
    addBlue(destination, stride, u, halfWidth, size, missingBlue(*m_frame));
}

} // namespace quillnest::ffmpeg
