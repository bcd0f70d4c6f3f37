#pragma once

#include "base/QuillnestLog.h"
#include "platform/Platform.h"
#include "platform/StreamSocket.h"
#include "stream/PCMAudioPlayer.h"
#include "stream/SampleFeed.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <span>

namespace quillnest
{

/// Reads the audio socket: 4 bytes of codec id, then packets with a header of 12 bytes and PCM at 48000 Hz, two
/// channels interleaved, signed 16-bit little-endian. Plays it, with a player of its own, and hands copies to whoever
/// is attached to the feed. Nothing that happens to the sound ends the stream.
class AudioReader
{
public:
    /// `feed` outlives the reader.
    AudioReader(const Platform &platform, std::shared_ptr<QuillnestLog> log, SampleFeed &feed);

    /// Reads until the sound ends. Blocks; called once, on the audio thread.
    void read(StreamSocket &socket);

    // Any thread.

    /// Ends the player for good and returns at once, however long the sound server takes. The socket is its owner's to
    /// shut down.
    void stop();
    std::uint64_t packets() const { return m_packets; }
    /// As of the last packet: whoever asks must not wait for the sound server.
    std::uint64_t framesPlayed() const { return m_framesPlayed; }

private:
    void levelCheck(std::span<const std::uint8_t> bytes);

    const Platform m_platform;
    const std::shared_ptr<QuillnestLog> m_log;
    SampleFeed &m_feed;

    std::atomic<std::uint64_t> m_packets{0};
    std::atomic<std::uint64_t> m_framesPlayed{0};
    /// Guards the two below.
    std::mutex m_lock;
    std::shared_ptr<PCMAudioPlayer> m_player;
    bool m_stopped = false;

    // The audio thread's own.
    std::chrono::nanoseconds m_levelWindowStart{};
    int m_levelPeak = 0;
    int m_levelReports = 0;
};

} // namespace quillnest
