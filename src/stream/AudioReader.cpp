#include "stream/AudioReader.h"

#include "stream/BigEndian.h"

#include <array>
#include <cstdlib>
#include <utility>

namespace quillnest
{

namespace
{
constexpr std::uint32_t rawCodec = 0x00726177;
constexpr std::uint32_t largestPacket = 0xFFFFF;
constexpr std::uint8_t configBit = 0x40;
constexpr int mostLevelReports = 20;
} // namespace

AudioReader::AudioReader(const Platform &platform, std::shared_ptr<QuillnestLog> log, SampleFeed &feed)
    : m_platform(platform), m_log(std::move(log)), m_feed(feed)
{
}

void AudioReader::read(StreamSocket &socket)
{
    const auto codec = socket.readExactly(4);
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
        m_player = player;
    }
    m_log->write(QStringLiteral("Quillnest: audio forwarding on (48 kHz stereo PCM)"));

    std::vector<std::uint8_t> payload;
    while (true) {
        std::array<std::uint8_t, 12> header{};
        if (!socket.readExactly(header))
            break;
        const auto size = readBE(header, 8);
        if (size == 0 || size > largestPacket)
            break;
        payload.resize(size);
        if (!socket.readExactly(payload))
            break;
        if (header[0] & configBit)
            continue;
        const auto arrival = m_platform.clock->monotonic();
        ++m_packets;
        player->play(payload);
        m_framesPlayed = player->framesPlayed();
        m_feed.takeAudio(payload, arrival);
        levelCheck(payload);
    }
    player->stop();
}

void AudioReader::stop()
{
    std::shared_ptr<PCMAudioPlayer> player;
    {
        const std::scoped_lock guard(m_lock);
        m_stopped = true;
        player = std::exchange(m_player, nullptr);
    }
    if (player)
        m_platform.executor->inBackground([player] { player->stop(); });
}

void AudioReader::levelCheck(std::span<const std::uint8_t> bytes)
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
