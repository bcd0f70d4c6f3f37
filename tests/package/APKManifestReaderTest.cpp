#include "package/APKManifestReader.h"
#include "fakes/FakeArchives.h"
#include "package/PackageBuilder.h"

#include <gtest/gtest.h>

using namespace quillnest;
using namespace quillnest::build;
using APKManifestReader::parse;

namespace
{
const std::vector<std::string> strings{"manifest", "package", "org.example.app", "versionName", "", "wrapper"};
}

TEST(APKManifestReader, readsThePackageName)
{
    for (const auto encoding : {Encoding::utf8, Encoding::utf16}) {
        const auto file = xmlFile(
            {pool(strings, encoding), chunk(0x0180, {}, Blob(8)), chunk(0x0100, {}, Blob(16)),
             startElement(0, {{3, 4}, {1, 2}}), endElement(0)});
        EXPECT_EQ(parse(file), "org.example.app");
    }
}

TEST(APKManifestReader, eightBytesOrAnotherFileTypeAreAbsentAtOnce)
{
    auto file = xmlFile({pool(strings), startElement(0, {{1, 2}})});
    EXPECT_EQ(parse(ByteView(file).first(8)), std::nullopt);
    EXPECT_EQ(parse({}), std::nullopt);
    for (const std::uint32_t type : {0U, 2U, 4U, 0x0103U}) {
        patch16(file, 0, type);
        EXPECT_EQ(parse(file), std::nullopt);
    }
    patch16(file, 0, 3);
    EXPECT_EQ(parse(file), "org.example.app");
}

TEST(APKManifestReader, aHeaderThatLeavesNoRoomForAChunkIsAbsent)
{
    auto file = xmlFile({pool(strings), startElement(0, {{1, 2}})});
    patch16(file, 2, static_cast<std::uint32_t>(file.size() - 7));
    EXPECT_EQ(parse(file), std::nullopt);
}

TEST(APKManifestReader, aChunkOfSizeZeroBeforeTheManifestIsAbsent)
{
    const auto stop = Writer().u16(0x0180).u16(8).u32(0).bytes();
    EXPECT_EQ(parse(xmlFile({pool(strings), stop, startElement(0, {{1, 2}})})), std::nullopt);
}

TEST(APKManifestReader, aManifestElementOfSizeZeroIsAbsent)
{
    auto element = startElement(0, {{1, 2}});
    patch32(element, 4, 0);
    EXPECT_EQ(parse(xmlFile({pool(strings), element})), std::nullopt);
}

TEST(APKManifestReader, aFileThatEndsBeforeTheManifestIsAbsent)
{
    EXPECT_EQ(parse(xmlFile({pool(strings)})), std::nullopt);
    EXPECT_EQ(parse(xmlFile({pool(strings), startElement(5, {{1, 2}})})), std::nullopt);
}

TEST(APKManifestReader, aSecondPoolExtendsTheFirst)
{
    const auto file = xmlFile({pool({"package", "org.example.app"}), pool({"manifest"}), startElement(2, {{0, 1}})});
    EXPECT_EQ(parse(file), "org.example.app");
}

TEST(APKManifestReader, otherElementsBeforeTheManifestAreSkipped)
{
    const auto file = xmlFile({pool(strings), startElement(5, {{1, 3}}), startElement(99), startElement(0, {{1, 2}})});
    EXPECT_EQ(parse(file), "org.example.app");
}

TEST(APKManifestReader, aPackageAttributeWithoutTextIsPassedOver)
{
    EXPECT_EQ(parse(xmlFile({pool(strings), startElement(0, {{1, none}, {1, 2}})})), "org.example.app");
    EXPECT_EQ(parse(xmlFile({pool(strings), startElement(0, {{1, none, 3, 2}})})), std::nullopt);
}

TEST(APKManifestReader, theFirstPackageAttributeWithTextWins)
{
    EXPECT_EQ(parse(xmlFile({pool(strings), startElement(0, {{1, 2}, {1, 3}})})), "org.example.app");
}

TEST(APKManifestReader, anAttributeOfThatNameInANamespaceIsAnotherOne)
{
    const Attribute foreign{.name = 1, .raw = 3, .nameSpace = 5};
    EXPECT_EQ(parse(xmlFile({pool(strings), startElement(0, {foreign, {1, 2}})})), "org.example.app");
    EXPECT_EQ(parse(xmlFile({pool(strings), startElement(0, {foreign})})), std::nullopt);
}

TEST(APKManifestReader, theElementSaysWhereItsAttributesBegin)
{
    auto element = startElement(0, {{1, 2}});
    // Eight bytes of something new lie before them.
    constexpr std::size_t head = 36;
    element.insert(element.begin() + head, 8, 0);
    patch32(element, 4, static_cast<std::uint32_t>(element.size()));
    patch16(element, 24, 28);
    EXPECT_EQ(parse(xmlFile({pool(strings), element})), "org.example.app");
}

TEST(APKManifestReader, anEmptyNameIsReturnedAsSuch)
{
    EXPECT_EQ(parse(xmlFile({pool(strings), startElement(0, {{1, 4}})})), "");
}

