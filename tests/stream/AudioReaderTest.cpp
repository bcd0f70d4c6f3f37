#include "ConnectedSocket.h"
#include "StreamTest.h"

using namespace quillnest;

namespace
{
/// A packet of so many frames, all of one sample.
QByteArray frames(int count, std::int16_t sample = 0)
{
    QByteArray bytes;
    for (int i = 0; i < 2 * count; ++i) {
        bytes.append(static_cast<char>(sample & 0xFF));
        bytes.append(static_cast<char>(sample >> 8 & 0xFF));
    }
    return bytes;
}

class AudioReaderTest : public StreamTest
{
protected:
    std::shared_ptr<FakeAudioEngine> engine() const { return audio->engines().front(); }
    bool scheduled(std::size_t count)
    {
        return comesTrue([&] { return engine()->buffers().size() == count; });
    }
    qsizetype levelLines() const { return logLines().filter(QStringLiteral("audio peak")).size(); }
    bool soundEnds()
    {
        return comesTrue([this] { return engine()->calls().contains(QStringLiteral("stop")); });
    }
};
} // namespace

TEST_F(AudioReaderTest, wrongCodecIsLoggedAndTheVideoGoesOn)
{
    ASSERT_NO_FATAL_FAILURE(openVideo());
    audioSocket.send(bigEndian(0x00616163));
    EXPECT_TRUE(comesTrue(
        [this] { return hasLogged(QStringLiteral("Quillnest: audio forwarding unavailable (codec 0x00616163)")); }));
    EXPECT_TRUE(videoGoesOn());
    EXPECT_TRUE(audio->engines().empty());
    EXPECT_TRUE(ends.empty());
}

TEST_F(AudioReaderTest, socketThatClosesBeforeTheCodecIsNotWorthAWord)
{
    ASSERT_NO_FATAL_FAILURE(openVideo());
    ASSERT_TRUE(videoGoesOn());
    const int threads = ownThreads();
    audioSocket.send(bigEndian(0x00726177).left(3));
    audioSocket.close();
    EXPECT_TRUE(comesTrue([&] { return ownThreads() == threads - 1; }));
    EXPECT_TRUE(videoGoesOn());
    EXPECT_TRUE(logLines().filter(QStringLiteral("audio")).isEmpty());
}

TEST_F(AudioReaderTest, packetsAreScheduledOnTheEngine)
{
    ASSERT_NO_FATAL_FAILURE(openVideoAndAudio());
    audioSocket.send(packet(0, frames(480, 16384)) + packet(keyFlag, frames(2400, -16384)));
    ASSERT_TRUE(comesTrue([this] { return engine()->calls().contains(QStringLiteral("play")); }));
    EXPECT_EQ(
        engine()->calls(),
        (QStringList{
            QStringLiteral("start"), QStringLiteral("schedule 480"), QStringLiteral("schedule 2400"),
            QStringLiteral("play")}));
    EXPECT_EQ(engine()->buffers()[0].left, std::vector<float>(480, 0.5F));
    EXPECT_EQ(engine()->buffers()[1].right, std::vector<float>(2400, -0.5F));
    engine()->played = 77;
    audioSocket.send(packet(0, frames(1)));
    EXPECT_TRUE(comesTrue([this] { return client->statistics().audioFramesPlayed == 77U; }));
    EXPECT_EQ(client->statistics().audioPackets, 3U);
    client->stop();
    EXPECT_EQ(client->statistics().audioFramesPlayed, 77U) << "what was heard stays known";
}

