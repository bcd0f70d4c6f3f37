#include "hostile/HostileArchive.h"

#include "hostile/HostileFiles.h"
#include "hostile/HostileTexts.h"
#include "packages/ZipWriter.h"

#include <utility>
#include <vector>

namespace quillnest::hostile
{

namespace
{
constexpr std::uint16_t stored = 0;
constexpr std::uint16_t deflated = 8;
constexpr std::uint32_t absent = 0xFFFFFFFF;

void put(QByteArray &bytes, std::uint64_t value, int width)
{
    for (int i = 0; i < width; ++i)
        bytes += static_cast<char>(value >> (8 * i));
}

/// An entry as it is told of twice, before its content and in the directory, and the two may differ.
struct Entry {
    struct Head {
        std::uint16_t flags = 0;
        std::uint16_t method = stored;
        std::uint32_t sum = 0;
        std::uint32_t packedSize = 0;
        std::uint32_t size = 0;
        QByteArray extra;
    };

    QByteArray name;
    QByteArray packed;
    Head own;
    Head listed;
    /// Where the directory says that it lies; where it does, unless that is given.
    std::uint32_t place = absent;
};

Entry entryOf(Chance &chance, const std::string &name, const QByteArray &content)
{
    Entry entry{QByteArray::fromStdString(name), content, {}, {}};
    Entry::Head head;
    head.sum = standin::crc32(content);
    head.size = static_cast<std::uint32_t>(content.size());
    if (!content.isEmpty() && !chance.oneIn(4)) {
        // Qt writes a length and zlib's head before the bare stream, and a sum behind.
        entry.packed = qCompress(content, 1).chopped(4).sliced(6);
        head.method = deflated;
    }
    head.packedSize = static_cast<std::uint32_t>(entry.packed.size());
    entry.own = head;
    entry.listed = std::move(head);
    return entry;
}

Entry entryOf(Chance &chance, const std::string &name, const Blob &content)
{
    return entryOf(
        chance, name,
        QByteArray(reinterpret_cast<const char *>(content.data()), static_cast<qsizetype>(content.size())));
}

/// The long form of sizes, in which they may be anything.
QByteArray longSizes(Chance &chance)
{
    QByteArray extra;
    put(extra, 1, 2);
    put(extra, chance.pick<std::uint32_t>({0, 8, 16, 24, 28, 0xFFFF}), 2);
    for (int i = 0; i < 3; ++i)
        put(extra,
            chance.pick<std::uint64_t>({0, 1, 1000, std::uint64_t{1} << 32, std::uint64_t{1} << 62, ~std::uint64_t{0}}),
            8);
    return extra;
}

void lieInHead(Chance &chance, Entry::Head &head)
{
    switch (chance.below(6)) {
    case 0:
        head.flags |= chance.pick<std::uint16_t>({1, 1 << 3, 1 << 6 | 1, 1 << 11, 1 << 13, 0xFFFF});
        break;
    case 1:
        head.method = chance.pick<std::uint16_t>({0, 1, 6, 8, 9, 12, 14, 93, 95, 98, 99, 0xFFFF});
        break;
    case 2:
        head.packedSize = chance.number(head.packedSize);
        break;
    case 3:
        head.size = chance.number(head.size);
        break;
    case 4:
        head.sum = chance.u32();
        break;
    default:
        head.size = absent;
        head.packedSize = chance.oneIn(2) ? absent : head.packedSize;
        head.extra = longSizes(chance);
    }
}

void lie(Chance &chance, Entry &entry)
{
    if (!chance.oneIn(3))
        lieInHead(chance, entry.listed);
    if (chance.oneIn(2))
        entry.own = entry.listed;
    else if (chance.oneIn(3))
        lieInHead(chance, entry.own);
    if (chance.oneIn(6))
        entry.place = chance.number(100'000);
}

/// A content that a few bytes stand for.
QByteArray bomb(Chance &chance)
{
    const auto size = chance.pick<qsizetype>({1 << 20, 16 << 20, 100 << 20, 129 << 20});
    return QByteArray(size, chance.pick({'\0', 'x', '\x01'}));
}

/// Empty blocks: long to unpack, and nothing comes out.
QByteArray emptyBlocks()
{
    return QByteArray("\x00\x00\x00\xFF\xFF", 5).repeated(1024 * 1024);
}

void appendHead(QByteArray &bytes, const Entry &entry, const Entry::Head &head)
{
    put(bytes, head.flags, 2);
    put(bytes, head.method, 2);
    put(bytes, 0, 4);
    put(bytes, head.sum, 4);
    put(bytes, head.packedSize, 4);
    put(bytes, head.size, 4);
    put(bytes, static_cast<std::uint16_t>(entry.name.size()), 2);
    put(bytes, static_cast<std::uint16_t>(head.extra.size()), 2);
}

void appendLongEnd(Chance &chance, QByteArray &bytes, std::uint64_t count, std::uint64_t size, std::uint64_t start)
{
    const auto end = static_cast<std::uint64_t>(bytes.size());
    const auto maybe = [&chance](std::uint64_t value) {
        return chance.oneIn(3) ? chance.pick<std::uint64_t>({0, value + 1, std::uint64_t{1} << 32, ~std::uint64_t{0}})
                               : value;
    };
    bytes += "PK\x06\x06";
    put(bytes, maybe(44), 8);
    put(bytes, 45, 2);
    put(bytes, 45, 2);
    put(bytes, 0, 8);
    put(bytes, maybe(count), 8);
    put(bytes, maybe(count), 8);
    put(bytes, maybe(size), 8);
    put(bytes, maybe(start), 8);
    bytes += "PK\x06\x07";
    put(bytes, 0, 4);
    put(bytes, maybe(end), 8);
    put(bytes, 1, 4);
}

QByteArray archiveOf(Chance &chance, const std::vector<Entry> &entries)
{
    QByteArray bytes;
    if (chance.oneIn(30))
        bytes = "#!/bin/sh\n";
    QByteArray directory;
    for (const auto &entry : entries) {
        const auto place = static_cast<std::uint32_t>(bytes.size());
        if (entry.place == absent) {
            bytes += "PK\x03\x04";
            put(bytes, 20, 2);
            appendHead(bytes, entry, entry.own);
            bytes += entry.name.first(static_cast<std::uint16_t>(entry.name.size())) + entry.own.extra + entry.packed;
        }
        directory += "PK\x01\x02";
        put(directory, 0x0314, 2);
        put(directory, 20, 2);
        appendHead(directory, entry, entry.listed);
        put(directory, 0, 2 + 2 + 2 + 4);
        put(directory, entry.place == absent ? place : entry.place, 4);
        directory += entry.name.first(static_cast<std::uint16_t>(entry.name.size())) + entry.listed.extra;
    }
    const auto start = static_cast<std::uint64_t>(bytes.size());
    const auto size = static_cast<std::uint64_t>(directory.size());
    bytes += directory;
    const bool isLong = chance.oneIn(8);
    if (isLong)
        appendLongEnd(chance, bytes, entries.size(), size, start);
    QByteArray end = "PK\x05\x06";
    put(end, 0, 4);
    const auto count = chance.oneIn(20) ? chance.number(static_cast<std::uint32_t>(entries.size()))
                                        : static_cast<std::uint32_t>(entries.size());
    put(end, isLong ? 0xFFFF : count, 2);
    put(end, isLong ? 0xFFFF : count, 2);
    put(end, isLong ? absent : size, 4);
    put(end, isLong ? absent : start, 4);
    put(end, 0, 2);
    bytes += end;
    if (chance.oneIn(30))
        bytes += end.repeated(static_cast<qsizetype>(chance.below(2900)));
    return bytes;
}

void addHostileEntries(Chance &chance, std::vector<Entry> &entries)
{
    const auto any = [&]() -> Entry & { return entries[chance.below(static_cast<std::uint32_t>(entries.size()))]; };
    switch (chance.below(12)) {
    case 0: {
        // The same name again, with the same content or another.
        auto copy = any();
        for (auto count = chance.pick<std::uint32_t>({1, 2, 300}); count > 0; --count)
            entries.insert(entries.begin() + chance.below(static_cast<std::uint32_t>(entries.size())), copy);
        break;
    }
    case 1: {
        // Many names for what lies in one place.
        auto again = any();
        again.place = 0;
        for (auto count = chance.pick<std::uint32_t>({10, 1000, 5000}); count > 0; --count)
            entries.push_back(again);
        break;
    }
    case 2:
        for (auto count = chance.pick<std::uint32_t>({1000, 20'000}); count > 0; --count)
            entries.push_back(entryOf(chance, "assets/" + std::to_string(count), QByteArray()));
        break;
    case 3:
        for (auto count = chance.below(8); count > 0; --count)
            entries.push_back(entryOf(chance, entryName(chance), bomb(chance)));
        break;
    case 4: {
        auto &entry = any();
        entry = entryOf(chance, entry.name.toStdString(), bomb(chance));
        break;
    }
    case 5: {
        auto &entry = any();
        entry.packed = emptyBlocks().repeated(chance.pick<qsizetype>({1, 4}));
        entry.own.method = entry.listed.method = deflated;
        entry.own.packedSize = entry.listed.packedSize = static_cast<std::uint32_t>(entry.packed.size());
        break;
    }
    default:
        for (auto count = chance.below(4); count > 0; --count)
            entries.push_back(entryOf(chance, entryName(chance), QByteArray("content")));
    }
}
} // namespace

QByteArray hostilePackage(std::uint64_t number)
{
    Chance chance(number);
    const auto content = package(chance);
    std::vector<Entry> entries{
        entryOf(chance, "AndroidManifest.xml", content.manifest), entryOf(chance, "resources.arsc", content.table)};
    for (const auto &[name, bytes] : content.files)
        entries.push_back(entryOf(chance, name, bytes));
    if (chance.oneIn(2))
        addHostileEntries(chance, entries);
    if (chance.oneIn(3)) {
        for (auto count = 1 + chance.below(3); count > 0; --count)
            lie(chance, entries[chance.below(static_cast<std::uint32_t>(entries.size()))]);
    }
    auto bytes = archiveOf(chance, entries);
    if (chance.oneIn(20)) {
        for (auto count = 1 + chance.below(20); count > 0; --count)
            bytes[static_cast<qsizetype>(chance.below(static_cast<std::uint32_t>(bytes.size())))]
                = static_cast<char>(chance.u32());
    }
    if (chance.oneIn(30))
        bytes.truncate(static_cast<qsizetype>(chance.below(static_cast<std::uint32_t>(bytes.size()))));
    return bytes;
}

} // namespace quillnest::hostile
