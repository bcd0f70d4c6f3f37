#include "stream/PCMAudioPlayer.h"

#include "StreamFakes.h"

#include <gtest/gtest.h>

using namespace quillnest;

namespace
{
class PCMAudioPlayerTest : public ::testing::Test
{
protected:
    void playFrames(std::size_t frames) { player->play(std::vector<std::uint8_t>(frames * 4)); }

    std::shared_ptr<FakeAudioEngine> engine = std::make_shared<FakeAudioEngine>();
    std::shared_ptr<PCMAudioPlayer> player = std::make_shared<PCMAudioPlayer>(engine);
};
} // namespace

TEST_F(PCMAudioPlayerTest, samplesBecomeTwoPlanesOfFloats)
{
    const std::vector<std::uint8_t> bytes{
        0x00, 0x80, 0xff, 0x7f, // -32768, 32767
        0x00, 0x00, 0x01, 0x00, // 0, 1
        0x00, 0x40, 0x00, 0xc0, // 16384, -16384
        0xaa, 0xbb, 0xcc, // less than a frame
    };
    player->play(bytes);
    ASSERT_EQ(engine->buffers().size(), 1U);
    EXPECT_EQ(engine->buffers()[0].left, (std::vector<float>{-1.0F, 0.0F, 0.5F}));
    EXPECT_EQ(engine->buffers()[0].right, (std::vector<float>{32767.0F / 32768.0F, 1.0F / 32768.0F, -0.5F}));
    EXPECT_EQ(player->state().pendingFrames, 3);
}

TEST_F(PCMAudioPlayerTest, packetOfLessThanAFrameIsIgnored)
{
    playFrames(10);
    const auto before = engine->calls();
    player->play(std::vector<std::uint8_t>(3));
    player->play({});
    EXPECT_EQ(player->state().pendingFrames, 10);
    EXPECT_EQ(engine->calls(), before);
}

TEST_F(PCMAudioPlayerTest, firstPacketOfSixtyMillisecondsStartsPlaybackAtOnce)
{
    playFrames(2880);
    EXPECT_EQ(
        engine->calls(),
        (QStringList{QStringLiteral("start"), QStringLiteral("schedule 2880"), QStringLiteral("play")}));
    EXPECT_TRUE(player->state().playing);
    EXPECT_TRUE(player->state().nodeRunning);
}

TEST_F(PCMAudioPlayerTest, oneFrameLessThanThatDoesNotStartPlayback)
{
    playFrames(2879);
    EXPECT_EQ(engine->calls(), (QStringList{QStringLiteral("start"), QStringLiteral("schedule 2879")}));
    EXPECT_FALSE(player->state().playing);
    EXPECT_FALSE(player->state().nodeRunning);
    playFrames(1);
    EXPECT_EQ(engine->calls().mid(2), (QStringList{QStringLiteral("schedule 1"), QStringLiteral("play")}));
    EXPECT_TRUE(player->state().playing);
}

TEST_F(PCMAudioPlayerTest, playbackIsBegunOnlyOnceWhileTheQueueLasts)
{
    playFrames(2880);
    playFrames(2880);
    engine->complete();
    playFrames(480);
    EXPECT_EQ(engine->calls().count(QStringLiteral("play")), 1);
    EXPECT_FALSE(engine->calls().contains(QStringLiteral("pause")));
    EXPECT_EQ(player->state().pendingFrames, 2880 + 480);
}

TEST_F(PCMAudioPlayerTest, queueOfExactlyAQuarterOfASecondStillTakesAPacket)
{
    playFrames(12000);
    playFrames(1);
    EXPECT_EQ(player->state().pendingFrames, 12001);
    EXPECT_EQ(engine->buffers().size(), 2U);
}

