#include "stream/AudioSender.h"

#include "common/StableHash.h"
#include "stream/PacketHeader.h"

#include <cmath>
#include <numbers>

namespace standin
{

using namespace Qt::StringLiterals;

namespace
{

constexpr quint32 rawCodec = 0x00726177; // "raw"
constexpr quint32 opusCodec = 0x6f707573;
constexpr int framesPerPacket = AudioSender::sampleRate / 50;
constexpr double loudest = 0.25; // of full scale, at the highest volume: pleasant, and far from clipping

} // namespace

AudioSender::AudioSender(Device &device, std::shared_ptr<Display> display, SessionSocket &socket)
    : m_device(device), m_display(std::move(display)), m_socket(socket), m_pacer(std::chrono::milliseconds(20))
{
}

void AudioSender::run()
{
    const bool isWrong = m_device.faults.has(u"wrong-audio-codec"_s);
    if (!m_socket.write(bigEndian32(isWrong ? opusCodec : rawCodec)))
        return;
    while (m_pacer.wait() >= 0) {
        const QByteArray samples = nextSamples();
        const auto time = static_cast<quint64>(m_framesSent) * 1000000 / sampleRate;
        if (!m_socket.write(packetHeader(time, static_cast<quint32>(samples.size())) + samples))
            return;
        m_framesSent += framesPerPacket;
    }
}

double AudioSender::toneOf(const QString &package)
{
    return package.isEmpty() ? 440 : 440 * std::pow(2.0, static_cast<double>(stableHash(package) % 12) / 12);
}

QByteArray AudioSender::nextSamples()
{
    const ScreenModel model = m_display->model();
    const double volume = static_cast<double>(m_device.settings.volume(3)) / SettingsStore::maximumVolume(3);
    const double peak = model.app ? 32767 * loudest * volume : 0;
    const double step = 2 * std::numbers::pi * toneOf(model.app ? model.app->package : QString()) / sampleRate;
    QByteArray samples(framesPerPacket * 4, Qt::Uninitialized);
    for (int i = 0; i < framesPerPacket; ++i) {
        const auto sample = static_cast<qint16>(std::lround(peak * std::sin(m_phase)));
        m_phase = std::fmod(m_phase + step, 2 * std::numbers::pi);
        qToLittleEndian(sample, samples.data() + 4 * i);
        qToLittleEndian(sample, samples.data() + 4 * i + 2);
    }
    return samples;
}

} // namespace standin
