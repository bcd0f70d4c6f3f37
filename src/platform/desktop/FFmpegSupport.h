#pragma once

#include "platform/SampleRenderer.h"

#include <QImage>

#include <memory>

struct AVCodecContext;
struct AVFrame;
struct AVPacket;

namespace quillnest::ffmpeg
{

struct Deleter {
    void operator()(AVCodecContext *context) const;
    void operator()(AVFrame *frame) const;
    void operator()(AVPacket *packet) const;
};
using Context = std::unique_ptr<AVCodecContext, Deleter>;
using Frame = std::unique_ptr<AVFrame, Deleter>;
using Packet = std::unique_ptr<AVPacket, Deleter>;

/// An H.264 decoder for samples with 4-byte lengths that gives each picture back at once; null if there is none for
/// these parameter sets. One thread: frame threads would hold pictures back.
Context openDecoder(const VideoFormat &format);

/// A decoded 4:2:0 picture. Keeps the decoder's own memory; nothing is copied until `convertTo`.
class DecodedFrame : public VideoFrame
{
public:
    /// `frame` must be a planar 4:2:0 picture of 8 bits.
    /// `before` is the picture before it in the stream, if there is one.
    DecodedFrame(Frame frame, std::chrono::nanoseconds arrival, const DecodedFrame *before);
    ~DecodedFrame() override;

    static bool isSupported(const AVFrame &frame);

    QSize size() const override;
    std::chrono::nanoseconds arrival() const override { return m_arrival; }
    std::uint64_t sequence() const override { return m_sequence; }
    const std::vector<QRect> &changedParts() const override { return m_changedParts; }
    void convertTo(std::uint8_t *destination, std::ptrdiff_t stride, QRect part) const override;
    void scaleTo(std::uint8_t *destination, std::ptrdiff_t stride, QSize size) const override;

private:
    Frame m_frame;
    std::chrono::nanoseconds m_arrival;
    std::uint64_t m_sequence = 1;
    std::vector<QRect> m_changedParts;
};

} // namespace quillnest::ffmpeg
