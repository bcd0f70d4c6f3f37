#pragma once

#include "package/PackageBuilder.h"

#include <string>
#include <vector>

/// Inputs of a mebibyte, each built to be as dear as the format allows for one of the readers.
namespace quillnest::build
{

struct WorstCase {
    /// Which reader it is meant for: "elements", "stringPool", "string", "entries" or "parse".
    std::string reader;
    std::string name;
    Blob bytes;
    /// What the reader is given besides the bytes: an offset, an offset and an index, or an id.
    std::vector<std::uint32_t> arguments;
};

/// Cut or filled up with zeros to a mebibyte.
inline Blob toMebibyte(Blob bytes)
{
    bytes.resize(std::size_t{1024} * 1024);
    return bytes;
}

/// Pieces after one another up to a mebibyte; what is cut off from the last one is for the reader to cope with.
inline Blob repeated(const Blob &head, const Blob &piece)
{
    Writer writer;
    writer.add(head);
    while (writer.size() < 1024 * 1024)
        writer.add(piece);
    return toMebibyte(writer.bytes());
}

/// A pool that takes all of a mebibyte but `before` bytes: a table of zeros as long as it can be, behind it the one
/// text that all strings are. In UTF-16 the count goes on past the table, where every reader has a guard.
inline Blob onePlacePool(const Blob &body, Encoding encoding, std::size_t before)
{
    constexpr std::uint32_t headerSize = 28;
    const auto size = static_cast<std::uint32_t>(1024 * 1024 - before);
    const auto tableSize = (size - headerSize - static_cast<std::uint32_t>(body.size())) / 4 * 4;
    Writer writer;
    writer.u16(0x0001).u16(headerSize).u32(size).u32(encoding == Encoding::utf8 ? tableSize / 4 : none).u32(0);
    writer.u32(encoding == Encoding::utf8 ? 0x100 : 0).u32(headerSize + tableSize).u32(0).zeros(tableSize).add(body);
    return writer.zeros(size - writer.size()).bytes();
}

/// 32767 bytes, none of which is valid, so that each becomes three.
inline Blob invalidUtf8Body()
{
    return utf8Body(std::string(32767, '\xFF'));
}

/// 100000 lone surrogates, each of which becomes three bytes.
inline Blob invalidUtf16Body()
{
    return utf16Body(std::u16string(100000, char16_t{0xD800}));
}

/// Pools that hold every kind of dear string, with a name.
inline std::vector<std::pair<std::string, Blob>> worstPools(std::size_t before)
{
    std::vector<std::pair<std::string, Blob>> pools;
    pools.emplace_back("oneInvalidUtf8Text", onePlacePool(invalidUtf8Body(), Encoding::utf8, before));
    pools.emplace_back("oneInvalidUtf16Text", onePlacePool(invalidUtf16Body(), Encoding::utf16, before));
    // A length of 0x7FFFFFFF units, nearly all of which are not there.
    const auto endless = Writer().u16(0xFFFF).u16(0xFFFF).bytes();
    pools.emplace_back("endlessUtf16Text", onePlacePool(endless, Encoding::utf16, before));
    const auto padded = Writer().u16(0x8000 | 0x1A0).u16(0).bytes();
    pools.emplace_back("paddedUtf16Text", onePlacePool(padded, Encoding::utf16, before));
    pools.emplace_back("emptyTexts", onePlacePool(Blob{0, 0}, Encoding::utf8, before));
    pools.emplace_back("shortTexts", onePlacePool(utf8Body("123456789012345"), Encoding::utf8, before));
    pools.emplace_back("textsThatNeedMemory", onePlacePool(utf8Body("1234567890123456"), Encoding::utf8, before));
    return pools;
}

/// An XML file around chunks that fill it.
inline Blob worstXml(const Blob &chunks)
{
    return toMebibyte(Writer().u16(3).u16(8).u32(1024 * 1024).add(chunks).bytes());
}

/// 65535 attributes on every start element, all of them one record.
inline Blob attributesOfSizeZero(const std::string &element, const std::string &attribute)
{
    Writer tag;
    tag.u16(0x0102).u16(16).u32(36).u32(1).u32(none).u32(none).u32(0);
    // The record begins 12 bytes into the tag's own fields, so that its name is the 1 here.
    tag.u16(12).u16(0).u16(0xFFFF).u16(0).u16(1).u16(0);
    return worstXml(repeated(pool({element, attribute}), tag.bytes()));
}

/// Attributes whose names differ in their last bytes alone, in descending order.
inline Blob longNamesAlike()
{
    std::vector<std::string> names;
    std::vector<Attribute> attributes;
    for (std::uint32_t i = 0; i < 400; ++i) {
        names.push_back(std::string(2000, 'n') + std::to_string(9999 - i));
        attributes.push_back({i, i});
    }
    return worstXml(repeated(pool(names), startElement(0, attributes)));
}

/// Chunks of 8 bytes, each of which is read as if its successors were the rest of it.
inline Blob overlappingChunks(std::uint32_t fileType, std::uint32_t type, std::uint32_t headerSize)
{
    return repeated(
        Writer().u16(fileType).u16(8).u32(1024 * 1024).bytes(), Writer().u16(type).u16(headerSize).u32(8).bytes());
}

inline void addPoolCases(std::vector<WorstCase> &cases)
{
    for (const auto &[name, bytes] : worstPools(0)) {
        cases.push_back({"stringPool", name, bytes, {0}});
        cases.push_back({"string", name, bytes, {0, 199999}});
    }
    constexpr std::uint32_t longest = 500000;
    const auto whole = rawPool({utf16Body(std::u16string(longest, char16_t{0xD800}))}, Encoding::utf16);
    cases.push_back({"string", "oneTextOfTheWholeFile", toMebibyte(whole), {0, 0}});
    for (const auto &[name, bytes] : worstPools(8)) {
        cases.push_back({"elements", name, worstXml(bytes), {}});
        cases.push_back({"parse", name, worstXml(bytes), {}});
    }
}

inline void addXmlCases(std::vector<WorstCase> &cases)
{
    const std::string longName(30000, 'n');
    cases.push_back({"elements", "attributesOfSizeZero", attributesOfSizeZero("tag", "name"), {}});
    cases.push_back({"elements", "longAttributesOfSizeZero", attributesOfSizeZero("tag", longName), {}});
    cases.push_back({"elements", "longNamesAlike", longNamesAlike(), {}});
    cases.push_back({"elements", "manyTags", worstXml(repeated(pool({"a"}), startElement(0))), {}});
    cases.push_back({"elements", "manyLongTags", worstXml(repeated(pool({longName}), startElement(0))), {}});
    cases.push_back({"elements", "overlappingTags", overlappingChunks(3, 0x0102, 1), {}});
    cases.push_back({"elements", "overlappingPools", overlappingChunks(3, 0x0001, 4), {}});
    cases.push_back({"elements", "smallestChunks", repeated(Writer().u16(3).u16(4).bytes(), {4, 0, 0, 0}), {}});
    cases.push_back({"parse", "attributesOfSizeZero", attributesOfSizeZero("manifest", "packagE"), {}});
    cases.push_back({"parse", "manyTags", worstXml(repeated(pool({"manifesT"}), startElement(0))), {}});
    cases.push_back({"parse", "overlappingPools", overlappingChunks(3, 0x0001, 4), {}});
    cases.push_back({"parse", "overlappingTags", overlappingChunks(3, 0x0102, 1), {}});
    cases.push_back({"parse", "smallestChunks", repeated(Writer().u16(3).u16(4).bytes(), {4, 0, 0, 0}), {}});
}

inline void addTableCases(std::vector<WorstCase> &cases)
{
    const auto inPackage = [](const Blob &strings, const Blob &piece) {
        const auto tail = repeated({}, piece);
        return toMebibyte(table({strings, package(0x7F, {tail})}));
    };
    const auto add = [&cases](const std::string &name, const Blob &bytes, std::uint32_t id) {
        cases.push_back({"entries", name, bytes, {id}});
    };
    const Blob endlessPairs = Writer().u16(0x0201).u16(16).u32(16).u8(2).u8(1).u16(0).u32(none).bytes();
    add("endlessSparsePairs", inPackage(pool({"a"}), endlessPairs), 0x7F020000);
    add("endlessSparsePairsInVain", inPackage(pool({"a"}), endlessPairs), 0x7F02EEEE);
    const auto value = typeChunk(2, 160, {fullEntry(3, 0)});
    add("manyConfigurations", inPackage(pool({"a"}), value), 0x7F020000);
    add("oneInvalidUtf8Text", inPackage(rawPool({invalidUtf8Body()}, Encoding::utf8), value), 0x7F020000);
    add("oneInvalidUtf16Text", inPackage(rawPool({invalidUtf16Body()}, Encoding::utf16), value), 0x7F020000);
    const Blob typeOfEight = Writer().u16(0x0201).u16(8).u32(8).bytes();
    add("overlappingTypes", inPackage(pool({"a"}), typeOfEight), 0x7F010001);
    const Blob packageOfTwelve = Writer().u16(0x0200).u16(0).u32(12).u32(0x7F).bytes();
    add("manyPackages", repeated(Writer().u16(2).u16(12).u32(none).u32(1).bytes(), packageOfTwelve), 0x7F020000);
    add("smallestChunks", repeated(Writer().u16(2).u16(4).bytes(), {4, 0, 0, 0}), 0x7F020000);
}

inline std::vector<WorstCase> worstCases()
{
    std::vector<WorstCase> cases;
    addPoolCases(cases);
    addXmlCases(cases);
    addTableCases(cases);
    return cases;
}

} // namespace quillnest::build
