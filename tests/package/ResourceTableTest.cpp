#include "package/ResourceTable.h"
#include "package/PackageBuilder.h"

#include <gtest/gtest.h>

using namespace quillnest;
using namespace quillnest::build;
using ResourceTable::entries;
using ResourceTable::Entry;

namespace
{
constexpr std::uint32_t icon = 0x7F020001;

std::optional<Blob> text(std::uint32_t index)
{
    return fullEntry(3, index);
}
} // namespace

TEST(ResourceTable, givesOneEntryForEachConfigurationInTableOrder)
{
    const auto bytes = table(
        {pool({"res/m.png", "res/x.png", "res/any.xml"}),
         package(
             0x7F,
             {typeSpec(2, 2), typeChunk(2, 160, {std::nullopt, text(0)}), typeChunk(2, 320, {std::nullopt, text(1)}),
              typeChunk(3, 480, {text(0), text(0)}), typeChunk(2, 0xFFFE, {std::nullopt, text(2)})})});
    EXPECT_EQ(
        entries(bytes, icon),
        (std::vector<Entry>{{160, "res/m.png", 3, 0}, {320, "res/x.png", 3, 1}, {65534, "res/any.xml", 3, 2}}));
}

TEST(ResourceTable, aConfigurationWithoutAValueGivesNothing)
{
    const auto bytes = table({pool({"a"}), package(0x7F, {typeChunk(2, 160, {text(0), std::nullopt})})});
    EXPECT_TRUE(entries(bytes, icon).empty());
    EXPECT_EQ(entries(bytes, 0x7F020000).size(), 1U);
    EXPECT_TRUE(entries(bytes, 0x7F020002).empty());
}

TEST(ResourceTable, shortOffsetsNeedACountAboveTheIndex)
{
    const auto value = [](std::size_t count) {
        std::vector<std::optional<Blob>> values(count, text(0));
        return table({pool({"a"}), package(0x7F, {typeChunk(2, 160, values, Offsets::shortForm)})});
    };
    EXPECT_TRUE(entries(value(1), icon).empty());
    EXPECT_EQ(entries(value(2), icon), (std::vector<Entry>{{160, "a", 3, 0}}));
}

TEST(ResourceTable, aShortOffsetOfAllOnesIsNoValue)
{
    const auto bytes
        = table({pool({"a"}), package(0x7F, {typeChunk(2, 160, {text(0), std::nullopt}, Offsets::shortForm)})});
    EXPECT_TRUE(entries(bytes, icon).empty());
}

TEST(ResourceTable, aSparseChunkAnswersOnlyForThePairsItHolds)
{
    const auto with = typeChunk(2, 160, {text(0), text(1)}, Offsets::sparse);
    const auto without = typeChunk(2, 240, {text(0), std::nullopt, text(1)}, Offsets::sparse);
    const auto plain = typeChunk(2, 320, {text(0), text(1)});
    const auto bytes = table({pool({"a", "b"}), package(0x7F, {without, with, plain})});
    EXPECT_EQ(entries(bytes, icon), (std::vector<Entry>{{160, "b", 3, 1}, {320, "b", 3, 1}}));
}

TEST(ResourceTable, anEmptySparseChunkHasNoValue)
{
    const auto bytes = table({pool({"a"}), package(0x7F, {typeChunk(2, 160, {}, Offsets::sparse)})});
    EXPECT_TRUE(entries(bytes, 0x7F020000).empty());
}

TEST(ResourceTable, theLastOfSeveralSparsePairsWins)
{
    auto sparse = typeChunk(2, 160, {text(0), text(1)}, Offsets::sparse);
    patch16(sparse, 84, 1); // The first pair's index is now 1 as well.
    EXPECT_EQ(
        entries(table({pool({"a", "b"}), package(0x7F, {sparse})}), icon), (std::vector<Entry>{{160, "b", 3, 1}}));
}

TEST(ResourceTable, sparseWinsOverShortOffsets)
{
    auto sparse = typeChunk(2, 160, {std::nullopt, text(1)}, Offsets::sparse);
    sparse.at(9) = 0x03;
    EXPECT_EQ(
        entries(table({pool({"a", "b"}), package(0x7F, {sparse})}), icon), (std::vector<Entry>{{160, "b", 3, 1}}));
}

TEST(ResourceTable, aCompactEntryIsAPlainValueEvenWithTheComplexBit)
{
    const auto bytes = table(
        {pool({"a"}),
         package(
             0x7F,
             {typeChunk(2, 160, {std::nullopt, compactEntry(28, 0xFF00FF00)}),
              typeChunk(2, 240, {std::nullopt, compactEntry(28, 0xFF0000FF, 0x08 | 0x01)})})});
    EXPECT_EQ(
        entries(bytes, icon),
        (std::vector<Entry>{{160, std::nullopt, 28, 0xFF00FF00}, {240, std::nullopt, 28, 0xFF0000FF}}));
}

TEST(ResourceTable, aBagGivesNoEntryThoughOtherConfigurationsDo)
{
    const auto bytes = table(
        {pool({"a"}),
         package(
             0x7F,
             {typeChunk(2, 160, {std::nullopt, fullEntry(3, 0, 0x01)}), typeChunk(2, 240, {std::nullopt, text(0)})})});
    EXPECT_EQ(entries(bytes, icon), (std::vector<Entry>{{240, "a", 3, 0}}));
}

