#include "platform/desktop/FFmpegSampleRenderer.h"
#include "EncodedVideo.h"
#include "platform/Conditions.h"
#include "platform/Semaphore.h"
#include "platform/desktop/FFmpegStillDecoder.h"
#include "stream/H264.h"

#include <gtest/gtest.h>

using namespace quillnest;

namespace
{

class FFmpegSampleRendererTest : public ::testing::Test
{
protected:
    FFmpegSampleRendererTest()
    {
        FFmpegVideoDecoding decoding;
        const auto stream = encodeRed(160, 96, 1);
        const auto sets = H264::nalUnits(bytesOf(stream.parameterSets));
        const auto format = H264::format(decoding, sets.at(0), sets.at(1));
        keyFrame = H264::sampleBuffer(H264::nalUnits(bytesOf(stream.units.at(0).bytes)), format).value();
        keyFrame.keyFrame = true;
    }

    /// The key frame with bytes behind it that mean nothing, as an encoder may fill its rate with them.
    VideoSample filledTo(std::size_t size) const
    {
        auto sample = keyFrame;
        const auto length = size - sample.data.size() - 4;
        for (int shift = 24; shift >= 0; shift -= 8)
            sample.data.push_back(static_cast<std::uint8_t>(length >> shift));
        sample.data.push_back(0x0C);
        sample.data.resize(size - 1, 0xFF);
        sample.data.push_back(0x80);
        return sample;
    }

    /// Keeps the decoder in its handler with the first picture until `release` lets it go.
    void holdDecoder()
    {
        renderer.setFrameHandler([this] {
            held.release();
            release.acquire();
        });
        renderer.enqueue(keyFrame);
        ASSERT_TRUE(held.tryAcquire(1));
    }
    void letGo() { release.release(1000); }

    VideoSample keyFrame;
    Semaphore held;
    Semaphore release;
    FFmpegSampleRenderer renderer;

private:
    static std::span<const std::uint8_t> bytesOf(const QByteArray &bytes)
    {
        return {reinterpret_cast<const std::uint8_t *>(bytes.constData()), static_cast<std::size_t>(bytes.size())};
    }
};

TEST_F(FFmpegSampleRendererTest, whatHasBeenDecodedNoLongerCountsAsQueued)
{
    // After the first no key frame comes that would let a decoder go on that takes itself for late.
    auto sample = filledTo(1U << 20);
    constexpr std::uint64_t pictures = 2 * (FFmpegSampleRenderer::maximumQueuedBytes >> 20);
    for (std::uint64_t i = 1; i <= pictures; ++i) {
        renderer.enqueue(sample);
        sample.keyFrame = false;
        ASSERT_TRUE(comesTrueWithoutMain([&] {
            return renderer.counters().decoded == i || renderer.counters().dropped > 0;
        })) << i;
    }
    EXPECT_EQ(renderer.counters().dropped, 0U);
}

TEST_F(FFmpegSampleRendererTest, aPictureLargerThanAnyScreenIsNotDecoded)
{
    // The parameter set names the size; the slice is that of a small picture, which begins as a large one does.
    const auto isDecoded = [this](std::uint32_t columns, std::uint32_t rows) {
        std::string bits = "01000010"
                           "11000000"
                           "00110100"
                           "1"
                           "1"
                           "011"
                           "010"
                           "0";
        const auto number = [&bits](std::uint32_t value) {
            const auto width = std::bit_width(value + 1);
            bits += std::string(static_cast<std::size_t>(width - 1), '0');
            for (int bit = width - 1; bit >= 0; --bit)
                bits += ((value + 1) >> bit) & 1 ? '1' : '0';
        };
        number(columns / 16 - 1);
        number(rows / 16 - 1);
        bits += "1"
                "1"
                "0"
                "0"
                "1";
        while (bits.size() % 8 != 0)
            bits += '0';
        auto format = *keyFrame.format;
        format.sps = {0x67};
        for (std::size_t i = 0; i < bits.size(); i += 8)
            format.sps.push_back(static_cast<std::uint8_t>(std::stoi(bits.substr(i, 8), nullptr, 2)));
        auto sample = keyFrame;
        sample.format = std::make_shared<VideoFormat>(format);
        return !FFmpegStillDecoder().decode(sample).isNull();
    };
    EXPECT_TRUE(isDecoded(160, 96));
    EXPECT_TRUE(isDecoded(4096, 4096));
    EXPECT_FALSE(isDecoded(8192, 8208));
}

TEST_F(FFmpegSampleRendererTest, aDecoderTooManySamplesBehindStartsAnewAtTheNextKeyFrame)
{
    ASSERT_NO_FATAL_FAILURE(holdDecoder());
    auto delta = keyFrame;
    delta.keyFrame = false;
    constexpr auto most = FFmpegSampleRenderer::maximumQueuedSamples;
    for (std::size_t i = 0; i < most; ++i)
        renderer.enqueue(delta);
    EXPECT_EQ(renderer.counters().dropped, 0U);
    renderer.enqueue(delta);
    EXPECT_EQ(renderer.counters().dropped, most + 1);
    renderer.enqueue(delta);
    EXPECT_EQ(renderer.counters().dropped, most + 2);
    renderer.enqueue(keyFrame);
    EXPECT_EQ(renderer.counters().dropped, most + 2);
    letGo();
    EXPECT_TRUE(comesTrueWithoutMain([&] { return renderer.counters().decoded == 2; }));
}

TEST_F(FFmpegSampleRendererTest, aDecoderTooManyBytesBehindStartsAnewAtTheNextKeyFrame)
{
    ASSERT_NO_FATAL_FAILURE(holdDecoder());
    const auto sample = filledTo(FFmpegSampleRenderer::maximumQueuedBytes / 4);
    for (int i = 0; i < 4; ++i)
        renderer.enqueue(sample);
    EXPECT_EQ(renderer.counters().dropped, 0U);
    renderer.enqueue(sample);
    EXPECT_EQ(renderer.counters().dropped, 4U);
    letGo();
    EXPECT_TRUE(comesTrueWithoutMain([&] { return renderer.counters().decoded == 2; }));
}

} // namespace
