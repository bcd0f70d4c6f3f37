#include "package/BinaryXml.h"

#include "package/Chunks.h"
#include "package/StringPool.h"

#include <algorithm>

namespace quillnest
{

namespace
{
constexpr std::uint32_t maximumStrings = 200000;
constexpr std::int64_t maximumUnits = 4096;

/// What each costs besides its text.
constexpr std::size_t stringCost = 32;
constexpr std::size_t elementCost = 160;
constexpr std::size_t attributeCost = 128;
constexpr std::size_t chunkCost = 32;

ByteView between(ByteView bytes, std::int64_t start, std::int64_t end)
{
    return bytes.subspan(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start));
}

std::string utf16Text(ByteView bytes, std::int64_t start, std::int64_t length)
{
    auto units = Bytes::units(bytes, start, length);
    // A byte alone at either edge of the array still counts.
    const auto edge = [&](std::int64_t position) {
        const auto index = (position - start) / 2;
        if (position >= start && index < length)
            units[static_cast<std::size_t>(index)] = Bytes::looseU16(bytes, start + 2 * index);
    };
    edge(0);
    edge(static_cast<std::int64_t>(bytes.size()) - 1);
    return Bytes::repairedUtf16(units);
}

std::string poolString(ByteView bytes, const StringPoolHead &head, std::int64_t index)
{
    const auto position = head.stringPosition(bytes, index);
    if (head.isUtf8) {
        const auto body = Utf8Body::at(bytes, position);
        if (body.start < 0 || body.end > static_cast<std::int64_t>(bytes.size()))
            return {};
        return Bytes::repairedUtf8(between(bytes, body.start, body.end));
    }
    const auto body = Utf16Body::at(bytes, position);
    return utf16Text(bytes, body.start, std::min(body.length, maximumUnits));
}

const std::string *at(const std::vector<std::string> &pool, std::uint32_t index)
{
    return index < pool.size() ? &pool[index] : nullptr;
}

/// The start element at `position`; absent once the budget is spent.
std::optional<BinaryXml::Element>
startElement(ByteView bytes, std::int64_t position, const std::vector<std::string> &pool, WorkBudget &budget)
{
    BinaryXml::Element element;
    if (const auto *name = at(pool, Bytes::looseU32(bytes, position + 20)))
        element.name = *name;
    if (!budget.spend(elementCost + element.name.size()))
        return std::nullopt;
    const std::int64_t base = position + 16 + Bytes::u16(bytes, position + 24);
    const std::int64_t size = Bytes::u16(bytes, position + 26);
    const std::int64_t count = Bytes::u16(bytes, position + 28);
    for (std::int64_t i = 0; i < count; ++i) {
        const auto record = base + i * size;
        const auto *name = at(pool, Bytes::looseU32(bytes, record + 4));
        const auto *raw = at(pool, Bytes::looseU32(bytes, record + 8));
        if (!budget.spend(attributeCost + (name ? name->size() : 0) + (raw ? raw->size() : 0)))
            return std::nullopt;
        if (!name)
            continue;
        element.attrs[*name] = BinaryXml::Attr{
            .type = Bytes::u8(bytes, record + 15),
            .data = Bytes::looseU32(bytes, record + 16),
            .string = raw ? std::optional(*raw) : std::nullopt,
        };
    }
    return element;
}

constexpr auto noParent = static_cast<std::size_t>(-1);

/// No file that a person or a tool makes nests this deep, and what walks the tree needs stack for each level.
constexpr std::size_t deepest = 100;

std::unique_ptr<BinaryXml::Node>
treeOf(const std::vector<BinaryXml::Element> &elements, const std::vector<std::size_t> &parents)
{
    struct Place {
        /// Null for an element that is left out.
        BinaryXml::Node *node = nullptr;
        std::size_t depth = 0;
    };
    std::unique_ptr<BinaryXml::Node> root;
    std::vector<Place> places(elements.size());
    for (std::size_t i = 0; i < elements.size(); ++i) {
        if (parents[i] == noParent) {
            root = std::make_unique<BinaryXml::Node>(elements[i]);
            places[i].node = root.get();
            continue;
        }
        const auto &parent = places[parents[i]];
        places[i].depth = parent.depth + 1;
        if (parent.node && places[i].depth < deepest)
            places[i].node = parent.node->children.emplace_back(std::make_unique<BinaryXml::Node>(elements[i])).get();
    }
    return root;
}
} // namespace

std::int64_t BinaryXml::u32(ByteView bytes, std::int64_t offset)
{
    return Bytes::looseU32(bytes, offset);
}

std::vector<std::string> BinaryXml::stringPool(ByteView bytes, std::int64_t offset)
{
    WorkBudget budget(bytes.size());
    return stringPool(bytes, offset, budget);
}

std::vector<std::string> BinaryXml::stringPool(ByteView bytes, std::int64_t offset, WorkBudget &budget)
{
    const auto head = StringPoolHead::at(bytes, offset);
    const auto count = std::min(head.count, maximumStrings);
    std::vector<std::string> strings;
    for (std::uint32_t i = 0; i < count; ++i) {
        auto text = poolString(bytes, head, i);
        if (!budget.spend(stringCost + text.size()))
            break;
        strings.push_back(std::move(text));
    }
    return strings;
}

std::optional<std::string> BinaryXml::string(ByteView bytes, std::int64_t pool, std::int64_t index)
{
    const auto head = StringPoolHead::at(bytes, pool);
    const auto size = static_cast<std::int64_t>(bytes.size());
    if (index < 0 || index >= head.count)
        return std::nullopt;
    const auto position = head.stringPosition(bytes, index);
    if (head.isUtf8) {
        const auto body = Utf8Body::at(bytes, position);
        if (position < 0 || body.end > size)
            return std::nullopt;
        return Bytes::repairedUtf8(between(bytes, body.start, body.end));
    }
    const auto body = Utf16Body::at(bytes, position);
    if (position < 0 || body.start + 2 * body.length > size)
        return std::nullopt;
    return utf16Text(bytes, body.start, body.length);
}

BinaryXml::Document BinaryXml::document(ByteView bytes, WorkBudget &budget)
{
    Document result;
    std::vector<std::string> pool;
    // Where the elements lie that are open, and of each element the one around it.
    std::vector<std::size_t> open;
    std::vector<std::size_t> parents;
    auto walk = ChunkWalk::ofFile(bytes);
    while (const auto chunk = walk.next()) {
        if (!budget.spend(chunkCost))
            break;
        if (chunk->type == ChunkType::stringPool) {
            pool = stringPool(bytes, chunk->position, budget);
        } else if (chunk->type == ChunkType::startElement) {
            auto element = startElement(bytes, chunk->position, pool, budget);
            if (!element)
                break;
            parents.push_back(open.empty() ? noParent : open.back());
            open.push_back(result.elements.size());
            result.elements.push_back(std::move(*element));
        } else if (chunk->type == ChunkType::endElement && !open.empty()) {
            open.pop_back();
        }
    }
    result.root = treeOf(result.elements, parents);
    return result;
}

std::vector<BinaryXml::Element> BinaryXml::elements(ByteView bytes)
{
    WorkBudget budget(bytes.size());
    return elements(bytes, budget);
}

std::vector<BinaryXml::Element> BinaryXml::elements(ByteView bytes, WorkBudget &budget)
{
    return document(bytes, budget).elements;
}

} // namespace quillnest
