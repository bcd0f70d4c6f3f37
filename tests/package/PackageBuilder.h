#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// Makes the files that the readers read, byte by byte and independently of them.
namespace quillnest::build
{

using Blob = std::vector<std::uint8_t>;

constexpr std::uint32_t none = 0xFFFFFFFF;

/// Little-endian writer.
class Writer
{
public:
    Writer &u8(std::uint32_t value)
    {
        m_bytes.push_back(static_cast<std::uint8_t>(value));
        return *this;
    }
    Writer &u16(std::uint32_t value) { return u8(value).u8(value >> 8); }
    Writer &u32(std::uint32_t value) { return u16(value).u16(value >> 16); }
    Writer &add(const Blob &bytes)
    {
        m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
        return *this;
    }
    Writer &zeros(std::size_t count)
    {
        m_bytes.resize(m_bytes.size() + count);
        return *this;
    }
    std::uint32_t size() const { return static_cast<std::uint32_t>(m_bytes.size()); }
    const Blob &bytes() const { return m_bytes; }

private:
    Blob m_bytes;
};

inline void patch32(Blob &bytes, std::size_t offset, std::uint32_t value)
{
    for (std::size_t i = 0; i < 4; ++i)
        bytes.at(offset + i) = static_cast<std::uint8_t>(value >> (8 * i));
}

inline void patch16(Blob &bytes, std::size_t offset, std::uint32_t value)
{
    for (std::size_t i = 0; i < 2; ++i)
        bytes.at(offset + i) = static_cast<std::uint8_t>(value >> (8 * i));
}

/// A chunk: its header is 8 bytes plus `head`.
inline Blob chunk(std::uint32_t type, const Blob &head, const Blob &body)
{
    const auto headerSize = static_cast<std::uint32_t>(8 + head.size());
    const auto size = static_cast<std::uint32_t>(headerSize + body.size());
    return Writer().u16(type).u16(headerSize).u32(size).add(head).add(body).bytes();
}

enum class Encoding { utf8, utf16 };

inline Blob utf8Body(const std::string &text)
{
    Writer writer;
    const auto length = [&writer](std::uint32_t value) {
        if (value > 0x7F)
            writer.u8(0x80 | (value >> 8));
        writer.u8(value);
    };
    const auto size = static_cast<std::uint32_t>(text.size());
    length(size);
    length(size);
    return writer.add(Blob(text.begin(), text.end())).u8(0).bytes();
}

inline Blob utf16Body(const std::u16string &text)
{
    Writer writer;
    const auto size = static_cast<std::uint32_t>(text.size());
    if (size > 0x7FFF)
        writer.u16(0x8000 | (size >> 16));
    writer.u16(size);
    for (const char16_t unit : text)
        writer.u16(unit);
    return writer.u16(0).bytes();
}

/// A string pool chunk of ready-made string bodies.
inline Blob rawPool(const std::vector<Blob> &bodies, Encoding encoding)
{
    Writer offsets;
    Writer data;
    for (const auto &body : bodies) {
        offsets.u32(data.size());
        data.add(body);
    }
    data.zeros((4 - data.size() % 4) % 4);
    constexpr std::uint32_t headerSize = 28;
    const Blob head = Writer()
                          .u32(static_cast<std::uint32_t>(bodies.size()))
                          .u32(0)
                          .u32(encoding == Encoding::utf8 ? 0x100 : 0)
                          .u32(headerSize + offsets.size())
                          .u32(0)
                          .bytes();
    return chunk(0x0001, head, Writer().add(offsets.bytes()).add(data.bytes()).bytes());
}

/// A string pool chunk; with UTF-16 the texts are ASCII.
inline Blob pool(const std::vector<std::string> &texts, Encoding encoding = Encoding::utf8)
{
    std::vector<Blob> bodies;
    for (const auto &text : texts)
        bodies.push_back(
            encoding == Encoding::utf8 ? utf8Body(text) : utf16Body(std::u16string(text.begin(), text.end())));
    return rawPool(bodies, encoding);
}

struct Attribute {
    std::uint32_t name = 0;
    std::uint32_t raw = none;
    std::uint32_t type = 3;
    std::uint32_t data = 0;
    std::uint32_t nameSpace = none;
};

inline Blob startElement(std::uint32_t name, const std::vector<Attribute> &attributes = {})
{
    Writer body;
    body.u32(none).u32(name).u16(20).u16(20).u16(static_cast<std::uint32_t>(attributes.size())).u16(0).u16(0).u16(0);
    for (const auto &attribute : attributes) {
        body.u32(attribute.nameSpace).u32(attribute.name).u32(attribute.raw);
        body.u16(8).u8(0).u8(attribute.type).u32(attribute.data);
    }
    // Line number and comment belong to the header.
    return chunk(0x0102, Writer().u32(1).u32(none).bytes(), body.bytes());
}

inline Blob endElement(std::uint32_t name)
{
    return chunk(0x0103, Writer().u32(1).u32(none).bytes(), Writer().u32(none).u32(name).bytes());
}

inline Blob join(std::initializer_list<Blob> parts)
{
    Writer writer;
    for (const auto &part : parts)
        writer.add(part);
    return writer.bytes();
}

inline Blob xmlFile(std::initializer_list<Blob> chunks)
{
    return chunk(0x0003, {}, join(chunks));
}

/// A resource value in full form.
inline Blob fullEntry(std::uint32_t type, std::uint32_t data, std::uint32_t flags = 0)
{
    return Writer().u16(8).u16(flags).u32(0).u16(8).u8(0).u8(type).u32(data).bytes();
}

inline Blob compactEntry(std::uint32_t type, std::uint32_t data, std::uint32_t flags = 0x08)
{
    return Writer().u16(0).u8(flags).u8(type).u32(data).bytes();
}

enum class Offsets { plain, shortForm, sparse };

/// A type chunk: one configuration's values of a type, by entry index; nothing where there is no value.
inline Blob typeChunk(
    std::uint32_t type, std::uint32_t density, const std::vector<std::optional<Blob>> &entries,
    Offsets form = Offsets::plain)
{
    Writer table;
    Writer data;
    std::uint32_t count = 0;
    for (std::uint32_t index = 0; index < entries.size(); ++index) {
        const auto &entry = entries[index];
        if (form == Offsets::sparse) {
            if (entry)
                table.u16(index).u16(data.size() / 4);
            count += entry ? 1 : 0;
        } else if (form == Offsets::shortForm) {
            table.u16(entry ? data.size() / 4 : 0xFFFF);
            ++count;
        } else {
            table.u32(entry ? data.size() : none);
            ++count;
        }
        if (entry)
            data.add(*entry);
    }
    table.zeros((4 - table.size() % 4) % 4);
    constexpr std::uint32_t configurationSize = 64;
    constexpr std::uint32_t headerSize = 20 + configurationSize;
    const std::uint32_t flags = form == Offsets::sparse ? 0x01 : form == Offsets::shortForm ? 0x02 : 0;
    Writer head;
    head.u8(type).u8(flags).u16(0).u32(count).u32(headerSize + table.size());
    head.u32(configurationSize).zeros(10).u16(density).zeros(configurationSize - 16);
    return chunk(0x0201, head.bytes(), Writer().add(table.bytes()).add(data.bytes()).bytes());
}

inline Blob typeSpec(std::uint32_t type, std::uint32_t count)
{
    return chunk(0x0202, Writer().u8(type).u8(0).u16(0).u32(count).bytes(), Writer().zeros(4 * count).bytes());
}

inline Blob package(std::uint32_t id, std::initializer_list<Blob> chunks)
{
    const Blob head = Writer().u32(id).zeros(256).u32(0).u32(0).u32(0).u32(0).u32(0).bytes();
    return chunk(0x0200, head, join({pool({"string"}), pool({"key"}), join(chunks)}));
}

inline Blob table(std::initializer_list<Blob> chunks)
{
    return chunk(0x0002, Writer().u32(1).bytes(), join(chunks));
}

} // namespace quillnest::build
