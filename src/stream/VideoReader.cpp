#include "stream/AndroidStreamClient.h"

#include "base/QuillnestSettings.h"
#include "stream/H264.h"

#include <array>

// The video socket: 64 bytes of device name, 4 bytes of codec id, then packets with a header of 12 bytes whose first
// byte tells what the packet is.

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

void AndroidStreamClient::readVideo(const std::shared_ptr<StreamSocket> &socket, std::chrono::nanoseconds startedAt)
{
    const auto deviceName = socket->readExactly(64);
    const auto codec = deviceName ? socket->readExactly(4) : std::nullopt;
    if (!codec)
        return finish(QStringLiteral("Video stream closed early"));
    if (readBE(*codec, 0) != h264Codec)
        return finish(QStringLiteral("Unsupported video codec 0x%1").arg(readBE(*codec, 0), 8, 16, QLatin1Char('0')));

    std::shared_ptr<const VideoFormat> format;
    std::vector<std::uint8_t> payload;
    bool isFirstFrame = true;
    while (true) {
        std::array<std::uint8_t, 12> header{};
        if (!socket->readExactly(header))
            return finish(std::nullopt);

        if (header[0] & sessionBit) {
            const QSizeF size(readBE(header, 4), readBE(header, 8));
            {
                const std::scoped_lock guard(m_lock);
                m_videoSize = size;
            }
            m_log->write(
                QStringLiteral("Quillnest: video session %1x%2").arg(readBE(header, 4)).arg(readBE(header, 8)));
            if (onVideoSize)
                onMain([callback = onVideoSize, size] { callback(size); });
            continue;
        }

        const auto size = readBE(header, 8);
        if (size == 0 || size > largestPayload)
            return finish(std::nullopt);
        payload.resize(size);
        if (!socket->readExactly(payload))
            return finish(std::nullopt);
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
        if (m_renderer->failed() || m_renderer->requiresFlushToResumeDecoding())
            m_renderer->flush();
        m_renderer->enqueue(std::move(*sample));
        countFrame();
        if (isFirstFrame) {
            const auto seconds = secondsBetween(startedAt, m_platform.clock->monotonic());
            m_log->write(QStringLiteral("Quillnest: first frame after %1s").arg(seconds, 0, 'f', 2));
            {
                const std::scoped_lock guard(m_lock);
                m_firstFrameSeconds = seconds;
            }
            if (onFirstFrame)
                onMain(onFirstFrame);
            isFirstFrame = false;
        }
    }
}

void AndroidStreamClient::takeSnapshot(const VideoSample &sample)
{
    {
        const std::scoped_lock guard(m_lock);
        if (!std::exchange(m_snapshotRequested, false))
            return;
    }
    const auto image = m_platform.video->stillDecoder()->decode(sample);
    if (!image.isNull() && onSnapshot)
        onMain([callback = onSnapshot, image] { callback(ImageBox{image}); });
}

void AndroidStreamClient::countFrame()
{
    ++m_framesDecoded;
    ++m_fpsFrames;
    const auto now = m_platform.clock->monotonic();
    const double elapsed = secondsBetween(m_fpsWindowStart, now);
    if (elapsed < 1.0)
        return;
    if (QuillnestSettings::flag(*m_platform.settings, QStringLiteral("QuillnestPrintFPS"), false))
        m_log->write(QStringLiteral("Quillnest: %1 fps").arg(m_fpsFrames / elapsed, 0, 'f', 0));
    m_fpsFrames = 0;
    m_fpsWindowStart = now;
}

} // namespace quillnest