TEST_F(AudioReaderTest, neitherStopNorTheCountersWaitForTheSoundServer)
{
    ASSERT_NO_FATAL_FAILURE(openVideoAndAudio());
    audioSocket.send(packet(0, frames(480)));
    ASSERT_TRUE(scheduled(1));
    // The packet's own look at the counter may still be under way.
    ASSERT_TRUE(comesTrue([this] { return levelLines() == 1; }));
    std::atomic_bool stopped = false;
    {
        const std::scoped_lock busy(engine()->life);
        std::thread other([subject = client, &stopped] {
            subject->statistics();
            subject->stop();
            stopped = true;
        });
        EXPECT_TRUE(comesTrueWithoutMain([&stopped] { return stopped.load(); }));
        other.detach();
    }
    ASSERT_TRUE(comesTrueWithoutMain([&stopped] { return stopped.load(); }));
    EXPECT_TRUE(soundEnds());
}

TEST_F(AudioReaderTest, readsAloneAndFeedsWhoeverIsAttached)
{
    /// Counts the bytes of sound.
    class Counter : public SampleConsumer
    {
    public:
        void takeVideo(const VideoSample &, std::chrono::microseconds) override { }
        void takeAudio(std::span<const std::uint8_t> pcm, std::chrono::microseconds time) override
        {
            bytes += pcm.size();
            lastTime = time;
        }
        void ended() override { }
        std::atomic<std::size_t> bytes = 0;
        std::chrono::microseconds lastTime{};
    };
    const auto counter = std::make_shared<Counter>();
    SampleFeed feed(fakes.executor, log);
    feed.attach(counter);
    AudioReader reader(fakes.platform, log, feed);
    ConnectedSocket connection;
    connection.sendAndClose(
        bigEndian(0x00726177) + packet(configFlag, frames(7)) + packet(0, frames(480)) + packet(0, frames(20)));
    reader.read(*connection.socket);
    fakes.settle();
    EXPECT_EQ(counter->bytes, 2000U) << "a config packet is no sound";
    EXPECT_EQ(counter->lastTime, std::chrono::duration_cast<std::chrono::microseconds>(fakes.clock->monotonic()));
    EXPECT_EQ(reader.packets(), 2U);
    EXPECT_EQ(engine()->calls().count(QStringLiteral("stop")), 1);
}

TEST_F(AudioReaderTest, configPacketsDoNotPlay)
{
    ASSERT_NO_FATAL_FAILURE(openVideoAndAudio());
    audioSocket.send(packet(configFlag, frames(5000, 20000)) + packet(0, frames(480, 100)));
    ASSERT_TRUE(scheduled(1));
    EXPECT_EQ(engine()->buffers()[0].left.size(), 480U);
    EXPECT_EQ(client->statistics().audioPackets, 1U);
    EXPECT_TRUE(comesTrue([this] { return hasLogged(QStringLiteral("Quillnest: audio peak 100")); }))
        << "a config packet isn't probed either";
}

TEST_F(AudioReaderTest, packetOfThreeBytesIsProbedAndNotPlayed)
{
    ASSERT_NO_FATAL_FAILURE(openVideoAndAudio());
    audioSocket.send(packet(0, QByteArray("\x2c\x01\x00", 3)));
    EXPECT_TRUE(comesTrue([this] { return hasLogged(QStringLiteral("Quillnest: audio peak 300")); }));
    EXPECT_TRUE(engine()->calls().isEmpty());
}

TEST_F(AudioReaderTest, packetSizeOfZeroEndsTheSoundAndNotTheVideo)
{
    ASSERT_NO_FATAL_FAILURE(openVideoAndAudio());
    audioSocket.send(packetHeader(0, 0));
    EXPECT_TRUE(soundEnds());
    EXPECT_TRUE(videoGoesOn());
    EXPECT_TRUE(ends.empty());
}

TEST_F(AudioReaderTest, packetSizeOverTheLimitEndsTheSoundAndNotTheVideo)
{
    ASSERT_NO_FATAL_FAILURE(openVideoAndAudio());
    audioSocket.send(packetHeader(0, 0x100000));
    EXPECT_TRUE(soundEnds());
    EXPECT_TRUE(videoGoesOn());
    EXPECT_TRUE(ends.empty());
}

