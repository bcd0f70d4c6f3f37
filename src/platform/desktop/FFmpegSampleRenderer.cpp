#include "platform/desktop/FFmpegSampleRenderer.h"

#include "platform/CurrentThread.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <cstring>

namespace quillnest
{

FFmpegSampleRenderer::FFmpegSampleRenderer() : m_packet(av_packet_alloc()), m_thread([this] { work(); }) { }

FFmpegSampleRenderer::~FFmpegSampleRenderer()
{
    {
        const std::scoped_lock guard(m_lock);
        m_ending = true;
    }
    m_wake.notify_one();
    m_thread.join();
}

bool FFmpegSampleRenderer::failed() const
{
    const std::scoped_lock guard(m_lock);
    return m_failed;
}

bool FFmpegSampleRenderer::requiresFlushToResumeDecoding() const
{
    // A decoder that fell behind or lost a picture resumes at the next key frame by itself.
    return false;
}

void FFmpegSampleRenderer::flush()
{
    const std::scoped_lock guard(m_lock);
    m_counters.dropped += m_queue.size();
    m_queue.clear();
    m_queuedBytes = 0;
    m_failed = false;
    m_needsKeyFrame = true;
}

void FFmpegSampleRenderer::enqueue(VideoSample sample)
{
    {
        const std::scoped_lock guard(m_lock);
        ++m_counters.received;
        if (m_queue.size() >= maximumQueuedSamples || m_queuedBytes + sample.data.size() > maximumQueuedBytes) {
            m_counters.dropped += m_queue.size();
            m_queue.clear();
            m_queuedBytes = 0;
            m_needsKeyFrame = true;
        }
        if (m_failed || (m_needsKeyFrame && !sample.keyFrame)) {
            ++m_counters.dropped;
            return;
        }
        m_needsKeyFrame = false;
        m_queuedBytes += sample.data.size();
        m_queue.push_back(std::move(sample));
    }
    m_wake.notify_one();
}

void FFmpegSampleRenderer::setFrameHandler(std::function<void()> handler)
{
    const std::scoped_lock guard(m_handlerLock);
    m_handler = std::move(handler);
}

std::shared_ptr<const VideoFrame> FFmpegSampleRenderer::latestFrame() const
{
    const std::scoped_lock guard(m_lock);
    return m_latest;
}

RendererCounters FFmpegSampleRenderer::counters() const
{
    const std::scoped_lock guard(m_lock);
    return m_counters;
}

void FFmpegSampleRenderer::work()
{
    nameCurrentThread("video decoder");
    std::unique_lock guard(m_lock);
    while (true) {
        m_wake.wait(guard, [this] { return m_ending || !m_queue.empty(); });
        if (m_ending)
            return;
        const auto sample = std::move(m_queue.front());
        m_queue.pop_front();
        m_queuedBytes -= sample.data.size();
        guard.unlock();
        decode(sample);
        guard.lock();
    }
}

void FFmpegSampleRenderer::decode(const VideoSample &sample)
{
    const auto lose = [this] {
        const std::scoped_lock guard(m_lock);
        ++m_counters.failed;
        m_needsKeyFrame = true;
    };
    if (!m_context || (sample.format != m_format && !(m_format && *sample.format == *m_format))) {
        m_context = ffmpeg::openDecoder(*sample.format);
        if (!m_context) {
            const std::scoped_lock guard(m_lock);
            ++m_counters.failed;
            m_failed = true;
            return;
        }
    }
    m_format = sample.format;
    // The packet's own memory has the padding that the decoder reads past the end.
    const auto size = static_cast<int>(sample.data.size());
    if (!m_packet || av_new_packet(m_packet.get(), size) < 0)
        return lose();
    std::memcpy(m_packet->data, sample.data.data(), sample.data.size());
    if (sample.keyFrame)
        m_packet->flags |= AV_PKT_FLAG_KEY;
    const int sent = avcodec_send_packet(m_context.get(), m_packet.get());
    av_packet_unref(m_packet.get());
    if (sent < 0)
        return lose();
    while (true) {
        ffmpeg::Frame frame(av_frame_alloc());
        if (!frame || avcodec_receive_frame(m_context.get(), frame.get()) < 0)
            return;
        if (!ffmpeg::DecodedFrame::isSupported(*frame))
            return lose();
        auto picture = std::make_shared<const ffmpeg::DecodedFrame>(std::move(frame), sample.arrival, m_previous.get());
        m_previous = picture;
        publish(std::move(picture));
    }
}

void FFmpegSampleRenderer::publish(std::shared_ptr<const VideoFrame> frame)
{
    {
        const std::scoped_lock guard(m_lock);
        ++m_counters.decoded;
        m_latest.swap(frame);
    }
    const std::scoped_lock guard(m_handlerLock);
    if (m_handler)
        m_handler();
}

} // namespace quillnest