TEST(ResourceTable, theValueLiesBehindTheEntrysOwnHeader)
{
    const Blob wide = Writer().u16(12).u16(0).u32(0).u32(0xDDDDDDDD).u16(8).u8(0).u8(16).u32(42).bytes();
    const auto bytes = table({pool({"a"}), package(0x7F, {typeChunk(2, 0, {std::nullopt, wide})})});
    EXPECT_EQ(entries(bytes, icon), (std::vector<Entry>{{0, std::nullopt, 16, 42}}));
}

TEST(ResourceTable, aReferenceIsReportedAndNotFollowed)
{
    const auto bytes = table({pool({"a"}), package(0x7F, {typeChunk(2, 0, {text(0), fullEntry(1, 0x7F020000)})})});
    EXPECT_EQ(entries(bytes, icon), (std::vector<Entry>{{0, std::nullopt, 1, 0x7F020000}}));
    // Nor is it a text, though its number may be that of one.
    const auto small = table({pool({"a"}), package(0x7F, {typeChunk(2, 0, {text(0), fullEntry(1, 0)})})});
    EXPECT_EQ(entries(small, icon), (std::vector<Entry>{{0, std::nullopt, 1, 0}}));
}

TEST(ResourceTable, theFrameworksResourcesAreNotInAnApp)
{
    const auto bytes
        = table({pool({"a"}), package(0x7F, {typeChunk(6, 0, std::vector<std::optional<Blob>>(12, text(0)))})});
    EXPECT_TRUE(entries(bytes, 0x0106000B).empty());
    EXPECT_FALSE(entries(bytes, 0x7F06000B).empty());
}

TEST(ResourceTable, bothPackagesOfOneIdAreSearched)
{
    const auto bytes = table(
        {pool({"a", "b"}), package(0x7F, {typeChunk(2, 160, {text(0), text(0)})}),
         package(0x02, {typeChunk(2, 240, {text(0), text(0)})}),
         package(0x7F, {typeChunk(2, 320, {text(1), text(1)})})});
    EXPECT_EQ(entries(bytes, icon), (std::vector<Entry>{{160, "a", 3, 0}, {320, "b", 3, 1}}));
}

TEST(ResourceTable, onlyTheFirstPoolAheadOfThePackageCounts)
{
    const auto content = package(0x7F, {typeChunk(2, 0, {text(0), text(0)})});
    EXPECT_EQ(entries(table({pool({"first"}), pool({"second"}), content}), icon).at(0).file, "first");
    EXPECT_EQ(entries(table({content, pool({"late"})}), icon), (std::vector<Entry>{{0, std::nullopt, 3, 0}}));
}

TEST(ResourceTable, aTextThatCannotBeReadKeepsTypeAndData)
{
    const auto bytes = table({pool({"a"}), package(0x7F, {typeChunk(2, 0, {text(0), text(9)})})});
    EXPECT_EQ(entries(bytes, icon), (std::vector<Entry>{{0, std::nullopt, 3, 9}}));
}

TEST(ResourceTable, chunksOfSizeZeroEndTheirWalk)
{
    const auto value = typeChunk(2, 160, {text(0), text(0)});
    const auto stop = Writer().u16(0x0202).u16(8).u32(0).bytes();
    EXPECT_EQ(entries(table({pool({"a"}), package(0x7F, {value, stop, value})}), icon).size(), 1U);
    EXPECT_EQ(entries(table({pool({"a"}), package(0x7F, {stop, value}), package(0x7F, {value})}), icon).size(), 1U);
    EXPECT_TRUE(entries(table({pool({"a"}), stop, package(0x7F, {value})}), icon).empty());
}

TEST(ResourceTable, aTableTooShortForAChunkIsEmpty)
{
    const auto whole = table({pool({"a"}), package(0x7F, {typeChunk(2, 0, {text(0), text(0)})})});
    for (const std::size_t size : {std::size_t{0}, std::size_t{3}, std::size_t{19}})
        EXPECT_TRUE(entries(ByteView(whole).first(size), icon).empty());
}

TEST(ResourceTable, everyTruncationIsSurvived)
{
    const auto whole = table({pool({"a"}), package(0x7F, {typeChunk(2, 0, {text(0), text(0)}, Offsets::sparse)})});
    for (std::size_t size = 0; size <= whole.size(); ++size)
        EXPECT_LE(entries(ByteView(whole).first(size), icon).size(), 1U);
}

TEST(ResourceTable, sparsePairsPastTheEndReadAsZero)
{
    auto bytes = table({pool({"a"}), package(0x7F, {typeChunk(2, 0, {std::nullopt, text(0)}, Offsets::sparse)})});
    // The type chunk is the last one; its count now runs far past the end of the file.
    const auto chunkStart = bytes.size() - (84 + 4 + 16);
    patch32(bytes, chunkStart + 12, 0xFFFFFFFF);
    EXPECT_EQ(entries(bytes, 0x7F020000).size(), 1U);
    EXPECT_TRUE(entries(bytes, 0x7F020007).empty());
}
