#pragma once

#include "package/PackageBuilder.h"

#include <bit>
#include <map>

/// Compiles XML, written as values, into the binary form that packages hold.
namespace quillnest::build
{

struct Value {
    std::uint32_t type = 3;
    std::uint32_t data = 0;
    std::optional<std::string> raw{};
};

inline Value literal(const std::string &text)
{
    return {.type = 3, .data = 0, .raw = text};
}
inline Value real(float value)
{
    return {.type = 4, .data = std::bit_cast<std::uint32_t>(value)};
}
inline Value integer(std::int32_t value)
{
    return {.type = 16, .data = static_cast<std::uint32_t>(value)};
}
inline Value argb(std::uint32_t value)
{
    return {.type = 28, .data = value};
}
inline Value reference(std::uint32_t id)
{
    return {.type = 1, .data = id};
}
/// A whole number of units; the unit itself is dp.
inline Value dimension(std::int32_t value)
{
    return {.type = 5, .data = (static_cast<std::uint32_t>(value) << 8) | 1};
}
/// A share of the whole, in percent.
inline Value percent(int value)
{
    const auto mantissa = static_cast<std::uint32_t>(value * (1 << 23) / 100);
    return {.type = 6, .data = (mantissa << 8) | 0x30};
}

struct Tag {
    std::string name;
    std::vector<std::pair<std::string, Value>> attributes{};
    std::vector<Tag> children{};
};

/// The strings of a file and their numbers.
class Strings
{
public:
    std::uint32_t operator()(const std::string &text)
    {
        const auto [place, isNew] = m_indices.emplace(text, static_cast<std::uint32_t>(m_texts.size()));
        if (isNew)
            m_texts.push_back(text);
        return place->second;
    }
    const std::vector<std::string> &texts() const { return m_texts; }

private:
    std::map<std::string, std::uint32_t> m_indices;
    std::vector<std::string> m_texts;
};

inline void writeTag(const Tag &tag, Strings &strings, Writer &out)
{
    std::vector<Attribute> attributes;
    for (const auto &[name, value] : tag.attributes) {
        const auto raw = value.raw ? strings(*value.raw) : none;
        attributes.push_back(
            {.name = strings(name), .raw = raw, .type = value.type, .data = value.raw ? raw : value.data});
    }
    out.add(startElement(strings(tag.name), attributes));
    for (const auto &child : tag.children)
        writeTag(child, strings, out);
    out.add(endElement(strings(tag.name)));
}

inline Blob compile(const Tag &root)
{
    Strings strings;
    Writer body;
    writeTag(root, strings, body);
    return xmlFile({pool(strings.texts()), body.bytes()});
}

} // namespace quillnest::build
