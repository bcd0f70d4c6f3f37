#include "stream/H264.h"

#include "EncodedVideo.h"
#include "StreamFakes.h"
#include "platform/desktop/FFmpegStillDecoder.h"

#include <gtest/gtest.h>

#include <random>

using namespace quillnest;

namespace
{
std::span<const std::uint8_t> view(const QByteArray &bytes)
{
    return {reinterpret_cast<const std::uint8_t *>(bytes.constData()), static_cast<std::size_t>(bytes.size())};
}

std::vector<std::string> cut(const char *hex)
{
    const auto bytes = QByteArray::fromHex(hex);
    std::vector<std::string> result;
    for (const auto unit : H264::nalUnits(view(bytes)))
        result.push_back(toBytes({unit.begin(), unit.end()}).toHex().toStdString());
    return result;
}

std::string sampleOf(const char *hex)
{
    const auto bytes = QByteArray::fromHex(hex);
    const auto sample = H264::sampleBuffer(H264::nalUnits(view(bytes)), std::make_shared<VideoFormat>());
    return sample ? toBytes(sample->data).toHex().toStdString() : "none";
}

/// The cutting one byte at a time, with no short cut.
std::vector<std::pair<std::size_t, std::size_t>> cutSlowly(const std::vector<std::uint8_t> &bytes)
{
    std::vector<std::pair<std::size_t, std::size_t>> result;
    std::optional<std::size_t> start;
    std::size_t i = 0;
    const auto n = bytes.size();
    while (i + 3 <= n) {
        std::size_t code = 0;
        if (bytes[i] == 0 && bytes[i + 1] == 0 && bytes[i + 2] == 1)
            code = 3;
        else if (i + 4 <= n && bytes[i] == 0 && bytes[i + 1] == 0 && bytes[i + 2] == 0 && bytes[i + 3] == 1)
            code = 4;
        if (code == 0) {
            ++i;
            continue;
        }
        if (start)
            result.emplace_back(*start, i - *start);
        i += code;
        start = i;
    }
    if (start && *start < n)
        result.emplace_back(*start, n - *start);
    if (!start && n != 0)
        result.emplace_back(0, n);
    return result;
}
} // namespace

TEST(H264Test, unitsAreCutAtStartCodesOfThreeAndFourBytes)
{
    using Units = std::vector<std::string>;
    EXPECT_EQ(
        cut("0000000167aa"
            "0000000168bb"
            "0000000165cc"),
        (Units{"67aa", "68bb", "65cc"}));
    EXPECT_EQ(
        cut("00000167aa"
            "00000165cc"),
        (Units{"67aa", "65cc"}));
    EXPECT_EQ(
        cut("00000167aa"
            "0000000165cc"
            "00000141"),
        (Units{"67aa", "65cc", "41"}));
}

TEST(H264Test, inputWithoutAStartCodeIsOneUnit)
{
    using Units = std::vector<std::string>;
    EXPECT_EQ(cut("65aabb"), (Units{"65aabb"}));
    EXPECT_EQ(cut("00"), (Units{"00"}));
    EXPECT_EQ(cut("0000"), (Units{"0000"}));
    EXPECT_EQ(cut("00000000"), (Units{"00000000"}));
    EXPECT_EQ(cut(""), Units{});
}

TEST(H264Test, bytesBeforeTheFirstStartCodeAreLeftOut)
{
    EXPECT_EQ(
        cut("aabb"
            "00000165cc"),
        (std::vector<std::string>{"65cc"}));
}

TEST(H264Test, startCodesSideBySideGiveAnEmptyUnitAndOneAtTheEndNone)
{
    using Units = std::vector<std::string>;
    EXPECT_EQ(
        cut("000001"
            "000001"
            "65"),
        (Units{"", "65"}));
    EXPECT_EQ(
        cut("00000165"
            "000001"),
        (Units{"65"}));
    EXPECT_EQ(cut("000001"), Units{});
    EXPECT_EQ(cut("00000001"), Units{});
}

TEST(H264Test, zerosInFrontOfALongStartCodeBelongToTheUnit)
{
    EXPECT_EQ(
        cut("00000165"
            "0000"
            "00000001"
            "41"),
        (std::vector<std::string>{"650000", "41"}));
}

