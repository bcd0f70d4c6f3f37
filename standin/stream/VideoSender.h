#pragma once

#include "device/Device.h"
#include "stream/H264Encoder.h"
#include "stream/Pacer.h"
#include "stream/ScreenRenderer.h"
#include "stream/SessionSocket.h"
#include "stream/StreamOptions.h"

#include <atomic>

namespace standin
{

/// Sends a display's picture as video until its socket ends or `stop` is called. `run` is one thread's; the rest may
/// be called from any. A socket that is not read as fast as we send costs frames: they are left out, not queued.
class VideoSender
{
public:
    VideoSender(Device &device, std::shared_ptr<Display> display, const StreamOptions &options, SessionSocket &socket);

    void run();
    void stop();
    void requestKeyFrame() { m_keyFrameWanted = true; }

    qint64 framesEncoded() const { return m_encoded; }
    qint64 framesSkipped() const { return m_skipped; }

private:
    bool sendPreamble();
    bool sendFrame();
    bool startSize(const ScreenModel &model);
    bool sendMedia(const H264Encoder::Packet &packet, qint64 time);
    bool waitForEnd();

    Device &m_device;
    const std::shared_ptr<Display> m_display;
    const StreamOptions m_options;
    SessionSocket &m_socket;
    Pacer m_pacer;
    ScreenRenderer m_renderer;
    std::unique_ptr<H264Encoder> m_encoder;
    QSize m_size;
    const Pacer::Clock::time_point m_startedAt = Pacer::Clock::now();
    std::atomic<bool> m_keyFrameWanted = false;
    std::atomic<qint64> m_encoded = 0;
    std::atomic<qint64> m_skipped = 0;
};

} // namespace standin
