#pragma once

#include "device/Device.h"
#include "stream/Pacer.h"
#include "stream/SessionSocket.h"

#include <atomic>

namespace standin
{

/// Sends an app's sound as raw PCM in real time: a sine tone while an app is on the display, silence otherwise. `run`
/// is one thread's.
class AudioSender
{
public:
    static constexpr int sampleRate = 48000;

    AudioSender(Device &device, std::shared_ptr<Display> display, SessionSocket &socket);

    void run();
    void stop() { m_pacer.stop(); }
    qint64 framesSent() const { return m_framesSent; }

    /// The tone of a package in hertz: one of the twelve half-tones from 440 Hz up. 440 for no package.
    static double toneOf(const QString &package);

private:
    QByteArray nextSamples();

    Device &m_device;
    const std::shared_ptr<Display> m_display;
    SessionSocket &m_socket;
    Pacer m_pacer;
    double m_phase = 0;
    std::atomic<qint64> m_framesSent = 0;
};

} // namespace standin
