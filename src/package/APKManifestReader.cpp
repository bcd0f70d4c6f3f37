#include "package/APKManifestReader.h"

#include "package/Chunks.h"
#include "package/FatalRangeError.h"
#include "package/PackageLimits.h"
#include "platform/Archives.h"

#include <vector>

namespace quillnest
{

namespace
{
constexpr std::uint32_t utf8Flag = 0x100;
constexpr std::uint32_t noNamespace = 0xFFFFFFFF;

/// What a string costs besides its text.
constexpr std::size_t stringCost = 32;

/// A string begins where the file has ended.
struct RangeError {
};

/// The byte at a position that has to exist.
std::uint8_t requiredByte(ByteView bytes, std::int64_t position)
{
    if (position >= static_cast<std::int64_t>(bytes.size()))
        throw RangeError();
    return bytes[static_cast<std::size_t>(position)];
}

/// Collects the strings of all pools that come before the manifest element.
class StringList
{
public:
    StringList(ByteView bytes, WorkBudget &budget) : m_bytes(bytes), m_budget(budget) { }

    /// False when the pool asks for more than any real one has.
    bool appendPool(std::int64_t pool)
    {
        const auto count = Bytes::u32(m_bytes, pool + 8);
        const bool isUtf8 = (Bytes::u32(m_bytes, pool + 16) & utf8Flag) != 0;
        const auto data = pool + Bytes::u32(m_bytes, pool + 20);
        const auto offsets = pool + Bytes::u16(m_bytes, pool + 2);
        for (std::int64_t i = 0; i < count; ++i) {
            const auto position = data + Bytes::u32(m_bytes, offsets + 4 * i);
            auto text = isUtf8 ? utf8(position) : utf16(position);
            if (!text || !m_budget.spend(stringCost + text->size()))
                return false;
            m_strings.push_back(std::move(*text));
        }
        return true;
    }

    const std::string *at(std::uint32_t index) const { return index < m_strings.size() ? &m_strings[index] : nullptr; }

private:
    std::optional<std::string> utf8(std::int64_t position) const
    {
        auto cursor = position + ((requiredByte(m_bytes, position) & 0x80) != 0 ? 2 : 1);
        std::int64_t length = requiredByte(m_bytes, cursor++);
        if ((length & 0x80) != 0)
            length = ((length & 0x7F) << 8) | Bytes::u8(m_bytes, cursor++);
        if (cursor + length > static_cast<std::int64_t>(m_bytes.size()))
            return std::string();
        return Bytes::repairedUtf8(m_bytes.subspan(static_cast<std::size_t>(cursor), static_cast<std::size_t>(length)));
    }

    std::optional<std::string> utf16(std::int64_t position)
    {
        if (position + 2 > static_cast<std::int64_t>(m_bytes.size()))
            return std::string();
        std::int64_t length = Bytes::u16(m_bytes, position);
        auto cursor = position + 2;
        if ((length & 0x8000) != 0) {
            length = ((length & 0x7FFF) << 16) | Bytes::u16(m_bytes, cursor);
            cursor += 2;
        }
        // A length may name gigabytes that aren't there, all of which would be read as zero units. Each takes two bytes
        // and becomes one or more.
        if (!m_budget.spend(4 * static_cast<std::size_t>(length)))
            return std::nullopt;
        return Bytes::repairedUtf16(Bytes::units(m_bytes, cursor, length));
    }

    const ByteView m_bytes;
    WorkBudget &m_budget;
    std::vector<std::string> m_strings;
};

std::optional<std::string> packageAttribute(ByteView bytes, std::int64_t element, const StringList &strings)
{
    const std::int64_t base = element + 16 + Bytes::u16(bytes, element + 24);
    const std::int64_t size = Bytes::u16(bytes, element + 26);
    const std::int64_t count = Bytes::u16(bytes, element + 28);
    for (std::int64_t i = 0; i < count; ++i) {
        const auto record = base + i * size;
        const auto *name = strings.at(Bytes::u32(bytes, record + 4));
        // One of that name in a namespace is another attribute, and Android doesn't look at it.
        if (!name || *name != "package" || Bytes::u32(bytes, record) != noNamespace)
            continue;
        if (const auto *value = strings.at(Bytes::u32(bytes, record + 8)))
            return *value;
    }
    return std::nullopt;
}

std::optional<std::string> nameIn(ByteView bytes, WorkBudget &budget)
{
    if (bytes.size() < 9 || Bytes::u16(bytes, 0) != ChunkType::xmlFile)
        return std::nullopt;
    StringList strings(bytes, budget);
    auto walk = ChunkWalk::ofFile(bytes);
    while (const auto chunk = walk.next()) {
        if (chunk->size == 0)
            return std::nullopt;
        if (chunk->type == ChunkType::startElement) {
            const auto *name = strings.at(Bytes::u32(bytes, chunk->position + 20));
            if (name && *name == "manifest")
                return packageAttribute(bytes, chunk->position, strings);
        } else if (chunk->type == ChunkType::stringPool && !strings.appendPool(chunk->position)) {
            return std::nullopt;
        }
    }
    return std::nullopt;
}
} // namespace

std::optional<std::string> APKManifestReader::packageName(Archives &archives, const std::string &packagePath)
{
    const auto package = archives.open(packagePath);
    if (!package)
        return std::nullopt;
    const auto bytes = package->read("AndroidManifest.xml", PackageLimits::largestManifest);
    WorkBudget budget(bytes.size());
    try {
        return nameIn(bytes, budget);
    } catch (const RangeError &) {
        // A stranger's file must not end the program with all its windows.
        return std::nullopt;
    }
}

std::optional<std::string> APKManifestReader::parse(ByteView bytes)
{
    WorkBudget budget(bytes.size());
    return parse(bytes, budget);
}

std::optional<std::string> APKManifestReader::parse(ByteView bytes, WorkBudget &budget)
{
    try {
        return nameIn(bytes, budget);
    } catch (const RangeError &) {
        fatalRangeError("APKManifestReader: string offset out of range");
    }
}

} // namespace quillnest
