#include "package/APKIconExtractor.h"

#include "package/PackageLimits.h"
#include "package/StringPool.h"
#include "platform/Archives.h"

#include <algorithm>

namespace quillnest
{

namespace
{
constexpr std::uint16_t stringPoolChunk = 0x0001;
constexpr std::uint16_t startElementChunk = 0x0102;

constexpr std::uint32_t maximumStrings = 200000;
constexpr std::int64_t maximumUnits = 4096;

/// What each costs besides its text.
constexpr std::size_t stringCost = 32;
constexpr std::size_t elementCost = 128;
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
std::optional<APKIconExtractor::Element>
startElement(ByteView bytes, std::int64_t position, const std::vector<std::string> &pool, WorkBudget &budget)
{
    APKIconExtractor::Element element;
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
        element.attrs[*name] = APKIconExtractor::Attr{
            .type = Bytes::u8(bytes, record + 15),
            .data = Bytes::looseU32(bytes, record + 16),
            .string = raw ? std::optional(*raw) : std::nullopt,
        };
    }
    return element;
}
} // namespace

std::int64_t APKIconExtractor::u32(ByteView bytes, std::int64_t offset)
{
    return Bytes::looseU32(bytes, offset);
}

std::vector<std::string> APKIconExtractor::stringPool(ByteView bytes, std::int64_t offset)
{
    WorkBudget budget(bytes.size());
    return stringPool(bytes, offset, budget);
}

std::vector<std::string> APKIconExtractor::stringPool(ByteView bytes, std::int64_t offset, WorkBudget &budget)
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

std::optional<std::string> APKIconExtractor::string(ByteView bytes, std::int64_t pool, std::int64_t index)
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

std::vector<APKIconExtractor::Element> APKIconExtractor::elements(ByteView bytes)
{
    WorkBudget budget(bytes.size());
    return elements(bytes, budget);
}

std::vector<APKIconExtractor::Element> APKIconExtractor::elements(ByteView bytes, WorkBudget &budget)
{
    std::vector<Element> result;
    const auto size = static_cast<std::int64_t>(bytes.size());
    const std::int64_t header = bytes.size() < 4 ? 0 : Bytes::u16(bytes, 2);
    if (size < header + 8)
        return result;

    std::vector<std::string> pool;
    for (auto position = header; position + 8 <= size;) {
        const auto type = Bytes::u16(bytes, position);
        if (type == stringPoolChunk) {
            pool = stringPool(bytes, position, budget);
        } else if (type == startElementChunk) {
            auto element = startElement(bytes, position, pool, budget);
            if (!element)
                break;
            result.push_back(std::move(*element));
        }
        const std::int64_t chunkSize = Bytes::looseU32(bytes, position + 4);
        if (chunkSize == 0 || !budget.spend(chunkCost))
            break;
        position += chunkSize;
    }
    return result;
}

std::optional<std::vector<std::uint8_t>>
APKIconExtractor::read(Archives &archives, const std::string &packagePath, const std::string &entryName)
{
    const auto package = archives.open(packagePath);
    if (!package)
        return std::nullopt;
    auto bytes = package->read(entryName, PackageLimits::largestEntry);
    return bytes.empty() ? std::nullopt : std::optional(std::move(bytes));
}

std::optional<std::string> APKIconExtractor::label(Archives &archives, const std::string &packagePath)
{
    const auto package = archives.open(packagePath);
    if (!package)
        return std::nullopt;
    const auto tags = elements(package->read("AndroidManifest.xml", PackageLimits::largestManifest));
    const auto application
        = std::find_if(tags.begin(), tags.end(), [](const Element &tag) { return tag.name == "application"; });
    if (application == tags.end())
        return std::nullopt;
    const auto label = application->attrs.find("label");
    if (label == application->attrs.end())
        return std::nullopt;
    const Attr &value = label->second;
    if (value.string && !value.string->empty())
        return value.string;
    if (value.type != referenceType)
        return std::nullopt;

    const auto table = package->read("resources.arsc", PackageLimits::largestEntry);
    // The first text of the table wins, empty or not: no language is preferred.
    const auto values = entries(table, value.data);
    const auto text
        = std::find_if(values.begin(), values.end(), [](const Entry &entry) { return entry.type == stringType; });
    if (text == values.end() || !text->file || text->file->empty())
        return std::nullopt;
    return text->file;
}

} // namespace quillnest
