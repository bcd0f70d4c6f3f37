#include "package/ResourceTable.h"

#include "package/BinaryXml.h"
#include "package/Chunks.h"
#include "package/ValueType.h"

#include <algorithm>

namespace quillnest
{

namespace
{
constexpr std::uint8_t sparseFlag = 0x01;
constexpr std::uint8_t shortOffsetsFlag = 0x02;
constexpr std::uint8_t complexFlag = 0x01;
constexpr std::uint8_t compactFlag = 0x08;

constexpr std::size_t chunkCost = 8;
constexpr std::size_t pairCost = 4;
constexpr std::size_t entryCost = 64;

/// One walk over a table for one resource.
class Search
{
public:
    Search(ByteView bytes, std::uint32_t id, WorkBudget &budget)
        : m_bytes(bytes)
        , m_size(static_cast<std::int64_t>(bytes.size()))
        , m_package(id >> 24)
        , m_type(static_cast<std::uint8_t>(id >> 16))
        , m_entry(id & 0xFFFF)
        , m_budget(budget)
    {
    }

    std::vector<ResourceTable::Entry> run()
    {
        auto walk = ChunkWalk::ofFile(m_bytes);
        while (const auto chunk = walk.next()) {
            if (!m_budget.spend(chunkCost))
                break;
            if (!m_pool && chunk->type == ChunkType::stringPool)
                m_pool = chunk->position;
            if (chunk->type == ChunkType::package && Bytes::looseU32(m_bytes, chunk->position + 8) == m_package)
                walkPackage(*chunk);
        }
        return std::move(m_found);
    }

private:
    void walkPackage(const Chunk &package)
    {
        const auto start = package.position + Bytes::u16(m_bytes, package.position + 2);
        ChunkWalk walk(m_bytes, start, package.position + package.size);
        while (const auto chunk = walk.next()) {
            if (!m_budget.spend(chunkCost))
                return;
            if (chunk->type == ChunkType::type && Bytes::u8(m_bytes, chunk->position + 8) == m_type)
                lookUp(chunk->position);
        }
    }

    void lookUp(std::int64_t chunk)
    {
        const auto offset = entryOffset(chunk);
        if (!offset)
            return;
        const auto record = chunk + Bytes::looseU32(m_bytes, chunk + 16) + *offset;
        const auto flags = Bytes::u8(m_bytes, record + 2);
        // A compact record uses the bits of the other flags for its own ends, so this is asked first.
        if ((flags & compactFlag) != 0) {
            report(chunk, Bytes::u8(m_bytes, record + 3), Bytes::looseU32(m_bytes, record + 4));
        } else if ((flags & complexFlag) == 0) {
            const auto value = record + Bytes::u16(m_bytes, record);
            report(chunk, Bytes::u8(m_bytes, value + 3), Bytes::looseU32(m_bytes, value + 4));
        }
    }

    std::optional<std::int64_t> entryOffset(std::int64_t chunk)
    {
        const auto flags = Bytes::u8(m_bytes, chunk + 9);
        const std::int64_t count = Bytes::looseU32(m_bytes, chunk + 12);
        const auto table = chunk + Bytes::u16(m_bytes, chunk + 2);
        if ((flags & sparseFlag) != 0)
            return sparseOffset(table, count);
        if (count <= m_entry)
            return std::nullopt;
        if ((flags & shortOffsetsFlag) != 0) {
            const auto offset = Bytes::u16(m_bytes, table + 2 * m_entry);
            return offset == 0xFFFF ? std::nullopt : std::optional<std::int64_t>(4 * std::int64_t{offset});
        }
        const auto offset = Bytes::looseU32(m_bytes, table + 4 * m_entry);
        return offset == 0xFFFFFFFF ? std::nullopt : std::optional<std::int64_t>(offset);
    }

    /// The last of the pairs that has our index.
    std::optional<std::int64_t> sparseOffset(std::int64_t table, std::int64_t count)
    {
        // Pairs past the end of the file all read as (0, 0), so one look stands for the rest of them.
        const auto readable = std::clamp<std::int64_t>((m_size - table + 3) / 4, 0, count);
        std::optional<std::int64_t> offset;
        if (!m_budget.spend(pairCost * static_cast<std::size_t>(readable)))
            return std::nullopt;
        for (std::int64_t i = 0; i < readable; ++i) {
            if (Bytes::u16(m_bytes, table + 4 * i) == m_entry)
                offset = 4 * std::int64_t{Bytes::u16(m_bytes, table + 4 * i + 2)};
        }
        if (count > readable && m_entry == 0)
            offset = 0;
        return offset;
    }

    void report(std::int64_t chunk, std::uint8_t type, std::uint32_t data)
    {
        ResourceTable::Entry entry{
            .density = Bytes::u16(m_bytes, chunk + 34),
            .file = std::nullopt,
            .type = type,
            .data = data,
        };
        if (type == ValueType::string && m_pool)
            entry.file = BinaryXml::string(m_bytes, *m_pool, data);
        // A decoded text is dearer than a kept one: it may be as long as the file.
        const auto textCost = entry.file ? 4 * entry.file->size() : 0;
        if (m_budget.spend(entryCost + textCost))
            m_found.push_back(std::move(entry));
    }

    const ByteView m_bytes;
    const std::int64_t m_size;
    const std::uint32_t m_package;
    const std::uint8_t m_type;
    const std::int64_t m_entry;
    WorkBudget &m_budget;
    std::optional<std::int64_t> m_pool;
    std::vector<ResourceTable::Entry> m_found;
};
} // namespace

std::vector<ResourceTable::Entry> ResourceTable::entries(ByteView bytes, std::uint32_t id)
{
    WorkBudget budget(bytes.size());
    return entries(bytes, id, budget);
}

std::vector<ResourceTable::Entry> ResourceTable::entries(ByteView bytes, std::uint32_t id, WorkBudget &budget)
{
    return Search(bytes, id, budget).run();
}

} // namespace quillnest
