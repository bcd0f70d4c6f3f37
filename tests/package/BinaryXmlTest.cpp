#include "package/BinaryXml.h"
#include "package/APKManifestReader.h"
#include "package/PackageBuilder.h"

#include <gtest/gtest.h>

using namespace quillnest;
using namespace quillnest::build;

namespace
{
std::vector<std::string> names(const std::vector<BinaryXml::Element> &elements)
{
    std::vector<std::string> result;
    for (const auto &element : elements)
        result.push_back(element.name);
    return result;
}
} // namespace

TEST(BinaryXml, u32CountsBytesOutsideTheArrayAsZero)
{
    const Blob bytes{1, 2, 3, 4, 5};
    EXPECT_EQ(BinaryXml::u32(bytes, 0), 0x04030201);
    EXPECT_EQ(BinaryXml::u32(bytes, 3), 0x0504);
    EXPECT_EQ(BinaryXml::u32(bytes, -3), 0x01000000);
    EXPECT_EQ(BinaryXml::u32({}, 0), 0);
}

TEST(BinaryXml, elementsComeFlatInDocumentOrderWithTheirAttributes)
{
    const auto file = xmlFile(
        {pool({"manifest", "package", "org.example", "application", "icon"}), chunk(0x0180, {}, Blob(8)),
         startElement(0, {{1, 2, 3, 2}}), startElement(3, {{4, none, 1, 0x7F010002}}), endElement(3), endElement(0)});
    const auto elements = BinaryXml::elements(file);
    ASSERT_EQ(names(elements), (std::vector<std::string>{"manifest", "application"}));
    EXPECT_EQ(elements[0].attrs.at("package"), (BinaryXml::Attr{3, 2, "org.example"}));
    EXPECT_EQ(elements[1].attrs.at("icon"), (BinaryXml::Attr{1, 0x7F010002, std::nullopt}));
}

TEST(BinaryXml, anElementWithoutAttributesHasAnEmptyMap)
{
    const auto elements = BinaryXml::elements(xmlFile({pool({"a"}), startElement(0)}));
    ASSERT_EQ(elements.size(), 1U);
    EXPECT_TRUE(elements[0].attrs.empty());
}

TEST(BinaryXml, theFileChunkTypeIsNotLookedAt)
{
    auto file = xmlFile({pool({"a"}), startElement(0)});
    patch16(file, 0, 0x1234);
    EXPECT_EQ(names(BinaryXml::elements(file)), std::vector<std::string>{"a"});
}

TEST(BinaryXml, fewerThanFourBytesHaveNoElements)
{
    for (std::size_t size = 0; size < 4; ++size)
        EXPECT_TRUE(BinaryXml::elements(Blob(size, 1)).empty());
}

TEST(BinaryXml, aFileOfHeaderPlusEightBytesIsWalked)
{
    // One chunk header and nothing else: a start element whose fields are all past the end.
    const auto file = Writer().u16(3).u16(8).u32(16).u16(0x0102).u16(16).u32(8).bytes();
    EXPECT_EQ(names(BinaryXml::elements(file)), std::vector<std::string>{""});
    EXPECT_TRUE(BinaryXml::elements(Blob(file.begin(), file.end() - 1)).empty());
}

TEST(BinaryXml, eightBytesWithoutAHeaderAreWalked)
{
    // Too short a file, and of the wrong type, for the reader of the package's name.
    const auto file = Writer().u16(0x0102).u16(0).u32(8).bytes();
    EXPECT_EQ(names(BinaryXml::elements(file)), std::vector<std::string>{""});
    EXPECT_EQ(APKManifestReader::parse(file), std::nullopt);
}

TEST(BinaryXml, aChunkOfSizeZeroAfterThePoolEndsTheScan)
{
    const auto stop = Writer().u16(0x0180).u16(8).u32(0).bytes();
    EXPECT_TRUE(BinaryXml::elements(xmlFile({pool({"a"}), stop, startElement(0)})).empty());
}

TEST(BinaryXml, aRestTooShortForAChunkIsNotLookedAt)
{
    auto file = xmlFile({pool({"a"}), startElement(0)});
    const auto rest = Writer().u16(0x0102).u16(16).u16(8).u8(0).bytes();
    file.insert(file.end(), rest.begin(), rest.end());
    EXPECT_EQ(BinaryXml::elements(file).size(), 1U);
    file.push_back(0);
    EXPECT_EQ(BinaryXml::elements(file).size(), 2U);
}

TEST(BinaryXml, aStartElementOfSizeZeroIsTheLastOne)
{
    auto last = startElement(0);
    patch32(last, 4, 0);
    EXPECT_EQ(BinaryXml::elements(xmlFile({pool({"a"}), startElement(0), last, startElement(0)})).size(), 2U);
}