TEST(H264Test, cuttingAgreesWithALookAtEachByte)
{
    // Few values, so that start codes and near misses are frequent.
    std::mt19937 random(20240517);
    std::uniform_int_distribution<int> length(0, 40);
    std::discrete_distribution<int> value({60, 25, 5, 10});
    for (int round = 0; round < 20000; ++round) {
        std::vector<std::uint8_t> bytes(static_cast<std::size_t>(length(random)));
        for (auto &byte : bytes)
            byte = static_cast<std::uint8_t>(value(random));
        std::vector<std::pair<std::size_t, std::size_t>> found;
        for (const auto unit : H264::nalUnits(bytes))
            found.emplace_back(static_cast<std::size_t>(unit.data() - bytes.data()), unit.size());
        ASSERT_EQ(found, cutSlowly(bytes)) << toBytes(bytes).toHex(' ').toStdString();
    }
}

TEST(H264Test, typeIsTheLowFiveBitsOfTheFirstByte)
{
    const QByteArray bytes("\xe7\x01", 2);
    EXPECT_EQ(H264::type(view(bytes)), 7);
    EXPECT_EQ(H264::type({}), 0);
}

TEST(H264Test, sampleHoldsLengthsAndLeavesOutParameterSetsAndDelimiters)
{
    EXPECT_EQ(
        sampleOf("0000000167aa"
                 "0000000168bb"
                 "0000000165ccdd"),
        "0000000365ccdd");
    EXPECT_EQ(
        sampleOf("00000109f0"
                 "00000106aa"
                 "00000165cc"),
        "0000000206aa"
        "0000000265cc");
    // The type counts and not the two bits beside it.
    EXPECT_EQ(
        sampleOf("00000127aa"
                 "00000141"),
        "0000000141");
}

TEST(H264Test, emptyUnitInASampleWritesALengthOfZero)
{
    EXPECT_EQ(
        sampleOf("000001"
                 "000001"
                 "65"),
        "00000000"
        "0000000165");
}

TEST(H264Test, nothingButParameterSetsAndDelimitersGivesNoSample)
{
    EXPECT_EQ(
        sampleOf("00000167aa"
                 "00000168bb"
                 "00000109f0"),
        "none");
    EXPECT_EQ(sampleOf(""), "none");
}

TEST(H264Test, lengthOfALongUnitIsBigEndian)
{
    std::vector<std::uint8_t> bytes(0x012345, 0x65);
    const auto sample = H264::sampleBuffer({bytes}, nullptr);
    ASSERT_TRUE(sample);
    EXPECT_EQ(sample->data.size(), 4U + 0x012345U);
    EXPECT_EQ(
        std::vector(sample->data.begin(), sample->data.begin() + 5),
        (std::vector<std::uint8_t>{0x00, 0x01, 0x23, 0x45, 0x65}));
}

TEST(H264Test, sampleCarriesItsFormat)
{
    const auto format = std::make_shared<VideoFormat>();
    const std::vector<std::uint8_t> bytes{0x65};
    EXPECT_EQ(H264::sampleBuffer({bytes}, format)->format, format);
}

TEST(H264Test, formatOfRealParameterSetsIsTaken)
{
    const auto stream = encodeRed(96, 64, 1);
    FFmpegVideoDecoding decoding;
    H264::Unit sps;
    H264::Unit pps;
    for (const auto unit : H264::nalUnits(view(stream.parameterSets))) {
        if (H264::type(unit) == H264::sequenceParameterSet)
            sps = unit;
        if (H264::type(unit) == H264::pictureParameterSet)
            pps = unit;
    }
    const auto format = H264::format(decoding, sps, pps);
    ASSERT_TRUE(format);
    EXPECT_TRUE(std::equal(format->sps.begin(), format->sps.end(), sps.begin(), sps.end()));
    EXPECT_TRUE(std::equal(format->pps.begin(), format->pps.end(), pps.begin(), pps.end()));
}

TEST(H264Test, formatOfBrokenParameterSetsIsRefused)
{
    FFmpegVideoDecoding decoding;
    const std::vector<std::uint8_t> sps{0x67};
    const std::vector<std::uint8_t> pps{0x68};
    EXPECT_FALSE(H264::format(decoding, sps, pps));
}