TEST_F(AudioReaderTest, packetOfExactlyTheLimitIsRead)
{
    ASSERT_NO_FATAL_FAILURE(openVideoAndAudio());
    audioSocket.send(packet(0, QByteArray(0xFFFFF, '\0')));
    ASSERT_TRUE(scheduled(1));
    EXPECT_EQ(engine()->buffers()[0].left.size(), 0xFFFFFU / 4);
}

TEST_F(AudioReaderTest, levelProbeLooksAtEverySixteenthLeftSample)
{
    ASSERT_NO_FATAL_FAILURE(openVideoAndAudio());
    auto payload = frames(40, 1000);
    const auto put = [&payload](int at, std::int16_t sample) {
        payload[at] = static_cast<char>(sample & 0xFF);
        payload[at + 1] = static_cast<char>(sample >> 8 & 0xFF);
    };
    put(0, 17);
    put(64, -300);
    put(128, 250);
    audioSocket.send(packet(0, payload));
    EXPECT_TRUE(comesTrue([this] { return hasLogged(QStringLiteral("Quillnest: audio peak 300")); }))
        << logLines().join(QLatin1Char('\n')).toStdString();
}

TEST_F(AudioReaderTest, lowestSampleHasAPeakOfItsOwn)
{
    ASSERT_NO_FATAL_FAILURE(openVideoAndAudio());
    audioSocket.send(packet(0, frames(1, -32768)));
    EXPECT_TRUE(comesTrue([this] { return hasLogged(QStringLiteral("Quillnest: audio peak 32768")); }));
}

TEST_F(AudioReaderTest, levelIsLoggedEveryThreeSecondsWithThePeakSinceThen)
{
    ASSERT_NO_FATAL_FAILURE(openVideoAndAudio());
    audioSocket.send(packet(0, frames(16, 5)));
    ASSERT_TRUE(comesTrue([this] { return levelLines() == 1; }));
    audioSocket.send(packet(0, frames(16, 900)));
    ASSERT_TRUE(scheduled(2));
    fakes.clock->advance(std::chrono::milliseconds(2999));
    audioSocket.send(packet(0, frames(16, 7)));
    ASSERT_TRUE(scheduled(3));
    // The packet after it is scheduled only when the probe is done with this one.
    audioSocket.send(packet(0, frames(16, 8)));
    ASSERT_TRUE(scheduled(4));
    EXPECT_EQ(levelLines(), 1);
    // Whether the probe of the last packet has read the clock before this or after it, one line comes of it.
    fakes.clock->advance(std::chrono::milliseconds(1));
    audioSocket.send(packet(0, frames(16, 9)));
    ASSERT_TRUE(comesTrue([this] { return levelLines() >= 2; }));
    EXPECT_TRUE(hasLogged(QStringLiteral("Quillnest: audio peak 900")));
}

TEST_F(AudioReaderTest, atMostTwentyLevelsAreLogged)
{
    ASSERT_NO_FATAL_FAILURE(openVideoAndAudio());
    for (std::size_t i = 1; i <= 25; ++i) {
        fakes.clock->advance(std::chrono::seconds(3));
        audioSocket.send(packet(0, frames(16, static_cast<std::int16_t>(i))));
        ASSERT_TRUE(scheduled(i));
        if (i <= 20) {
            ASSERT_TRUE(comesTrue([&] { return levelLines() == static_cast<qsizetype>(i); }));
        }
    }
    audioSocket.close();
    ASSERT_TRUE(soundEnds());
    EXPECT_EQ(levelLines(), 20);
    EXPECT_TRUE(hasLogged(QStringLiteral("Quillnest: audio peak 20")));
}

TEST_F(AudioReaderTest, stopEndsTheSoundOnce)
{
    ASSERT_NO_FATAL_FAILURE(openVideoAndAudio());
    audioSocket.send(packet(0, frames(480)));
    ASSERT_TRUE(scheduled(1));
    client->stop();
    EXPECT_TRUE(soundEnds());
    dropClient();
    EXPECT_EQ(engine()->calls().count(QStringLiteral("stop")), 1);
}
