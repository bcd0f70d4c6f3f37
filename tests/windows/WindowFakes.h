#pragma once

#include "fakes/FakeSymbols.h"
#include "platform/SampleRenderer.h"
#include "platform/Symbols.h"

#include <QImage>
#include <QStringList>

#include <mutex>

namespace quillnest
{

/// A picture that a test has drawn. It keeps the parts that it is asked for, and counts the questions that a picture
/// needn't answer: parts that begin at an odd pixel or reach beyond it.
class FakeFrame : public VideoFrame
{
public:
    FakeFrame(
        const QImage &picture, std::uint64_t sequence, std::vector<QRect> changed, std::chrono::nanoseconds arrival)
        : m_picture(picture.convertToFormat(QImage::Format_RGB32))
        , m_sequence(sequence)
        , m_changed(std::move(changed))
        , m_arrival(arrival)
    {
    }

    QSize size() const override { return m_picture.size(); }
    std::chrono::nanoseconds arrival() const override { return m_arrival; }
    std::uint64_t sequence() const override { return m_sequence; }
    const std::vector<QRect> &changedParts() const override { return m_changed; }

    void convertTo(std::uint8_t *destination, std::ptrdiff_t stride, QRect part) const override
    {
        converted.push_back(part);
        if (part.x() % 2 != 0 || part.y() % 2 != 0 || !m_picture.rect().contains(part)) {
            ++wrongQuestions;
            return;
        }
        write(destination, stride, m_picture.copy(part));
    }

    void scaleTo(std::uint8_t *destination, std::ptrdiff_t stride, QSize size) const override
    {
        scaledTo.push_back(size);
        write(destination, stride, m_picture.scaled(size, Qt::IgnoreAspectRatio, Qt::FastTransformation));
    }

    mutable std::vector<QRect> converted;
    mutable std::vector<QSize> scaledTo;
    mutable int wrongQuestions = 0;

private:
    static void write(std::uint8_t *destination, std::ptrdiff_t stride, const QImage &image)
    {
        for (int row = 0; row < image.height(); ++row)
            std::memcpy(
                destination + row * stride, image.constScanLine(row), static_cast<std::size_t>(4 * image.width()));
    }

    const QImage m_picture;
    const std::uint64_t m_sequence;
    const std::vector<QRect> m_changed;
    const std::chrono::nanoseconds m_arrival;
};

/// Decodes nothing; its pictures come from the test.
class FakeRenderer : public SampleRenderer
{
public:
    bool failed() const override { return false; }
    bool requiresFlushToResumeDecoding() const override { return false; }
    void flush() override { }
    void enqueue(VideoSample) override { }
    void setFrameHandler(std::function<void()> handler) override
    {
        const std::scoped_lock guard(m_lock);
        m_handler = std::move(handler);
    }
    std::shared_ptr<const VideoFrame> latestFrame() const override
    {
        const std::scoped_lock guard(m_lock);
        return m_frame;
    }
    RendererCounters counters() const override { return {}; }

    bool hasHandler() const
    {
        const std::scoped_lock guard(m_lock);
        return static_cast<bool>(m_handler);
    }

    /// What the decoder's thread does: puts a picture into the slot and tells of it.
    void put(std::shared_ptr<const VideoFrame> frame)
    {
        std::function<void()> handler;
        {
            const std::scoped_lock guard(m_lock);
            m_frame = std::move(frame);
            handler = m_handler;
        }
        if (handler)
            handler();
    }

private:
    mutable std::mutex m_lock;
    std::shared_ptr<const VideoFrame> m_frame;
    std::function<void()> m_handler;
};

/// Makes a picture of 4 by 4 pixels of every sample.
class FakeStills : public StillDecoder
{
public:
    QImage decode(const VideoSample &) const override
    {
        QImage still(4, 4, QImage::Format_RGB32);
        still.fill(Qt::red);
        return still;
    }
};

/// Hands out renderers and remembers them.
class FakeVideo : public VideoDecoding
{
public:
    std::shared_ptr<SampleRenderer> sampleRenderer() override
    {
        renderers.push_back(std::make_shared<FakeRenderer>());
        return renderers.back();
    }
    std::shared_ptr<StillDecoder> stillDecoder() override { return std::make_shared<FakeStills>(); }
    bool accepts(const VideoFormat &) const override { return true; }

    std::vector<std::shared_ptr<FakeRenderer>> renderers;
};

} // namespace quillnest