TEST(BinaryXml, aLaterPoolReplacesTheEarlierOne)
{
    const auto file = xmlFile(
        {pool({"first", "second"}), startElement(1), pool({"other"}), startElement(0),
         startElement(1, {{0, 1, 3, 0}})});
    const auto elements = BinaryXml::elements(file);
    EXPECT_EQ(names(elements), (std::vector<std::string>{"second", "other", ""}));
    EXPECT_EQ(elements[2].attrs.at("other").string, std::nullopt);
}

TEST(BinaryXml, theLaterOfTwoAttributesOfOneNameWinsWhateverTheNamespace)
{
    const auto file
        = xmlFile({pool({"a", "icon", "one", "two"}), startElement(0, {{1, 2, 3, 2, 0}, {1, 3, 3, 3, none}})});
    EXPECT_EQ(BinaryXml::elements(file).at(0).attrs.at("icon").string, "two");
}

TEST(BinaryXml, anAttributeWithoutRawValueKeepsTypeAndData)
{
    const auto file = xmlFile({pool({"a", "width"}), startElement(0, {{1, none, 5, 0x00001801}})});
    EXPECT_EQ(BinaryXml::elements(file).at(0).attrs.at("width"), (BinaryXml::Attr{5, 0x1801, std::nullopt}));
}

TEST(BinaryXml, anAttributeWithANameOutsideThePoolIsDropped)
{
    const auto file = xmlFile({pool({"a", "b"}), startElement(0, {{2, 0, 3, 0}, {1, 0, 3, 0}})});
    const auto attrs = BinaryXml::elements(file).at(0).attrs;
    EXPECT_EQ(attrs.size(), 1U);
    EXPECT_TRUE(attrs.contains("b"));
}

TEST(BinaryXml, attributeStartAndSizeAreTakenFromTheElement)
{
    // Records of 24 bytes, beginning 4 bytes later than usual.
    Writer body;
    body.u32(none).u32(0).u16(24).u16(24).u16(2).u16(0).u16(0).u16(0).u32(0xAAAAAAAA);
    for (const std::uint32_t name : {1U, 2U})
        body.u32(none).u32(name).u32(none).u16(8).u8(0).u8(16).u32(name + 40).u32(0xBBBBBBBB);
    const auto element = chunk(0x0102, Writer().u32(1).u32(none).bytes(), body.bytes());
    const auto attrs = BinaryXml::elements(xmlFile({pool({"a", "b", "c"}), element})).at(0).attrs;
    EXPECT_EQ(attrs.at("b").data, 41U);
    EXPECT_EQ(attrs.at("c").data, 42U);
}

TEST(StringPool, decodesBothEncodings)
{
    EXPECT_EQ(BinaryXml::stringPool(pool({"one", "", "two"}), 0), (std::vector<std::string>{"one", "", "two"}));
    EXPECT_EQ(
        BinaryXml::stringPool(pool({"one", "", "two"}, Encoding::utf16), 0),
        (std::vector<std::string>{"one", "", "two"}));
    EXPECT_EQ(
        BinaryXml::stringPool(rawPool({utf16Body(u"\u20ac\U0001F600")}, Encoding::utf16), 0),
        std::vector<std::string>{"\u20ac\U0001F600"});
}

TEST(StringPool, twoByteLengthsOfUtf8AreRead)
{
    const std::string text(300, 'x');
    EXPECT_EQ(BinaryXml::stringPool(pool({text, "after"}), 0), (std::vector<std::string>{text, "after"}));
    EXPECT_EQ(BinaryXml::string(pool({text, "after"}), 0, 0), text);
}

TEST(StringPool, anEmptyPoolIsEmpty)
{
    EXPECT_TRUE(BinaryXml::stringPool(pool({}), 0).empty());
}

TEST(StringPool, invalidTextIsRepaired)
{
    const Blob invalid{2, 2, 'a', 0xFF, 0};
    EXPECT_EQ(BinaryXml::stringPool(rawPool({invalid}, Encoding::utf8), 0).at(0), "a\uFFFD");
    EXPECT_EQ(BinaryXml::string(rawPool({invalid}, Encoding::utf8), 0, 0), "a\uFFFD");
    const auto lone = rawPool({utf16Body(std::u16string{u'a', char16_t{0xD800}})}, Encoding::utf16);
    EXPECT_EQ(BinaryXml::stringPool(lone, 0).at(0), "a\uFFFD");
}

TEST(StringPool, aUtf8StringPastTheEndIsEmptyInThePoolAndAbsentByItself)
{
    const Blob tooLong{4, 100, 'a', 'b', 'c', 'd'};
    const auto bytes = rawPool({utf8Body("fine"), tooLong}, Encoding::utf8);
    EXPECT_EQ(BinaryXml::stringPool(bytes, 0), (std::vector<std::string>{"fine", ""}));
    EXPECT_EQ(BinaryXml::string(bytes, 0, 0), "fine");
    EXPECT_EQ(BinaryXml::string(bytes, 0, 1), std::nullopt);
}

