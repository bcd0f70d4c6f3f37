#include "ConnectedSocket.h"
#include "EncodedVideo.h"
#include "StreamTest.h"

#include "platform/desktop/FFmpegStillDecoder.h"

using namespace quillnest;

namespace
{
class VideoReaderTest : public StreamTest
{
protected:
    /// Whether so many sizes have been told, after the pause that follows the one before.
    bool tellsSizes(std::size_t count)
    {
        fakes.clock->advance(VideoReader::sizePause);
        return sizes.size() == count;
    }
};

QByteArray nal(const char *hex)
{
    return QByteArray("\x00\x00\x00\x01", 4) + QByteArray::fromHex(hex);
}

std::string hex(const std::vector<std::uint8_t> &bytes)
{
    return toBytes(bytes).toHex().toStdString();
}
} // namespace

TEST_F(VideoReaderTest, announcedSizeIsStoredLoggedAndReported)
{
    ASSERT_NO_FATAL_FAILURE(openVideo());
    EXPECT_EQ(client->videoSize(), QSizeF(0, 0));
    videoSocket.send(QByteArray::fromHex("80000000"
                                         "00000308"
                                         "000006a0"));
    ASSERT_TRUE(comesTrue([this] { return !sizes.empty(); }));
    EXPECT_EQ(sizes, std::vector<QSizeF>{QSizeF(776, 1696)});
    EXPECT_EQ(client->videoSize(), QSizeF(776, 1696));
    EXPECT_TRUE(hasLogged(QStringLiteral("Quillnest: video session 776x1696")));
}

TEST_F(VideoReaderTest, laterAnnouncementReplacesTheSize)
{
    ASSERT_NO_FATAL_FAILURE(openVideo());
    videoSocket.send(sessionPacket(776, 1696));
    ASSERT_TRUE(comesTrue([this] { return sizes.size() == 1; }));
    // Only the top bit counts, and such a packet has no payload however its other bits lie.
    videoSocket.send(QByteArray::fromHex("ffffffff"
                                         "000006a0"
                                         "00000308"));
    ASSERT_TRUE(comesTrue([this] { return tellsSizes(2); }));
    EXPECT_EQ(client->videoSize(), QSizeF(1696, 776));
    EXPECT_TRUE(videoGoesOn());
}