TEST(APKManifestReader, anAttributeNameOutsideTheListIsPassedOver)
{
    EXPECT_EQ(parse(xmlFile({pool(strings), startElement(0, {{77, 3}, {1, 2}})})), "org.example.app");
}

TEST(APKManifestReader, neitherLimitOfTheOtherReaderApplies)
{
    std::vector<Blob> many(250000, utf8Body("s"));
    many[249997] = utf8Body("manifest");
    many[249998] = utf8Body("package");
    many[249999] = utf8Body("org.example.far");
    EXPECT_EQ(
        parse(xmlFile({rawPool(many, Encoding::utf8), startElement(249997, {{249998, 249999}})})), "org.example.far");

    const std::vector<Blob> longText{
        utf16Body(u"manifest"), utf16Body(u"package"), utf16Body(std::u16string(5000, u'x'))};
    EXPECT_EQ(parse(xmlFile({rawPool(longText, Encoding::utf16), startElement(0, {{1, 2}})})), std::string(5000, 'x'));
}

TEST(APKManifestReader, aUtf8StringThatRunsPastTheEndIsEmpty)
{
    auto file = xmlFile({pool(strings), startElement(0, {{1, 2}})});
    const Blob length{15, 15, 'o', 'r', 'g'};
    const auto found = std::search(file.begin(), file.end(), length.begin(), length.end());
    ASSERT_NE(found, file.end());
    // A length of two bytes, the larger one: 0x7FFF.
    found[1] = 0xFF;
    EXPECT_EQ(parse(file), "");
}

TEST(APKManifestReader, aUtf8OffsetPastTheEndStopsTheProcess)
{
    auto file = xmlFile({pool(strings), startElement(0, {{1, 2}})});
    constexpr std::size_t thirdOffset = 8 + 28 + 2 * 4;
    patch32(file, thirdOffset, 0x7FFFFFFF);
    EXPECT_DEATH(parse(file), "string offset out of range");
    // The first byte past the end is the first one that is fatal.
    const auto data = static_cast<std::uint32_t>(8 + 28 + strings.size() * 4);
    patch32(file, thirdOffset, static_cast<std::uint32_t>(file.size()) - data);
    EXPECT_DEATH(parse(file), "string offset out of range");
}

TEST(APKManifestReader, aUtf8LengthByteThatIsTheFirstPastTheEndStopsTheProcess)
{
    auto file = xmlFile({pool(strings), startElement(0, {{1, 2}})});
    const auto data = static_cast<std::uint32_t>(8 + 28 + strings.size() * 4);
    // The last byte of the file is 0, so the character count takes one byte and the length would be the next.
    patch32(file, 8 + 28 + 2 * 4, static_cast<std::uint32_t>(file.size()) - data - 1);
    EXPECT_DEATH(parse(file), "string offset out of range");
}

TEST(APKManifestReader, theSameOffsetIsHarmlessInUtf16)
{
    auto file = xmlFile({pool(strings, Encoding::utf16), startElement(0, {{1, 2}})});
    patch32(file, 8 + 28 + 2 * 4, 0x7FFFFFFF);
    EXPECT_EQ(parse(file), "");
}

TEST(APKManifestReader, aUtf16StringThatRunsPastTheEndIsPadded)
{
    // The manifest comes first in the file's second pool's stead: the name lies at the very end.
    auto element = startElement(0, {{1, 2}});
    auto file = xmlFile({pool(strings, Encoding::utf16), element});
    const auto data = static_cast<std::uint32_t>(8 + 28 + strings.size() * 4);
    const auto end = static_cast<std::uint32_t>(file.size());
    const auto tail = Writer().u16(3).u16('a').bytes();
    file.insert(file.end(), tail.begin(), tail.end());
    patch32(file, 8 + 28 + 2 * 4, end - data);
    EXPECT_EQ(parse(file), std::string("a\0\0", 3));
}

TEST(APKManifestReader, aUtf16UnitThatIsCutInTheMiddleCountsAsZero)
{
    auto file = xmlFile({pool(strings, Encoding::utf16), startElement(0, {{1, 2}})});
    const auto data = static_cast<std::uint32_t>(8 + 28 + strings.size() * 4);
    const auto end = static_cast<std::uint32_t>(file.size());
    const auto tail = Writer().u16(2).u16('a').u8('b').bytes();
    file.insert(file.end(), tail.begin(), tail.end());
    patch32(file, 8 + 28 + 2 * 4, end - data);
    EXPECT_EQ(parse(file), std::string("a\0", 2));
}

TEST(APKManifestReader, aPackageWhoseManifestWouldStopTheProcessHasNoName)
{
    auto file = xmlFile({pool(strings), startElement(0, {{1, 2}})});
    FakeArchives archives;
    archives.packages["app.apk"] = {{"AndroidManifest.xml", file}};
    EXPECT_TRUE(APKManifestReader::packageName(archives, "app.apk"));
    patch32(file, 8 + 28 + 2 * 4, 0x7FFFFFFF);
    archives.packages["app.apk"] = {{"AndroidManifest.xml", file}};
    EXPECT_EQ(APKManifestReader::packageName(archives, "app.apk"), std::nullopt);
}
