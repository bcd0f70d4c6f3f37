#pragma once

#include "package/Bytes.h"

#include <optional>

namespace quillnest
{

/// Compiled XML files and resource tables are made of chunks: a type, the size of the chunk's head, and the size of the
/// whole, little-endian, in the first 8 bytes. The formats are those of Android's own packaging tools.
namespace ChunkType
{
constexpr std::uint16_t stringPool = 0x0001;
constexpr std::uint16_t xmlFile = 0x0003;
constexpr std::uint16_t startElement = 0x0102;
constexpr std::uint16_t endElement = 0x0103;
constexpr std::uint16_t package = 0x0200;
constexpr std::uint16_t type = 0x0201;
} // namespace ChunkType

struct Chunk {
    std::int64_t position = 0;
    std::uint16_t type = 0;
    /// As the chunk says, so it may be 0 and may lead past the end.
    std::int64_t size = 0;
};

/// Goes from chunk to chunk by their sizes. Touches nothing but the chunks' heads; what lies in a chunk is each
/// reader's own affair, as are the costs.
class ChunkWalk
{
public:
    /// Begins at a position and goes on as long as a head fits in front of `end`, which may lie past the array; fields
    /// out there are 0.
    ChunkWalk(ByteView bytes, std::int64_t start, std::int64_t end) : m_bytes(bytes), m_position(start), m_end(end) { }

    /// The chunks of a whole file, behind its head.
    static ChunkWalk ofFile(ByteView bytes)
    {
        return {bytes, Bytes::u16(bytes, 2), static_cast<std::int64_t>(bytes.size())};
    }

    /// The next chunk; absent at the end. A chunk of size 0 is the last one.
    std::optional<Chunk> next()
    {
        if (m_isOver || m_position + headSize > m_end)
            return std::nullopt;
        const Chunk chunk{
            m_position, Bytes::u16(m_bytes, m_position), std::int64_t{Bytes::looseU32(m_bytes, m_position + 4)}};
        m_position += chunk.size;
        m_isOver = chunk.size == 0;
        return chunk;
    }

private:
    static constexpr std::int64_t headSize = 8;

    const ByteView m_bytes;
    std::int64_t m_position;
    const std::int64_t m_end;
    bool m_isOver = false;
};

} // namespace quillnest