TEST_F(VideoReaderTest, aFloodOfTheSameSizeIsOneLineAndOneEvent)
{
    ASSERT_NO_FATAL_FAILURE(openVideo());
    QByteArray flood;
    for (int i = 0; i < 20'000; ++i)
        flood += sessionPacket(776, 1696);
    videoSocket.send(flood);
    ASSERT_TRUE(videoGoesOn());
    ASSERT_TRUE(comesTrue([this] { return tellsSizes(1); }));
    videoSocket.send(sessionPacket(8, 8));
    ASSERT_TRUE(comesTrue([this] { return tellsSizes(2); }));
    EXPECT_EQ(sizes, (std::vector{QSizeF(776, 1696), QSizeF(8, 8)}));
    EXPECT_EQ(logLines().filter(QStringLiteral("video session")).size(), 2);
}

TEST_F(VideoReaderTest, aFloodOfChangingSizesIsToldAFewTimesInASecondAndTheLastIsNotLost)
{
    ASSERT_NO_FATAL_FAILURE(openVideo());
    for (int i = 0; i < 100; ++i) {
        QByteArray flood;
        for (int each = 0; each < 100; ++each)
            flood += sessionPacket(776, 1696) + sessionPacket(1696, 776);
        videoSocket.send(flood + sessionPacket(8, 8));
        ASSERT_TRUE(videoGoesOn());
        QCoreApplication::processEvents();
        fakes.clock->advance(std::chrono::milliseconds(10));
    }
    EXPECT_LE(sizes.size(), 1U + 1000 / 200);
    EXPECT_LE(logLines().filter(QStringLiteral("video session")).size(), 1 + 1000 / 200);
    videoSocket.send(sessionPacket(16, 16));
    ASSERT_TRUE(comesTrue([this] {
        fakes.clock->advance(VideoReader::sizePause);
        return sizes.back() == QSizeF(16, 16);
    }));
    EXPECT_EQ(client->videoSize(), QSizeF(16, 16));
}

TEST_F(VideoReaderTest, mediaBeforeParameterSetsIsDropped)
{
    ASSERT_NO_FATAL_FAILURE(openVideo());
    videoSocket.send(packet(keyFlag, nal("65aa")) + packet(deltaFlag, nal("41bb")) + sessionPacket(8, 8));
    ASSERT_TRUE(comesTrue([this] { return !sizes.empty(); }));
    EXPECT_EQ(renderer->count(), 0U);
    EXPECT_EQ(firstFrames, 0);
    EXPECT_EQ(client->statistics().framesEnqueued, 0U);
    EXPECT_EQ(client->statistics().firstFrameSeconds, std::nullopt);
    EXPECT_TRUE(videoGoesOn());
}

TEST_F(VideoReaderTest, samplesReachTheRendererInOrderWithoutParameterSets)
{
    ASSERT_NO_FATAL_FAILURE(openVideo());
    videoSocket.send(
        packet(configFlag, parameterSets) + packet(keyFlag, nal("09f0") + nal("65aabb") + nal("65cc"))
        + packet(deltaFlag, nal("41dd")));
    ASSERT_TRUE(comesTrue([this] { return renderer->count() == 2; }));
    const auto samples = renderer->samples();
    EXPECT_EQ(
        hex(samples[0].data),
        "0000000365aabb"
        "0000000265cc");
    EXPECT_TRUE(samples[0].keyFrame);
    EXPECT_EQ(hex(samples[1].data), "0000000241dd");
    EXPECT_FALSE(samples[1].keyFrame);
    ASSERT_TRUE(samples[0].format);
    EXPECT_EQ(hex(samples[0].format->sps), "6742aa");
    EXPECT_EQ(hex(samples[0].format->pps), "68bb");
    EXPECT_EQ(samples[1].format, samples[0].format);
    EXPECT_EQ(samples[0].arrival, fakes.clock->monotonic());
}

TEST_F(VideoReaderTest, configPacketIsNeverShown)
{
    ASSERT_NO_FATAL_FAILURE(openVideo());
    videoSocket.send(packet(configFlag | keyFlag, parameterSets + nal("65aa")) + sessionPacket(8, 8));
    ASSERT_TRUE(comesTrue([this] { return !sizes.empty(); }));
    EXPECT_EQ(renderer->count(), 0U);
}

TEST_F(VideoReaderTest, configPacketWithOneParameterSetLeavesTheFormat)
{
    ASSERT_NO_FATAL_FAILURE(openVideo());
    videoSocket.send(
        packet(configFlag, parameterSets) + packet(keyFlag, nal("65aa")) + packet(configFlag, nal("67ff"))
        + packet(keyFlag, nal("65bb")) + packet(configFlag, nal("68ff")) + packet(keyFlag, nal("65cc")));
    ASSERT_TRUE(comesTrue([this] { return renderer->count() == 3; }));
    for (const auto &sample : renderer->samples()) {
        EXPECT_EQ(hex(sample.format->sps), "6742aa");
        EXPECT_EQ(hex(sample.format->pps), "68bb");
    }
}

TEST_F(VideoReaderTest, parameterSetsInAMediaPacketCountForThatVeryPacket)
{
    ASSERT_NO_FATAL_FAILURE(openVideo());
    videoSocket.send(
        packet(keyFlag, nal("6711") + nal("6822") + nal("65aa"))
        + packet(keyFlag, nal("6733") + nal("6844") + nal("6755") + nal("65bb")));
    ASSERT_TRUE(comesTrue([this] { return renderer->count() == 2; }));
    const auto samples = renderer->samples();
    EXPECT_EQ(hex(samples[0].format->sps), "6711");
    EXPECT_EQ(hex(samples[0].format->pps), "6822");
    EXPECT_EQ(hex(samples[0].data), "0000000265aa");
    EXPECT_EQ(hex(samples[1].format->sps), "6733") << "the first of its type";
    EXPECT_EQ(hex(samples[1].format->pps), "6844");
}

TEST_F(VideoReaderTest, emptyUnitsAreNoParameterSets)
{
    ASSERT_NO_FATAL_FAILURE(openVideo());
    videoSocket.send(packet(configFlag, QByteArray("\x00\x00\x01", 3) + parameterSets) + packet(keyFlag, nal("65aa")));
    ASSERT_TRUE(comesTrue([this] { return renderer->count() == 1; }));
    EXPECT_EQ(hex(renderer->samples()[0].format->sps), "6742aa");
}

TEST_F(VideoReaderTest, parameterSetsThatAreRefusedEmptyTheFormat)
{
    ASSERT_NO_FATAL_FAILURE(openVideo());
    videoSocket.send(
        packet(configFlag, parameterSets) + packet(keyFlag, nal("65aa")) + packet(configFlag, nal("67ee") + nal("68bb"))
        + packet(keyFlag, nal("65bb")) + sessionPacket(8, 8));
    ASSERT_TRUE(comesTrue([this] { return !sizes.empty(); }));
    EXPECT_EQ(renderer->count(), 1U);
    EXPECT_TRUE(videoGoesOn());
}

TEST_F(VideoReaderTest, payloadWithoutAStartCodeIsOneUnit)
{
    ASSERT_NO_FATAL_FAILURE(openVideo());
    videoSocket.send(
        packet(configFlag, parameterSets) + packet(keyFlag, QByteArray::fromHex("65aabb"))
        + packet(keyFlag, QByteArray::fromHex("67aabb")) + packet(deltaFlag, QByteArray::fromHex("41")));
    ASSERT_TRUE(comesTrue([this] { return renderer->count() == 2; }));
    EXPECT_EQ(hex(renderer->samples()[0].data), "0000000365aabb");
    EXPECT_EQ(hex(renderer->samples()[1].data), "0000000141");
}

TEST_F(VideoReaderTest, packetOfParameterSetsAndDelimitersAloneIsNoFrame)
{
    ASSERT_NO_FATAL_FAILURE(openVideo());
    videoSocket.send(packet(keyFlag, nal("6742aa") + nal("68bb") + nal("09f0")) + sessionPacket(8, 8));
    ASSERT_TRUE(comesTrue([this] { return !sizes.empty(); }));
    EXPECT_EQ(renderer->count(), 0U);
    EXPECT_EQ(client->statistics().framesEnqueued, 0U);
    EXPECT_EQ(firstFrames, 0);
}

TEST_F(VideoReaderTest, firstFrameIsReportedOnceWithItsTime)
{
    fakes.processes->on(QStringLiteral("--remove"), [this](const ChildCommand &) {
        fakes.clock->advance(std::chrono::milliseconds(2340));
        return ScriptedProcesses::Answer{};
    });
    ASSERT_NO_FATAL_FAILURE(openVideo());
    ASSERT_TRUE(videoGoesOn());
    ASSERT_TRUE(videoGoesOn());
    ASSERT_TRUE(comesTrue([this] { return firstFrames > 0; }));
    dropClient();
    EXPECT_EQ(firstFrames, 1);
    EXPECT_EQ(logLines().count(QStringLiteral("Quillnest: first frame after 2.34s")), 1)
        << logLines().join(QLatin1Char('\n')).toStdString();
}

TEST_F(VideoReaderTest, statisticsCountFrames)
{
    ASSERT_NO_FATAL_FAILURE(openVideo());
    ASSERT_TRUE(videoGoesOn());
    ASSERT_TRUE(videoGoesOn());
    EXPECT_TRUE(comesTrue([this] { return client->statistics().framesEnqueued == 2; }));
    EXPECT_EQ(client->statistics().firstFrameSeconds, 0.0);
}

TEST_F(VideoReaderTest, payloadSizeOfZeroEndsTheStreamWithoutAText)
{
    ASSERT_NO_FATAL_FAILURE(openVideo());
    videoSocket.send(packetHeader(deltaFlag, 0));
    EXPECT_TRUE(endsOnceWith(std::nullopt));
}

TEST_F(VideoReaderTest, payloadSizeOverTheLimitEndsTheStreamWithoutAText)
{
    ASSERT_NO_FATAL_FAILURE(openVideo());
    videoSocket.send(packetHeader(keyFlag, 0x2000000));
    EXPECT_TRUE(endsOnceWith(std::nullopt));
}

TEST_F(VideoReaderTest, payloadOfExactlyTheLimitIsRead)
{
    ASSERT_NO_FATAL_FAILURE(openVideo());
    videoSocket.send(packet(configFlag, parameterSets));
    ASSERT_TRUE(videoSocket.send(packet(keyFlag, QByteArray(0x1FFFFFF, '\x65'))));
    ASSERT_TRUE(comesTrue([this] { return renderer->count() == 1; }));
    EXPECT_EQ(renderer->samples()[0].data.size(), 0x1FFFFFFU + 4);
    EXPECT_TRUE(videoGoesOn());
}

TEST_F(VideoReaderTest, streamThatIsCutInsideAPayloadEndsWithoutAText)
{
    ASSERT_NO_FATAL_FAILURE(openVideo());
    videoSocket.send(packet(configFlag, parameterSets) + packet(keyFlag, nal("65aabbccdd")).chopped(1));
    videoSocket.close();
    EXPECT_TRUE(endsOnceWith(std::nullopt));
    EXPECT_EQ(renderer->count(), 0U);
}

TEST_F(VideoReaderTest, streamThatIsCutInsideAHeaderEndsWithoutAText)
{
    ASSERT_NO_FATAL_FAILURE(openVideo());
    videoSocket.send(packetHeader(keyFlag, 10).left(11));
    videoSocket.close();
    EXPECT_TRUE(endsOnceWith(std::nullopt));
}

TEST_F(VideoReaderTest, snapshotWaitsForAKeyFrame)
{
    ASSERT_NO_FATAL_FAILURE(openVideo());
    ASSERT_TRUE(videoGoesOn());
    client->requestSnapshot();
    videoSocket.send(packet(deltaFlag, nal("41aa")) + packet(deltaFlag, nal("41bb")));
    ASSERT_TRUE(comesTrue([this] { return renderer->count() == 3; }));
    EXPECT_EQ(video->stills, 0);
    videoSocket.send(packet(keyFlag, nal("65aabbcc")) + packet(keyFlag, nal("65dd")));
    ASSERT_TRUE(comesTrue([this] { return renderer->count() == 5 && !snapshots.empty(); }));
    EXPECT_EQ(video->stills, 1) << "one request, one still";
    ASSERT_EQ(snapshots.size(), 1U);
    EXPECT_EQ(snapshots[0].width(), 8);
}

TEST_F(VideoReaderTest, snapshotThatCannotBeDecodedIsNotReported)
{
    ASSERT_NO_FATAL_FAILURE(openVideo());
    ASSERT_TRUE(videoGoesOn());
    client->requestSnapshot();
    videoSocket.send(packet(keyFlag, nal("65ee")) + packet(keyFlag, nal("65aa")) + sessionPacket(8, 8));
    ASSERT_TRUE(comesTrue([this] { return !sizes.empty(); }));
    EXPECT_EQ(video->stills, 1);
    EXPECT_TRUE(snapshots.empty());
    EXPECT_EQ(renderer->count(), 3U) << "the frames themselves are shown";
}

TEST_F(VideoReaderTest, rendererThatFailedIsFlushedBeforeTheNextSample)
{
    ASSERT_NO_FATAL_FAILURE(openVideo());
    ASSERT_TRUE(videoGoesOn());
    renderer->isFailed = true;
    ASSERT_TRUE(videoGoesOn());
    renderer->wantsFlush = true;
    ASSERT_TRUE(videoGoesOn());
    const auto enqueue = QStringLiteral("enqueue");
    const auto flush = QStringLiteral("flush");
    EXPECT_EQ(renderer->calls(), (QStringList{enqueue, flush, enqueue, flush, enqueue}));
}

TEST_F(VideoReaderTest, readerNeverWaitsForTheMainThread)
{
    ASSERT_NO_FATAL_FAILURE(openVideo());
    videoSocket.send(sessionPacket(8, 8) + packet(configFlag, parameterSets));
    client->requestSnapshot();
    for (int i = 0; i < 200; ++i)
        videoSocket.send(packet(keyFlag, nal("65aa")));
    EXPECT_TRUE(comesTrueWithoutMain([this] { return renderer->count() == 200; }));
    EXPECT_TRUE(sizes.empty());
    EXPECT_TRUE(snapshots.empty());
    EXPECT_TRUE(comesTrue([this] { return sizes.size() == 1 && firstFrames == 1 && snapshots.size() == 1; }));
}

TEST_F(VideoReaderTest, frameRateIsLoggedOnceASecondWhenAsked)
{
    fakes.settings->setValue(QStringLiteral("QuillnestPrintFPS"), true);
    ASSERT_NO_FATAL_FAILURE(openVideo());
    // The first frame closes the window that never began.
    ASSERT_TRUE(videoGoesOn());
    for (int i = 0; i < 29; ++i)
        ASSERT_TRUE(videoGoesOn());
    EXPECT_TRUE(comesTrue([this] { return client->statistics().framesEnqueued == 30; }));
    const auto before = logLines().filter(QStringLiteral(" fps")).size();
    fakes.clock->advance(std::chrono::milliseconds(1500));
    ASSERT_TRUE(videoGoesOn());
    EXPECT_TRUE(comesTrue([this] { return hasLogged(QStringLiteral("Quillnest: 20 fps")); }))
        << logLines().join(QLatin1Char('\n')).toStdString();
    EXPECT_EQ(logLines().filter(QStringLiteral(" fps")).size(), before + 1);
}

TEST_F(VideoReaderTest, frameRateIsNotLoggedUnasked)
{
    ASSERT_NO_FATAL_FAILURE(openVideo());
    ASSERT_TRUE(videoGoesOn());
    fakes.clock->advance(std::chrono::milliseconds(1500));
    ASSERT_TRUE(videoGoesOn());
    ASSERT_TRUE(comesTrue([this] { return client->statistics().framesEnqueued == 2; }));
    dropClient();
    EXPECT_TRUE(logLines().filter(QStringLiteral("fps")).isEmpty());
}

TEST_F(VideoReaderTest, realStreamIsDecodedAndGivesAStill)
{
    FFmpegVideoDecoding decoding;
    fakes.platform.video = std::make_shared<FFmpegVideoDecoding>();
    usedRenderer = decoding.sampleRenderer();
    const auto stream = encodeRed(160, 96, 12);
    ASSERT_NO_FATAL_FAILURE(openVideo());
    videoSocket.send(sessionPacket(160, 96) + packet(configFlag, stream.parameterSets));
    client->requestSnapshot();
    for (const auto &unit : stream.units)
        videoSocket.send(packet(unit.keyFrame ? keyFlag : deltaFlag, unit.bytes));
    ASSERT_TRUE(comesTrue([&] { return usedRenderer->counters().decoded == 12 && !snapshots.empty(); }));
    EXPECT_EQ(usedRenderer->counters().failed, 0U);
    EXPECT_EQ(usedRenderer->latestFrame()->size(), QSize(160, 96));
    ASSERT_EQ(snapshots[0].size(), QSize(160, 96));
    const QColor colour = snapshots[0].pixelColor(80, 48);
    EXPECT_GT(colour.red(), 200);
    EXPECT_LT(colour.green(), 60);
    EXPECT_LT(colour.blue(), 60);
}

TEST_F(VideoReaderTest, garbageAfterTheHeaderEndsNothingButItsOwnFrame)
{
    FFmpegVideoDecoding decoding;
    fakes.platform.video = std::make_shared<FFmpegVideoDecoding>();
    usedRenderer = decoding.sampleRenderer();
    const auto stream = encodeRed(160, 96, 1);
    ASSERT_NO_FATAL_FAILURE(openVideo());
    const auto noise = QByteArray("\x00\x00\x00\x01\x65", 5) + QByteArray(500, '\xa5');
    videoSocket.send(
        packet(keyFlag, noise) + packet(configFlag, noise) + packet(configFlag, stream.parameterSets)
        + packet(keyFlag, noise) + packet(deltaFlag, noise));
    for (int i = 0; i < 2; ++i)
        videoSocket.send(packet(keyFlag, stream.units[0].bytes));
    EXPECT_TRUE(comesTrue([&] { return usedRenderer->latestFrame() != nullptr; }));
    EXPECT_TRUE(ends.empty());
}

TEST_F(VideoReaderTest, readsAloneAndFeedsWhoeverIsAttached)
{
    /// Notes the samples.
    class Notes : public SampleConsumer
    {
    public:
        void takeVideo(const VideoSample &sample, std::chrono::microseconds time) override
        {
            samples.push_back(sample);
            times.push_back(time);
        }
        void takeAudio(std::span<const std::uint8_t>, std::chrono::microseconds) override { }
        void ended() override { }
        std::vector<VideoSample> samples;
        std::vector<std::chrono::microseconds> times;
    };
    fakes.platform.executor = fakes.executor;
    SampleFeed feed(fakes.executor, log);
    const auto notes = std::make_shared<Notes>();
    feed.attach(notes);
    VideoReader reader(fakes.platform, renderer, log, feed);
    ConnectedSocket connection;
    connection.sendAndClose(
        videoPreamble() + sessionPacket(776, 1448) + packet(configFlag, parameterSets) + packet(keyFlag, nal("65aa"))
        + packet(deltaFlag, nal("41bb")));
    EXPECT_EQ(reader.read(*connection.socket, fakes.clock->monotonic()), std::nullopt);
    EXPECT_EQ(reader.videoSize(), QSizeF(776, 1448));
    EXPECT_EQ(reader.framesEnqueued(), 2U);
    EXPECT_EQ(renderer->count(), 2U);
    fakes.settle();
    ASSERT_EQ(notes->samples.size(), 2U);
    EXPECT_EQ(hex(notes->samples[0].data), "0000000265aa");
    EXPECT_TRUE(notes->samples[0].keyFrame);
    ASSERT_TRUE(notes->samples[1].format);
    EXPECT_EQ(hex(notes->samples[1].format->sps), "6742aa");
    EXPECT_EQ(notes->times[1], std::chrono::duration_cast<std::chrono::microseconds>(fakes.clock->monotonic()));
}
