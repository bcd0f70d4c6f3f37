#pragma once

#include "platform/SampleRenderer.h"
#include "platform/desktop/FFmpegSupport.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace quillnest
{

/// Decodes on a thread of its own. The queue in front of it holds at most `maximumQueuedSamples` samples and
/// `maximumQueuedBytes` bytes; past that everything queued is dropped up to the next key frame.
class FFmpegSampleRenderer : public SampleRenderer
{
public:
    static constexpr std::size_t maximumQueuedSamples = 120;
    static constexpr std::size_t maximumQueuedBytes = 32U << 20;

    FFmpegSampleRenderer();
    ~FFmpegSampleRenderer() override;

    bool failed() const override;
    bool requiresFlushToResumeDecoding() const override;
    void flush() override;
    void enqueue(VideoSample sample) override;
    void setFrameHandler(std::function<void()> handler) override;
    std::shared_ptr<const VideoFrame> latestFrame() const override;
    RendererCounters counters() const override;

private:
    void work();
    void decode(const VideoSample &sample);
    void publish(std::shared_ptr<const VideoFrame> frame);

    mutable std::mutex m_lock;
    std::condition_variable m_wake;
    std::deque<VideoSample> m_queue;
    std::size_t m_queuedBytes = 0;
    bool m_ending = false;
    bool m_failed = false;
    /// Nothing but a key frame can be decoded next: at the start, after a flush and after a loss.
    bool m_needsKeyFrame = true;
    std::shared_ptr<const VideoFrame> m_latest;
    RendererCounters m_counters;

    /// Held while the handler runs, so that clearing it waits for a call under way.
    std::mutex m_handlerLock;
    std::function<void()> m_handler;

    // The decoder's thread alone.
    ffmpeg::Context m_context;
    std::shared_ptr<const VideoFormat> m_format;
    std::shared_ptr<const ffmpeg::DecodedFrame> m_previous;
    ffmpeg::Packet m_packet;

    std::thread m_thread;
};

} // namespace quillnest
