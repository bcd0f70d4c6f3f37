#pragma once

#include "platform/VideoSample.h"

#include <QImage>
#include <QRect>
#include <QSize>

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace quillnest
{

/// A decoded picture that can be painted. Immutable; any thread.
class VideoFrame
{
public:
    virtual ~VideoFrame() = default;
    virtual QSize size() const = 0;
    virtual std::chrono::nanoseconds arrival() const = 0;

    /// Counts the pictures of one stream from 1.
    virtual std::uint64_t sequence() const = 0;

    /// The parts in which the picture may differ from the one before it in the stream; none when nothing changed.
    /// Their sides are even numbers but at the picture's own edges. Most of an app's screen stands still most of the
    /// time, and what has not changed needs neither conversion nor the way to the screen.
    virtual const std::vector<QRect> &changedParts() const = 0;

    /// Writes a part of the picture as 32-bit BGRA (QImage::Format_RGB32), unscaled, to where its first pixel belongs;
    /// rows are `stride` bytes apart. The part's left and top are even. This is the only conversion of a picture, so
    /// callers give the memory that is shown.
    virtual void convertTo(std::uint8_t *destination, std::ptrdiff_t stride, QRect part) const = 0;

    /// The picture scaled to `size` pixels with a smooth filter, in the same layout.
    virtual void scaleTo(std::uint8_t *destination, std::ptrdiff_t stride, QSize size) const = 0;

    QImage toImage() const;
};

/// What happened to the samples so far.
struct RendererCounters {
    std::uint64_t received = 0;
    std::uint64_t decoded = 0;
    /// Samples dropped because the decoder was behind or waited for a key frame.
    std::uint64_t dropped = 0;
    std::uint64_t failed = 0;
};

/// Takes compressed samples and keeps the newest decoded picture ready. There is no clock and no reordering: a sample
/// is decoded when it comes, on a thread of the renderer's own, and replaces the picture before it.
class SampleRenderer
{
public:
    virtual ~SampleRenderer() = default;

    /// The decoder has failed and needs `flush` before it takes anything again. Any thread.
    virtual bool failed() const = 0;
    virtual bool requiresFlushToResumeDecoding() const = 0;

    /// Drops what is queued; decoding resumes with the next key frame. Any thread.
    virtual void flush() = 0;

    /// Takes a sample and returns at once. Memory stays bounded: a decoder that is too far behind drops the queue and
    /// waits for a key frame. Any one thread.
    virtual void enqueue(VideoSample sample) = 0;

    /// Called on the decoder's thread when a new picture is ready. Set before the first sample, or cleared on the main
    /// thread, after which it isn't called again.
    virtual void setFrameHandler(std::function<void()> handler) = 0;

    /// The newest picture, if any. Any thread.
    virtual std::shared_ptr<const VideoFrame> latestFrame() const = 0;

    virtual RendererCounters counters() const = 0;
};

/// Decodes single pictures.
class StillDecoder
{
public:
    virtual ~StillDecoder() = default;
    /// A null image when the sample can't be decoded. Any thread; blocks for the decoding.
    virtual QImage decode(const VideoSample &keyFrame) const = 0;
};

/// Makes the two above.
class VideoDecoding
{
public:
    virtual ~VideoDecoding() = default;
    virtual std::shared_ptr<SampleRenderer> sampleRenderer() = 0;
    virtual std::shared_ptr<StillDecoder> stillDecoder() = 0;
    /// Whether parameter sets describe a stream that can be decoded here.
    virtual bool accepts(const VideoFormat &format) const = 0;
};

} // namespace quillnest
