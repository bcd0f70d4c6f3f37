#pragma once

#include "base/QuillnestLog.h"
#include "platform/Platform.h"
#include "platform/StreamSocket.h"
#include "stream/NewestForMain.h"
#include "stream/SampleFeed.h"

#include <QImage>
#include <QSizeF>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace quillnest
{

/// A still picture on its way between threads.
class ImageBox
{
public:
    QImage image;
};

/// Reads the video socket: 64 bytes of device name, 4 bytes of codec id, then packets with a header of 12 bytes whose
/// first byte tells what the packet is. Pictures go to the renderer as they come, and copies of them to whoever is
/// attached to the feed. It owns nothing of the connection; it touches the renderer, the feed, the still decoder and
/// the log, and the main thread by messages only.
class VideoReader
{
public:
    /// Sizes that are announced faster than this replace each other before they are told.
    static constexpr std::chrono::milliseconds sizePause{200};

    /// `feed` outlives the reader.
    VideoReader(
        const Platform &platform, std::shared_ptr<SampleRenderer> renderer, std::shared_ptr<QuillnestLog> log,
        SampleFeed &feed);

    // Set before `read`; called on the main thread.
    std::function<void(QSizeF)> onVideoSize;
    /// After the first sample was queued.
    std::function<void()> onFirstFrame;
    std::function<void(ImageBox)> onSnapshot;

    /// Reads until the stream ends, and answers what was wrong with it, for the user, or nothing. Blocks; called once,
    /// on the video thread. The stream's start was asked for at `startedAt`.
    std::optional<QString> read(StreamSocket &socket, std::chrono::nanoseconds startedAt);

    // Any thread.

    /// The next key frame becomes a still.
    void requestSnapshot() { m_snapshotRequested = true; }
    /// In pixels; empty until it is announced.
    QSizeF videoSize() const;
    /// From the start to the first sample in the renderer's queue.
    std::optional<double> firstFrameSeconds() const;
    /// Samples that were put into the renderer's queue.
    std::uint64_t framesEnqueued() const { return m_framesEnqueued; }

private:
    void announce(QSizeF size);
    void takeSnapshot(const VideoSample &sample);
    void show(VideoSample sample);
    void countFrame();
    void noteFirstFrame(std::chrono::nanoseconds startedAt);

    const Platform m_platform;
    const std::shared_ptr<SampleRenderer> m_renderer;
    const std::shared_ptr<QuillnestLog> m_log;
    SampleFeed &m_feed;

    std::atomic_bool m_snapshotRequested = false;
    std::atomic<std::uint64_t> m_framesEnqueued{0};
    /// Guards the two below.
    mutable std::mutex m_lock;
    QSizeF m_videoSize{0, 0};
    std::optional<double> m_firstFrameSeconds;

    // The video thread's own.
    std::shared_ptr<NewestForMain<QSizeF>> m_sizes;
    std::chrono::nanoseconds m_fpsWindowStart{};
    int m_fpsFrames = 0;
};

} // namespace quillnest