TEST_F(PCMAudioPlayerTest, queueOfOneFrameMoreDropsThePacket)
{
    playFrames(12001);
    playFrames(480);
    EXPECT_EQ(player->state().pendingFrames, 12001);
    EXPECT_EQ(engine->buffers().size(), 1U);
    // As soon as the queue falls, sound is taken again.
    engine->complete();
    playFrames(480);
    EXPECT_EQ(player->state().pendingFrames, 480);
    EXPECT_EQ(engine->buffers().size(), 2U);
}

TEST_F(PCMAudioPlayerTest, queueThatRanDryPausesBeforeTheNextPacketAndGathersAgain)
{
    playFrames(2000);
    playFrames(2000);
    engine->complete(2);
    const auto drained = player->state();
    EXPECT_EQ(drained.pendingFrames, 0);
    EXPECT_FALSE(drained.playing);
    EXPECT_TRUE(drained.nodeRunning);

    const auto before = engine->calls().size();
    playFrames(480);
    EXPECT_EQ(engine->calls().mid(before), (QStringList{QStringLiteral("pause"), QStringLiteral("schedule 480")}));
    EXPECT_FALSE(player->state().nodeRunning);
    playFrames(2399);
    EXPECT_EQ(engine->calls().mid(before + 2), QStringList{QStringLiteral("schedule 2399")});
    playFrames(1);
    EXPECT_EQ(engine->calls().mid(before + 3), (QStringList{QStringLiteral("schedule 1"), QStringLiteral("play")}));
}

TEST_F(PCMAudioPlayerTest, bigPacketAfterTheQueueRanDryPausesAndPlays)
{
    playFrames(2880);
    engine->complete();
    const auto before = engine->calls().size();
    playFrames(2880);
    EXPECT_EQ(
        engine->calls().mid(before),
        (QStringList{QStringLiteral("pause"), QStringLiteral("schedule 2880"), QStringLiteral("play")}));
    EXPECT_TRUE(player->state().nodeRunning);
}

TEST_F(PCMAudioPlayerTest, engineThatCannotStartIsTriedAgainWithTheNextPacket)
{
    engine->canStart = false;
    playFrames(480);
    playFrames(480);
    EXPECT_EQ(engine->calls(), (QStringList{QStringLiteral("start"), QStringLiteral("start")}));
    // What was not scheduled stays counted.
    EXPECT_EQ(player->state().pendingFrames, 960);
    engine->canStart = true;
    playFrames(480);
    playFrames(480);
    EXPECT_EQ(
        engine->calls().mid(2),
        (QStringList{QStringLiteral("start"), QStringLiteral("schedule 480"), QStringLiteral("schedule 480")}));
}

TEST_F(PCMAudioPlayerTest, afterStopNothingIsScheduledAndTheEngineStopsOnce)
{
    playFrames(480);
    player->stop();
    player->stop();
    playFrames(480);
    EXPECT_EQ(
        engine->calls(),
        (QStringList{QStringLiteral("start"), QStringLiteral("schedule 480"), QStringLiteral("stop")}));
    EXPECT_EQ(player->state().pendingFrames, 480);
}

TEST_F(PCMAudioPlayerTest, completionAfterThePlayerHasGoneDoesNothing)
{
    playFrames(480);
    const std::weak_ptr watched = player;
    player.reset();
    EXPECT_TRUE(watched.expired());
    engine->complete();
}

TEST_F(PCMAudioPlayerTest, completionsOfAnotherThreadLeaveTheCountRight)
{
    constexpr int rounds = 2000;
    std::atomic_int scheduled = 0;
    std::thread sound([&] {
        for (int completed = 0; completed < rounds;) {
            if (completed == scheduled)
                std::this_thread::yield();
            else
                engine->complete(), ++completed;
        }
    });
    for (int i = 0; i < rounds; ++i) {
        playFrames(1);
        ++scheduled;
    }
    sound.join();
    EXPECT_EQ(player->state().pendingFrames, 0);
    EXPECT_FALSE(player->state().playing);
    EXPECT_EQ(engine->buffers().size(), static_cast<std::size_t>(rounds));
}
