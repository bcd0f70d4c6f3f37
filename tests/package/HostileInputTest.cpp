// Files of a mebibyte that ask for as much work as the formats can express. A reader without a bound on what it does
// for one call doesn't get through these within the time that a test may take, or takes the machine's memory.
#include "package/APKManifestReader.h"
#include "package/BinaryXml.h"
#include "package/PackageBuilder.h"
#include "package/PackageLimits.h"
#include "package/ResourceTable.h"

#include <gtest/gtest.h>

#include <random>

#include <sys/resource.h>

using namespace quillnest;
using namespace quillnest::build;

namespace
{
constexpr std::size_t mebibyte = 1024 * 1024;

std::size_t resultSize(const std::vector<std::string> &strings)
{
    std::size_t size = 0;
    for (const auto &text : strings)
        size += text.size();
    return size;
}

/// A pool whose strings all lie over one another: `count` offsets of 0 and one long body.
Blob overlappingPool(std::uint32_t count, Encoding encoding)
{
    const auto body
        = encoding == Encoding::utf8 ? utf8Body(std::string(32767, 'x')) : utf16Body(std::u16string(200000, u'\u20ac'));
    Blob bytes = rawPool({body}, encoding);
    patch32(bytes, 8, count);
    // The strings' data begins behind a table that the file has room for, filled with zeros.
    Writer shifted;
    shifted.add(Blob(bytes.begin(), bytes.begin() + 28)).zeros(4 * std::size_t{200000}).add(body);
    Blob result = shifted.bytes();
    patch32(result, 4, shifted.size());
    patch32(result, 20, 28 + 4 * 200000);
    return result;
}

[[maybe_unused]] long peakKibibytes()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}
} // namespace

TEST(HostileInput, overlappingStringsStopAtTheBudget)
{
    for (const auto encoding : {Encoding::utf8, Encoding::utf16}) {
        const auto bytes = overlappingPool(0xFFFFFFFF, encoding);
        const auto strings = BinaryXml::stringPool(bytes, 0);
        EXPECT_FALSE(strings.empty());
        EXPECT_LT(resultSize(strings), 64 * mebibyte);
        EXPECT_EQ(APKManifestReader::parse(xmlFile({bytes, startElement(0)})), std::nullopt);
    }
}

TEST(HostileInput, aTinyPoolThatClaimsBillionsOfStringsIsCheap)
{
    auto bytes = pool({"x"}, Encoding::utf16);
    patch32(bytes, 8, 0xFFFFFFFF);
    EXPECT_EQ(BinaryXml::stringPool(bytes, 0).size(), 200000U);
    EXPECT_EQ(APKManifestReader::parse(xmlFile({bytes, startElement(0)})), std::nullopt);
#ifndef __SANITIZE_ADDRESS__
    // The address sanitizer keeps freed memory.
    EXPECT_LT(peakKibibytes(), 256 * 1024);
#endif
}

TEST(HostileInput, aManifestThatNamesATextOfMillionsOfUnitsIsRefused)
{
    // The units aren't there, and would be read as zeros.
    auto manifest = xmlFile({pool({"manifest", "package", "x"}, Encoding::utf16), startElement(0, {{1, 2}})});
    const Blob text{1, 0, 'x', 0};
    const auto last = std::search(manifest.begin(), manifest.end(), text.begin(), text.end());
    ASSERT_NE(last, manifest.end());
    const auto length = static_cast<std::size_t>(last - manifest.begin());
    manifest.resize(PackageLimits::largestManifest);
    patch16(manifest, length, 0x8000 | 180);
    EXPECT_EQ(APKManifestReader::parse(manifest), std::nullopt);
    patch16(manifest, length, 0x8000 | 2);
    EXPECT_NE(APKManifestReader::parse(manifest), std::nullopt) << "what is shorter is read";
}

TEST(HostileInput, attributesOfSizeZeroStopAtTheBudget)
{
    // Start elements of 40 bytes, each with 65535 attributes that are one and the same record.
    Writer elements;
    while (elements.size() < mebibyte) {
        elements.u16(0x0102).u16(16).u32(40).u32(0).u32(0);
        elements.u32(none).u32(0).u16(0).u16(0).u16(0xFFFF).u16(0).u16(0).u16(0).u32(0);
    }
    const auto file = xmlFile({pool({std::string(30000, 'n')}), elements.bytes()});
    EXPECT_LT(BinaryXml::elements(file).size(), 30000U);
    EXPECT_EQ(APKManifestReader::parse(file), std::nullopt);
}

TEST(HostileInput, longStringsInManyElementsStopAtTheBudget)
{
    Writer elements;
    while (elements.size() < mebibyte)
        elements.add(startElement(0, {{0, 0}}));
    const auto file = xmlFile({pool({std::string(32767, 'n')}), elements.bytes()});
    std::size_t total = 0;
    for (const auto &element : BinaryXml::elements(file))
        total += element.name.size();
    EXPECT_LT(total, 64 * mebibyte);
}