TEST(StringPool, aUtf16StringPastTheEndIsPaddedInThePoolAndAbsentByItself)
{
    const Blob tooLong = Writer().u16(4).u16('a').u16('b').bytes();
    const auto bytes = rawPool({tooLong}, Encoding::utf16);
    const auto size = bytes.size() - 2; // What is left of the padding to a multiple of four.
    EXPECT_EQ(BinaryXml::stringPool(ByteView(bytes).first(size), 0).at(0), std::string("ab\0\0", 4));
    EXPECT_EQ(BinaryXml::string(ByteView(bytes).first(size), 0, 0), std::nullopt);
}

TEST(StringPool, aUtf16UnitThatIsCutInTheMiddleKeepsTheByteThatIsThere)
{
    const auto bytes = rawPool({Writer().u16(2).u16('a').u16('b').bytes()}, Encoding::utf16);
    EXPECT_EQ(BinaryXml::stringPool(ByteView(bytes).first(bytes.size() - 3), 0).at(0), "ab");
    EXPECT_EQ(BinaryXml::stringPool(ByteView(bytes).first(bytes.size() - 4), 0).at(0), std::string("a\0", 2));
}

TEST(StringPool, aPoolThatBeginsAheadOfTheFileHasEmptyTexts)
{
    // The chunk's first eight bytes are missing, and with them the place of the table of offsets.
    for (const std::uint32_t flags : {0x100U, 0U}) {
        const auto rest = Writer().u32(2).u32(0).u32(flags).u32(0).u32(0).u32(0).bytes();
        EXPECT_EQ(BinaryXml::stringPool(rest, -8), (std::vector<std::string>{"", ""}));
        EXPECT_EQ(BinaryXml::string(rest, -8, 0), std::nullopt);
    }
}

TEST(StringPool, anOffsetPastTheEndGivesAnEmptyElementAndKeepsTheOthersAligned)
{
    for (const auto encoding : {Encoding::utf8, Encoding::utf16}) {
        auto bytes = pool({"one", "two", "three"}, encoding);
        patch32(bytes, 28 + 4, 0x7FFFFFFF);
        EXPECT_EQ(BinaryXml::stringPool(bytes, 0), (std::vector<std::string>{"one", "", "three"}));
        EXPECT_EQ(BinaryXml::string(bytes, 0, 1), std::nullopt);
        EXPECT_EQ(BinaryXml::string(bytes, 0, 2), "three");
    }
}

TEST(StringPool, aUtf16StringIsCutTo4096UnitsInThePoolAndWholeByItself)
{
    const auto bytes = rawPool({utf16Body(std::u16string(5000, u'x'))}, Encoding::utf16);
    EXPECT_EQ(BinaryXml::stringPool(bytes, 0).at(0), std::string(4096, 'x'));
    EXPECT_EQ(BinaryXml::string(bytes, 0, 0), std::string(5000, 'x'));
    const auto exact = rawPool({utf16Body(std::u16string(4096, u'x'))}, Encoding::utf16);
    EXPECT_EQ(BinaryXml::stringPool(exact, 0).at(0), std::string(4096, 'x'));
}

TEST(StringPool, aUtf16LengthOfTwoUnitsIsRead)
{
    const std::u16string text(40000, u'x');
    EXPECT_EQ(BinaryXml::string(rawPool({utf16Body(text)}, Encoding::utf16), 0, 0)->size(), 40000U);
}

TEST(StringPool, anIndexOutsideThePoolIsAbsent)
{
    const auto bytes = pool({"one"});
    EXPECT_EQ(BinaryXml::string(bytes, 0, -1), std::nullopt);
    EXPECT_EQ(BinaryXml::string(bytes, 0, 1), std::nullopt);
}

TEST(StringPool, stringsPastTheLimitAreOutOfRange)
{
    std::vector<Blob> bodies(250000, utf8Body("s"));
    bodies[0] = utf8Body("name");
    bodies[199999] = utf8Body("last");
    bodies[200000] = utf8Body("past");
    const auto strings = rawPool(bodies, Encoding::utf8);
    const auto decoded = BinaryXml::stringPool(strings, 0);
    ASSERT_EQ(decoded.size(), 200000U);
    EXPECT_EQ(decoded.back(), "last");
    // The limit is the whole pool's alone.
    EXPECT_EQ(BinaryXml::string(strings, 0, 200000), "past");

    const auto file = xmlFile({strings, startElement(0, {{199999, 200000, 3, 7}, {200000, 0, 3, 8}})});
    const auto attrs = BinaryXml::elements(file).at(0).attrs;
    ASSERT_EQ(attrs.size(), 1U);
    EXPECT_EQ(attrs.at("last"), (BinaryXml::Attr{3, 7, std::nullopt}));
}
