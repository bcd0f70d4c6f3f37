#include "stream/SampleFeed.h"

#include "fakes/FakePlatform.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace quillnest;
using namespace std::chrono_literals;

namespace
{

/// Notes what it is given.
class NotingConsumer : public SampleConsumer
{
public:
    void takeVideo(const VideoSample &sample, std::chrono::microseconds time) override
    {
        if (failsAtVideo)
            throw std::runtime_error("the disk is full");
        notes.append(QStringLiteral("%1 %2 at %3")
                         .arg(sample.keyFrame ? QStringLiteral("key") : QStringLiteral("delta"))
                         .arg(sample.data.size())
                         .arg(time.count()));
        formats.push_back(sample.format);
    }
    void takeAudio(std::span<const std::uint8_t> pcm, std::chrono::microseconds time) override
    {
        notes.append(QStringLiteral("sound %1 at %2").arg(pcm.size()).arg(time.count()));
    }
    void ended() override { notes.append(QStringLiteral("ended")); }

    QStringList notes;
    std::vector<std::shared_ptr<const VideoFormat>> formats;
    bool failsAtVideo = false;
};

class SampleFeedTest : public ::testing::Test
{
protected:
    VideoSample sample(bool keyFrame, std::size_t size, std::chrono::nanoseconds arrival = 5ms) const
    {
        VideoSample result;
        result.data.resize(size);
        result.format = format;
        result.keyFrame = keyFrame;
        result.arrival = arrival;
        return result;
    }

    FakePlatform fakes = fakePlatform();
    std::shared_ptr<QuillnestLog> log
        = std::make_shared<QuillnestLog>(fakes.clock, fakes.home->path(), QStringLiteral("stream.log"), true);
    std::shared_ptr<const VideoFormat> format = std::make_shared<VideoFormat>();
    std::shared_ptr<NotingConsumer> consumer = std::make_shared<NotingConsumer>();
    SampleFeed feed{fakes.executor, log};
};

const std::vector<std::uint8_t> sound(960);

} // namespace

TEST_F(SampleFeedTest, aConsumerGetsWhatComesWhileItIsAttachedWithTimesInMicroseconds)
{
    feed.takeVideo(sample(true, 100));
    feed.attach(consumer);
    feed.takeVideo(sample(true, 200, 1234567ns));
    feed.takeAudio(sound, 2345678ns);
    feed.takeVideo(sample(false, 30, 9ms));
    feed.detach(consumer);
    feed.takeVideo(sample(true, 400));
    feed.takeAudio(sound, 1s);
    EXPECT_TRUE(consumer->notes.isEmpty()) << "nothing of it is done on the stream's threads";
    fakes.settle();
    EXPECT_EQ(
        consumer->notes,
        (QStringList{
            QStringLiteral("key 200 at 1234"), QStringLiteral("sound 960 at 2345"), QStringLiteral("delta 30 at 9000"),
            QStringLiteral("ended")}));
    EXPECT_EQ(consumer->formats, (std::vector{format, format}));
}

TEST_F(SampleFeedTest, theEndOfTheStreamEndsAllOfThemOnce)
{
    const auto second = std::make_shared<NotingConsumer>();
    feed.attach(consumer);
    feed.attach(second);
    feed.end();
    feed.end();
    feed.detach(consumer);
    feed.takeVideo(sample(true, 100));
    fakes.settle();
    EXPECT_EQ(consumer->notes, QStringList{QStringLiteral("ended")});
    EXPECT_EQ(second->notes, QStringList{QStringLiteral("ended")});
    // One that comes too late isn't left waiting.
    const auto late = std::make_shared<NotingConsumer>();
    feed.attach(late);
    fakes.settle();
    EXPECT_EQ(late->notes, QStringList{QStringLiteral("ended")});
}

TEST_F(SampleFeedTest, detachingOneLeavesTheOthers)
{
    const auto second = std::make_shared<NotingConsumer>();
    feed.attach(consumer);
    feed.attach(second);
    feed.detach(consumer);
    feed.takeVideo(sample(true, 100));
    fakes.settle();
    EXPECT_EQ(consumer->notes, QStringList{QStringLiteral("ended")});
    EXPECT_EQ(second->notes, QStringList{QStringLiteral("key 100 at 5000")});
}

TEST_F(SampleFeedTest, oneThatIsTooSlowMissesPicturesUpToAKeyFrameAndTheMemoryIsBounded)
{
    constexpr std::size_t half = SampleFeed::byteCapacity / 2 - SampleFeed::itemCost;
    feed.attach(consumer);
    feed.takeVideo(sample(true, half));
    feed.takeVideo(sample(false, half));
    // Full to the last byte.
    feed.takeVideo(sample(false, 1));
    feed.takeAudio(sound, 1ms);
    fakes.settle();
    // There is room again, but what follows can't be decoded without what was left out.
    feed.takeVideo(sample(false, 2));
    feed.takeAudio(sound, 2ms);
    feed.takeVideo(sample(true, 3));
    feed.takeVideo(sample(false, 4));
    fakes.settle();
    EXPECT_EQ(
        consumer->notes,
        (QStringList{
            QStringLiteral("key %1 at 5000").arg(half), QStringLiteral("delta %1 at 5000").arg(half),
            QStringLiteral("sound 960 at 2000"), QStringLiteral("key 3 at 5000"), QStringLiteral("delta 4 at 5000")}));
}

TEST_F(SampleFeedTest, aFloodOfTinyOnesIsBoundedToo)
{
    feed.attach(consumer);
    const std::vector<std::uint8_t> tiny(1);
    for (std::size_t i = 0; i < 2 * SampleFeed::byteCapacity / SampleFeed::itemCost; ++i)
        feed.takeAudio(tiny, 1ms);
    fakes.settle();
    EXPECT_LE(static_cast<std::size_t>(consumer->notes.size()), SampleFeed::byteCapacity / SampleFeed::itemCost);
}

TEST_F(SampleFeedTest, oneThatThrowsIsHeardOfNoMoreAndSpoilsNothingForTheOthers)
{
    const auto second = std::make_shared<NotingConsumer>();
    consumer->failsAtVideo = true;
    feed.attach(consumer);
    feed.attach(second);
    feed.takeVideo(sample(true, 100));
    feed.takeAudio(sound, 1ms);
    fakes.settle();
    consumer->failsAtVideo = false;
    feed.takeVideo(sample(true, 200));
    feed.end();
    fakes.settle();
    EXPECT_TRUE(consumer->notes.isEmpty());
    EXPECT_EQ(second->notes.size(), 4);
    EXPECT_TRUE(log->tail(10).contains(QStringLiteral("Quillnest: a recording failed: the disk is full")));
}

TEST_F(SampleFeedTest, atMostOnePieceOfWorkAtATimeHandsOver)
{
    feed.attach(consumer);
    for (int i = 0; i < 100; ++i)
        feed.takeVideo(sample(true, 1));
    EXPECT_EQ(fakes.executor->pendingInBackground(), 1U);
    fakes.settle();
    EXPECT_EQ(consumer->notes.size(), 100);
}

TEST_F(SampleFeedTest, aFeedThatGoesEndsItsConsumers)
{
    {
        SampleFeed shortLived(fakes.executor, log);
        shortLived.attach(consumer);
        shortLived.takeAudio(sound, 1ms);
    }
    fakes.settle();
    EXPECT_EQ(consumer->notes, (QStringList{QStringLiteral("sound 960 at 1000"), QStringLiteral("ended")}));
}