TEST(HostileInput, poolsAtEveryByteStopAtTheBudget)
{
    // Chunks of one byte each; every second one is a pool whose count is read from its neighbours.
    Blob bytes(mebibyte, 1);
    patch16(bytes, 0, 3);
    patch16(bytes, 2, 8);
    for (std::size_t i = 8; i + 8 <= bytes.size(); i += 8) {
        patch16(bytes, i, 1);
        patch16(bytes, i + 2, 0);
        patch32(bytes, i + 4, 8);
    }
    EXPECT_TRUE(BinaryXml::elements(bytes).empty());
    EXPECT_TRUE(ResourceTable::entries(bytes, 0x7F020001).empty());
}

TEST(HostileInput, nestedPackagesStopAtTheBudget)
{
    // Packages of 12 bytes with headers of none, whose inner walks all run to the end of the file.
    Blob bytes(mebibyte);
    patch16(bytes, 0, 2);
    patch16(bytes, 2, 12);
    for (std::size_t i = 12; i + 12 <= bytes.size(); i += 12) {
        patch16(bytes, i, 0x0200);
        patch16(bytes, i + 2, 12);
        patch32(bytes, i + 4, 12);
        patch32(bytes, i + 8, 0x7F);
    }
    EXPECT_TRUE(ResourceTable::entries(bytes, 0x7F020001).empty());
    // Top-level packages of a size that overflows nothing and ends nowhere.
    for (std::size_t i = 12; i + 12 <= bytes.size(); i += 12)
        patch32(bytes, i + 4, 0xFFFFFFFF);
    EXPECT_TRUE(ResourceTable::entries(bytes, 0x7F020001).empty());
}

TEST(HostileInput, sparseChunksWithEndlessPairsStopAtTheBudget)
{
    // Type chunks of 16 bytes inside one package, each with pairs up to the end of the file and beyond.
    Blob inner;
    Writer writer;
    while (writer.size() < mebibyte)
        writer.u16(0x0201).u16(16).u32(16).u8(2).u8(1).u16(0).u32(0xFFFFFFFF);
    const auto bytes = table({pool({"a"}), package(0x7F, {writer.bytes()})});
    EXPECT_LT(ResourceTable::entries(bytes, 0x7F020000).size(), mebibyte);
    EXPECT_LT(ResourceTable::entries(bytes, 0x7F020001).size(), mebibyte);
}

TEST(HostileInput, oneLongTextInManyConfigurationsStopsAtTheBudget)
{
    Writer types;
    while (types.size() < mebibyte / 2)
        types.add(typeChunk(2, 160, {fullEntry(3, 0)}));
    const auto text = rawPool({utf16Body(std::u16string(250000, u'\u20ac'))}, Encoding::utf16);
    const auto bytes = table({text, package(0x7F, {types.bytes()})});
    std::size_t total = 0;
    for (const auto &entry : ResourceTable::entries(bytes, 0x7F020000))
        total += entry.file ? entry.file->size() : 0;
    EXPECT_GT(total, 0U);
    EXPECT_LT(total, 64 * mebibyte);
}

TEST(HostileInput, changedBytesNeverReadOutside)
{
    // Meant for the sanitizers. UTF-16, since the manifest reader stops the process for some UTF-8.
    const auto manifest = xmlFile(
        {pool({"manifest", "package", "org.example.app"}, Encoding::utf16), startElement(0, {{1, 2}, {2, none, 1, 7}}),
         startElement(2)});
    const auto resources = table(
        {pool({"a", "b"}),
         package(
             0x7F,
             {typeChunk(2, 160, {fullEntry(3, 0), fullEntry(3, 1)}, Offsets::sparse),
              typeChunk(2, 160, {fullEntry(3, 0), compactEntry(3, 1)}, Offsets::shortForm)})});
    // What the strict reader gets keeps its chunk headers: another pool that is UTF-8 would be within its rights to
    // stop the process.
    constexpr std::size_t poolBody = 8 + 28;
    const std::size_t elementBody = manifest.size() - (36 + 2 * 20) - 36 + 16;
    std::mt19937 random(20260102);
    const auto damage = [&random](Blob bytes, std::size_t from, std::size_t count) {
        for (int i = 0; i < 4; ++i)
            bytes.at(from + random() % count) = static_cast<std::uint8_t>(random() % 4 == 0 ? 0xFF : random());
        return bytes;
    };
    std::size_t seen = 0;
    for (int i = 0; i < 300; ++i) {
        auto xml = damage(manifest, 0, manifest.size());
        xml.resize(xml.size() - random() % 8);
        seen += BinaryXml::elements(xml).size();
        seen += ResourceTable::entries(damage(resources, 0, resources.size()), 0x7F020000 + (i % 3)).size();
        APKManifestReader::parse(damage(manifest, poolBody, 60));
        APKManifestReader::parse(damage(manifest, elementBody, 60));
    }
    EXPECT_GT(seen, 0U);
}
