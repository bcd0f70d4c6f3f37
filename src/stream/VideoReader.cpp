#include "stream/VideoReader.h"

#include "stream/BigEndian.h"
#include "stream/H264.h"
#include "stream/StreamSettings.h"

#include <array>
#include <utility>

namespace quillnest
{

namespace
{

constexpr std::uint32_t h264Codec = 0x68323634;
constexpr std::uint32_t largestPayload = 0x1FFFFFF;
constexpr std::uint8_t sessionBit = 0x80;
constexpr std::uint8_t configBit = 0x40;
constexpr std::uint8_t keyFrameBit = 0x20;

std::optional<H264::Unit> firstOfType(const std::vector<H264::Unit> &units, std::uint8_t type)
{
    for (const auto unit : units) {
        if (!unit.empty() && H264::type(unit) == type)
            return unit;
    }
    return std::nullopt;
}

} // namespace

VideoReader::VideoReader(
    const Platform &platform, std::shared_ptr<SampleRenderer> renderer, std::shared_ptr<QuillnestLog> log,
    SampleFeed &feed)
    : m_platform(platform), m_renderer(std::move(renderer)), m_log(std::move(log)), m_feed(feed)
{
}

std::optional<QString> VideoReader::read(StreamSocket &socket, std::chrono::nanoseconds startedAt)
{
    auto tell = [log = m_log, callback = onVideoSize](QSizeF size) {
        log->write(QStringLiteral("Quillnest: video session %1x%2")
                       .arg(size.width(), 0, 'f', 0)
                       .arg(size.height(), 0, 'f', 0));
        if (callback)
            callback(size);
    };
    m_sizes = std::make_shared<NewestForMain<QSizeF>>(m_platform, sizePause, std::move(tell));
    const auto deviceName = socket.readExactly(64);
    const auto codec = deviceName ? socket.readExactly(4) : std::nullopt;
    if (!codec)
        return QStringLiteral("Video stream closed early");
    if (readBE(*codec, 0) != h264Codec)
        return QStringLiteral("Unsupported video codec 0x%1").arg(readBE(*codec, 0), 8, 16, QLatin1Char('0'));

    std::shared_ptr<const VideoFormat> format;
    std::vector<std::uint8_t> payload;
    while (true) {
        std::array<std::uint8_t, 12> header{};
        if (!socket.readExactly(header))
            return std::nullopt;
        if (header[0] & sessionBit) {
            announce(QSizeF(readBE(header, 4), readBE(header, 8)));
            continue;
        }

        const auto size = readBE(header, 8);
        if (size == 0 || size > largestPayload)
            return std::nullopt;
        payload.resize(size);
        if (!socket.readExactly(payload))
            return std::nullopt;
        const auto arrival = m_platform.clock->monotonic();

        const auto units = H264::nalUnits(payload);
        const auto sps = firstOfType(units, H264::sequenceParameterSet);
        const auto pps = firstOfType(units, H264::pictureParameterSet);
        if (sps && pps)
            format = H264::format(*m_platform.video, *sps, *pps);
        if (header[0] & configBit)
            continue;
        if (!format)
            continue;
        auto sample = H264::sampleBuffer(units, format);
        if (!sample)
            continue;
        sample->keyFrame = header[0] & keyFrameBit;
        sample->arrival = arrival;

        if (sample->keyFrame)
            takeSnapshot(*sample);
        m_feed.takeVideo(*sample);
        show(std::move(*sample));
        if (m_framesEnqueued == 1)
            noteFirstFrame(startedAt);
    }
}

void VideoReader::announce(QSizeF size)
{
    {
        const std::scoped_lock guard(m_lock);
        // The same again is no news, and twelve bytes are sent quickly.
        if (m_videoSize == size)
            return;
        m_videoSize = size;
    }
    m_sizes->put(size);
}

void VideoReader::takeSnapshot(const VideoSample &sample)
{
    if (!m_snapshotRequested.exchange(false))
        return;
    const auto image = m_platform.video->stillDecoder()->decode(sample);
    if (!image.isNull() && onSnapshot)
        m_platform.executor->onMain([callback = onSnapshot, image] { callback(ImageBox{image}); });
}

void VideoReader::show(VideoSample sample)
{
    if (m_renderer->failed() || m_renderer->requiresFlushToResumeDecoding())
        m_renderer->flush();
    m_renderer->enqueue(std::move(sample));
    countFrame();
}

void VideoReader::countFrame()
{
    ++m_framesEnqueued;
    ++m_fpsFrames;
    const auto now = m_platform.clock->monotonic();
    const double elapsed = secondsBetween(m_fpsWindowStart, now);
    if (elapsed < 1.0)
        return;
    if (StreamSettings::printFPS.value(*m_platform.settings))
        m_log->write(QStringLiteral("Quillnest: %1 fps").arg(m_fpsFrames / elapsed, 0, 'f', 0));
    m_fpsFrames = 0;
    m_fpsWindowStart = now;
}

void VideoReader::noteFirstFrame(std::chrono::nanoseconds startedAt)
{
    const auto seconds = secondsBetween(startedAt, m_platform.clock->monotonic());
    m_log->write(QStringLiteral("Quillnest: first frame after %1s").arg(seconds, 0, 'f', 2));
    {
        const std::scoped_lock guard(m_lock);
        m_firstFrameSeconds = seconds;
    }
    if (onFirstFrame)
        m_platform.executor->onMain(onFirstFrame);
}

QSizeF VideoReader::videoSize() const
{
    const std::scoped_lock guard(m_lock);
    return m_videoSize;
}

std::optional<double> VideoReader::firstFrameSeconds() const
{
    const std::scoped_lock guard(m_lock);
    return m_firstFrameSeconds;
}

} // namespace quillnest
