#include "stream/AndroidStreamClient.h"

#include <array>
#include <cstdlib>

// The audio socket: 4 bytes of codec id, then packets with a header of 12 bytes and PCM at 48000 Hz, two channels
// interleaved, signed 16-bit little-endian.

namespace quillnest
{

namespace
{
constexpr std::uint32_t rawCodec = 0x00726177;
constexpr std::uint32_t largestPacket = 0xFFFFF;
constexpr std::uint8_t configBit = 0x40;
constexpr int mostLevelReports = 20;
} // namespace

void AndroidStreamClient::readAudio(const std::shared_ptr<StreamSocket> &socket)
{
    const auto codec = socket->readExactly(4);
    if (!codec)
        return;
    if (readBE(*codec, 0) != rawCodec) {
        m_log->write(QStringLiteral("Quillnest: audio forwarding unavailable (codec 0x%1)")
                         .arg(readBE(*codec, 0), 8, 16, QLatin1Char('0')));
        return;
    }
    const auto player = std::make_shared<PCMAudioPlayer>(m_platform.audio->engine());
    {
        const std::scoped_lock guard(m_lock);
        if (m_stopped)
            return;
        m_audioPlayer = player;
    }
    m_log->write(QStringLiteral("Quillnest: audio forwarding on (48 kHz stereo PCM)"));

    std::vector<std::uint8_t> payload;
    while (true) {
        std::array<std::uint8_t, 12> header{};
        if (!socket->readExactly(header))
            break;
        const auto size = readBE(header, 8);
        if (size == 0 || size > largestPacket)
            break;
        payload.resize(size);
        if (!socket->readExactly(payload))
            break;
        if (header[0] & configBit)
            continue;
        ++m_audioPackets;
        player->play(payload);
        levelCheck(payload);
    }
    player->stop();
}

void AndroidStreamClient::levelCheck(std::span<const std::uint8_t> bytes)
{
    if (m_levelReports >= mostLevelReports)
        return;
    // Every sixteenth left sample is enough to tell silence from sound.
    for (std::size_t at = 0; at + 2 <= bytes.size(); at += 64) {
        const auto sample = static_cast<std::int16_t>(bytes[at] | bytes[at + 1] << 8);
        m_levelPeak = std::max(m_levelPeak, std::abs(static_cast<int>(sample)));
    }
    const auto now = m_platform.clock->monotonic();
    if (secondsBetween(m_levelWindowStart, now) < 3.0)
        return;
    m_log->write(QStringLiteral("Quillnest: audio peak %1").arg(m_levelPeak));
    m_levelPeak = 0;
    ++m_levelReports;
    m_levelWindowStart = now;
}

} // namespace quillnest
