#include "package/Bytes.h"

#include <gtest/gtest.h>

using namespace quillnest;

namespace
{
const std::vector<std::uint8_t> bytes{0x01, 0x82, 0x03, 0x84, 0x05};

std::string repaired(std::initializer_list<int> values)
{
    std::vector<std::uint8_t> text;
    for (const int value : values)
        text.push_back(static_cast<std::uint8_t>(value));
    return Bytes::repairedUtf8(text);
}
} // namespace

TEST(WorkBudget, growsWithTheInputUpToWhatMayBeInMemory)
{
    constexpr std::size_t mebibyte = 1024 * 1024;
    EXPECT_TRUE(WorkBudget(mebibyte).spend(28 * mebibyte));
    EXPECT_FALSE(WorkBudget(mebibyte).spend(28 * mebibyte + 1));
    EXPECT_TRUE(WorkBudget(1000 * mebibyte).spend(128 * mebibyte));
    EXPECT_FALSE(WorkBudget(1000 * mebibyte).spend(128 * mebibyte + 1));
}

TEST(Bytes, readsLittleEndian)
{
    EXPECT_EQ(Bytes::u8(bytes, 1), 0x82);
    EXPECT_EQ(Bytes::u16(bytes, 0), 0x8201);
    EXPECT_EQ(Bytes::u32(bytes, 1), 0x05840382U);
}

TEST(Bytes, strictReadsOutsideAreZeroAsAWhole)
{
    EXPECT_EQ(Bytes::u8(bytes, -1), 0);
    EXPECT_EQ(Bytes::u8(bytes, 5), 0);
    EXPECT_EQ(Bytes::u16(bytes, 4), 0);
    EXPECT_EQ(Bytes::u32(bytes, 2), 0U);
    EXPECT_EQ(Bytes::u32(bytes, INT64_MAX - 8), 0U);
    EXPECT_EQ(Bytes::u32(bytes, INT64_MIN + 8), 0U);
}

TEST(Bytes, looseReadsGiveTheReadableBytes)
{
    EXPECT_EQ(Bytes::looseU16(bytes, 4), 0x0005);
    EXPECT_EQ(Bytes::looseU32(bytes, 3), 0x00000584U);
    EXPECT_EQ(Bytes::looseU32(bytes, -2), 0x82010000U);
}

TEST(Bytes, unitsThatDontWhollyFitAreZero)
{
    using Units = std::vector<std::uint16_t>;
    EXPECT_EQ(Bytes::units(bytes, 1, 2), (Units{0x0382, 0x0584}));
    EXPECT_EQ(Bytes::units(bytes, 2, 3), (Units{0x8403, 0, 0}));
    EXPECT_EQ(Bytes::units(bytes, -3, 4), (Units{0, 0, 0x0382, 0x0584}));
    EXPECT_EQ(Bytes::units(bytes, -4, 3), (Units{0, 0, 0x8201}));
    EXPECT_EQ(Bytes::units(bytes, 100, 2), (Units{0, 0}));
    EXPECT_EQ(Bytes::units(bytes, -100, 2), (Units{0, 0}));
    EXPECT_TRUE(Bytes::units(bytes, 0, 0).empty());
}

TEST(Bytes, validUtf8IsKept)
{
    const std::string text = "a\u00e9\u20ac\U0001F600";
    EXPECT_EQ(Bytes::repairedUtf8(std::vector<std::uint8_t>(text.begin(), text.end())), text);
}

TEST(Bytes, eachMaximalInvalidSequenceBecomesOneReplacement)
{
    const std::string mark = "\uFFFD";
    EXPECT_EQ(repaired({'a', 0xFF, 'b'}), "a" + mark + "b");
    // A sequence cut short is one error, and the byte that cut it is read anew.
    EXPECT_EQ(repaired({0xE2, 0x82, 'x'}), mark + "x");
    EXPECT_EQ(repaired({0xF0, 0x9F, 0x98}), mark);
    // Overlong forms, surrogates and values past the end of Unicode never begin a sequence.
    EXPECT_EQ(repaired({0xC0, 0x80}), mark + mark);
    EXPECT_EQ(repaired({0xE0, 0x9F, 0xBF}), mark + mark + mark);
    EXPECT_EQ(repaired({0xE0, 0xA0, 0x80}), "\u0800") << "the first that takes three bytes";
    EXPECT_EQ(repaired({0xF0, 0x8F, 0xBF, 0xBF}), mark + mark + mark + mark);
    EXPECT_EQ(repaired({0xED, 0xA0, 0x80}), mark + mark + mark);
    EXPECT_EQ(repaired({0xF4, 0x90, 0x80, 0x80}), mark + mark + mark + mark);
    EXPECT_EQ(repaired({0x80}), mark);
}

TEST(Bytes, utf16PairsAreJoinedAndLoneSurrogatesReplaced)
{
    const std::vector<std::uint16_t> units{'a', 0xD83D, 0xDE00, 0xD83D, 'b', 0xDE00, 0xD83D};
    EXPECT_EQ(Bytes::repairedUtf16(units), "a\U0001F600\uFFFDb\uFFFD\uFFFD");
}

TEST(WorkBudget, isSpentForGoodOnceItIsOverdrawn)
{
    WorkBudget budget(0);
    EXPECT_TRUE(budget.spend(1024));
    EXPECT_FALSE(budget.spend(std::size_t{1} << 40));
    EXPECT_FALSE(budget.spend(1));
}
