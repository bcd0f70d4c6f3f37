#include "benchmarks/RecordedStream.h"

#include "benchmarks/BusFreePlatform.h"
#include "benchmarks/ProcessorTime.h"
#include "platform/desktop/FFmpegSupport.h"
#include "stream/AndroidStreamClient.h"
#include "stream/BigEndian.h"

#include <QCoreApplication>

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <algorithm>
#include <cstring>
#include <mutex>

namespace quillnest::bench
{

namespace
{

/// Keeps what it is given.
class Recorder : public SampleRenderer
{
public:
    bool failed() const override { return false; }
    bool requiresFlushToResumeDecoding() const override { return false; }
    void flush() override { }
    void enqueue(VideoSample sample) override
    {
        const std::scoped_lock guard(m_lock);
        m_samples.push_back(std::move(sample));
    }
    void setFrameHandler(std::function<void()>) override { }
    std::shared_ptr<const VideoFrame> latestFrame() const override { return nullptr; }
    RendererCounters counters() const override { return {}; }

    std::size_t count() const
    {
        const std::scoped_lock guard(m_lock);
        return m_samples.size();
    }
    std::vector<VideoSample> take()
    {
        const std::scoped_lock guard(m_lock);
        return std::exchange(m_samples, {});
    }

private:
    mutable std::mutex m_lock;
    std::vector<VideoSample> m_samples;
};

} // namespace

RecordedStream RecordedStream::record(driver::ProgramUnderTest &program, const QString &package, QSize size, int frames)
{
    const auto platform = busFreePlatform();
    const auto recorder = std::make_shared<Recorder>();
    const auto log = std::make_shared<QuillnestLog>(
        platform.clock, program.desktop().home(), QStringLiteral("recording.log"), true);
    AndroidStreamClient::Config config;
    config.adb = program.dataFolder() + QStringLiteral("/Runtime/sdk/platform-tools/adb");
    config.serial = QStringLiteral("emulator-5556");
    config.server = platform.folders.bundle + QStringLiteral("/Contents/Resources/AndroidBridge/server/scrcpy-server");
    config.package = package;
    config.pixelSize = size;
    const auto client = AndroidStreamClient::create(platform, config, recorder, log);
    client->start();
    driver::waitFor(QStringLiteral("%1 recorded pictures").arg(frames), 60, [&recorder, frames] {
        QCoreApplication::processEvents();
        return recorder->count() >= static_cast<std::size_t>(frames);
    });
    client->stop();
    RecordedStream result;
    result.m_samples = recorder->take();
    result.m_samples.resize(static_cast<std::size_t>(frames));
    return result;
}

QByteArray RecordedStream::annexB() const
{
    QByteArray bytes;
    const auto append = [&bytes](const std::uint8_t *data, std::size_t size) {
        bytes.append("\0\0\0\1", 4);
        bytes.append(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    };
    for (const auto &sample : m_samples) {
        if (sample.keyFrame) {
            append(sample.format->sps.data(), sample.format->sps.size());
            append(sample.format->pps.data(), sample.format->pps.size());
        }
        for (std::size_t at = 0; at + 4 <= sample.data.size();) {
            const auto size = readBE(sample.data, at);
            append(sample.data.data() + at + 4, size);
            at += 4 + size;
        }
    }
    return bytes;
}

double RecordedStream::decodingFloor() const
{
    double least = 1e9;
    for (int pass = 0; pass < 3; ++pass) {
        const auto context = ffmpeg::openDecoder(*m_samples.front().format);
        const ffmpeg::Packet packet(av_packet_alloc());
        const ffmpeg::Frame frame(av_frame_alloc());
        const double before = threadMilliseconds();
        int decoded = 0;
        for (const auto &sample : m_samples) {
            av_new_packet(packet.get(), static_cast<int>(sample.data.size()));
            std::memcpy(packet->data, sample.data.data(), sample.data.size());
            avcodec_send_packet(context.get(), packet.get());
            av_packet_unref(packet.get());
            while (avcodec_receive_frame(context.get(), frame.get()) == 0)
                ++decoded;
        }
        if (decoded == 0)
            throw driver::DriverError(QStringLiteral("the recorded stream can't be decoded"));
        least = std::min(least, (threadMilliseconds() - before) / decoded);
    }
    return least;
}

} // namespace quillnest::bench
