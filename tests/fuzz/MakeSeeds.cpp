// make-seeds SEEDS WORST FILES: writes into SEEDS/TARGET the inputs that the fuzzer of each target begins with: files
// made by hand, and what is cut out of the real ones that were unpacked into FILES. Writes the dearest inputs that we
// could think of into WORST/TARGET: they are replayed, but are too large to begin with.
#include "package/BinaryXml.h"
#include "package/WorstCases.h"
#include "package/XmlBuilder.h"

#include <zip.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

namespace fs = std::filesystem;
using namespace quillnest;
using namespace quillnest::build;

namespace
{
/// Small inputs are mutated many times in the time that a large one takes once.
constexpr std::size_t largestSeed = 6 * 1024;
constexpr std::size_t filesPerTarget = 150;
constexpr std::uint32_t poolOffset = 8;

Blob contents(const fs::path &path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class Seeds
{
public:
    explicit Seeds(fs::path folder) : m_folder(std::move(folder)) { }

    void add(const std::string &target, const std::string &name, const Blob &input)
    {
        fs::create_directories(m_folder / target);
        std::ofstream file(m_folder / target / name, std::ios::binary);
        file.write(reinterpret_cast<const char *>(input.data()), static_cast<std::streamsize>(input.size()));
    }

    void add(const std::string &target, const Blob &input) { add(target, std::to_string(++m_count), input); }

    void addXml(const Blob &xml)
    {
        add("elements", xml);
        add("parse", xml);
        add("stringPool", Writer().u32(poolOffset).add(xml).bytes());
        add("string", Writer().u32(poolOffset).u32(2).add(xml).bytes());
    }

    void addTable(std::uint32_t id, const Blob &table) { add("entries", Writer().u32(id).add(table).bytes()); }

private:
    fs::path m_folder;
    int m_count = 0;
};

void addHandmade(Seeds &seeds)
{
    for (const auto encoding : {Encoding::utf8, Encoding::utf16}) {
        const std::vector<std::string> strings{"manifest", "package", "org.example.app", "wrapper", ""};
        seeds.addXml(xmlFile(
            {pool(strings, encoding), chunk(0x0180, {}, Blob(8)), startElement(3, {{3, 4}}),
             startElement(0, {{1, none}, {1, 2}, {4, none, 1, 0x7F010000}}), endElement(0)}));
        seeds.addXml(xmlFile({pool({"package", "x"}, encoding), pool({"manifest"}), startElement(2, {{0, 1}})}));
    }
    // Strings of one, two, three and four bytes each, and a length of two fields.
    seeds.addXml(xmlFile({pool({"a\u00e9\u20ac\U0001F600", std::string(300, 'x')}), startElement(0, {{1, 0}})}));
    const auto wideLength = Writer().u16(0x8000).u16(2).u16('o').u16('k').u16(0).bytes();
    seeds.addXml(
        xmlFile({rawPool({utf16Body(u"a\u20ac\U0001F600"), wideLength}, Encoding::utf16), startElement(0, {{0, 1}})}));

    for (const auto form : {Offsets::plain, Offsets::shortForm, Offsets::sparse}) {
        const auto values = [](std::uint32_t data) {
            return std::vector<std::optional<Blob>>{
                fullEntry(3, data), std::nullopt, compactEntry(3, data), fullEntry(1, 0x7F010000, 1)};
        };
        seeds.addTable(
            0x7F020002,
            table(
                {pool({"res/a.png", "res/b.xml"}),
                 package(0x7F, {typeSpec(2, 4), typeChunk(2, 160, values(0), form), typeChunk(2, 0, values(1))})}));
    }
}

/// A drawable with the table and the files of its package.
Blob packageOf(const Blob &drawable, const Blob &resources, const std::vector<Blob> &files)
{
    Writer writer;
    const auto add = [&writer](const Blob &part) { writer.u32(static_cast<std::uint32_t>(part.size())).add(part); };
    add(drawable);
    add(resources);
    std::for_each(files.begin(), files.end(), add);
    return writer.bytes();
}

void addHandmadeDrawables(Seeds &seeds)
{
    constexpr std::uint32_t firstId = 0x7F010000;
    const auto resources = table(
        {pool({"res/a.xml"}),
         package(0x7F, {typeChunk(1, 0, {fullEntry(3, 0), fullEntry(28, 0xFF336699), fullEntry(1, firstId)})})});
    const Tag path{
        "path",
        {{"pathData", literal("M2,2h20v20h-20z")},
         {"fillColor", argb(0xFF00FF00)},
         {"strokeColor", reference(firstId + 1)},
         {"strokeWidth", real(2)},
         {"trimPathEnd", real(0.5)}}};
    const Tag gradientPath{
        "path", {{"pathData", literal("M1 1L9 1 9 9z")}, {"fillColor", reference(firstId)}, {"fillAlpha", real(0.7F)}}};
    const Tag gradient{
        "gradient",
        {{"type", integer(1)}, {"centerX", real(5)}, {"centerY", real(5)}, {"gradientRadius", real(7)}},
        {{"item", {{"offset", real(0)}, {"color", argb(0xFFFF0000)}}},
         {"item", {{"offset", real(1)}, {"color", reference(firstId + 1)}}}}};
    const Tag group{
        "group",
        {{"rotation", real(30)}, {"pivotX", real(12)}, {"scaleY", real(0.5F)}, {"translateX", real(3)}},
        {{"clip-path", {{"pathData", literal("M0,0h12v24h-12z")}}}, path, gradientPath}};
    const Tag vector{
        "vector",
        {{"width", dimension(24)}, {"viewportWidth", real(24)}, {"viewportHeight", real(24)}, {"alpha", real(0.9F)}},
        {group, path}};
    const Tag shape{
        "shape",
        {{"shape", integer(1)}},
        {{"solid", {{"color", argb(0xFF112233)}}}, {"corners", {{"radius", dimension(4)}}}}};
    const Tag inset{"inset", {{"drawable", reference(firstId)}, {"inset", percent(10)}}};
    const Tag layers{"layer-list", {}, {{"item", {{"drawable", reference(firstId)}}}, {"item", {}, {shape}}}};
    for (const auto &drawable : {vector, shape, inset, layers}) {
        for (const auto &file : {gradient, vector, shape})
            seeds.add("iconVector", packageOf(compile(drawable), resources, {compile(file)}));
    }
}

void addHandmadePaths(Seeds &seeds)
{
    for (const std::string text :
         {"M10,10 L20-5.5.5 h3v-4H1V2z", "m0 0c1 2 3 4 5 6s7 8 9 10S1 2 3 4C1,1 2,2 3,3Z",
          "M1 1q2 2 4 0t4 0T9 9Q1 1 2 2", "M5 5a3 4 30 0110 0A1e3 2 0 1 0 .5 1e-2z", "L1 1", "M 1e38 -1e38 l nan inf"})
        seeds.add("pathData", Blob(text.begin(), text.end()));
}

/// A drawable of a real package, without that package's resources, and the paths in it.
void addDrawable(Seeds &seeds, const Blob &xml)
{
    for (const auto &element : BinaryXml::elements(xml)) {
        const auto path = element.attrs.find("pathData");
        if (path != element.attrs.end() && path->second.string)
            seeds.add("pathData", Blob(path->second.string->begin(), path->second.string->end()));
    }
    seeds.add("iconVector", packageOf(xml, {}, {}));
}

/// A whole table, small enough to be mutated: the first strings and, of every package, the first small chunks of values
/// of each type.
void addCutTable(Seeds &seeds, const Blob &bytes)
{
    constexpr std::size_t strings = 30;
    constexpr std::size_t tablesPerFile = 12;
    const auto size = static_cast<std::int64_t>(bytes.size());
    const auto u32
        = [&bytes](std::int64_t position) { return static_cast<std::uint32_t>(BinaryXml::u32(bytes, position)); };
    const auto u16 = [&u32](std::int64_t position) { return u32(position) & 0xFFFF; };
    std::vector<std::string> texts;
    std::size_t written = 0;
    for (std::int64_t top = u16(2); top + 8 <= size && u32(top + 4) > 0; top += u32(top + 4)) {
        if (u16(top) == 0x0001 && texts.empty()) {
            texts = BinaryXml::stringPool(bytes, top);
            texts.resize(std::min(texts.size(), strings));
        }
        if (u16(top) != 0x0200)
            continue;
        std::set<std::uint32_t> seen;
        for (std::int64_t at = top + u16(top + 2); at + 8 <= top + u32(top + 4) && u32(at + 4) > 0; at += u32(at + 4)) {
            const auto type = u32(at + 8) & 0xFF;
            const auto end = std::min<std::int64_t>(at + u32(at + 4), size);
            if (u16(at) != 0x0201 || end - at > static_cast<std::int64_t>(largestSeed / 2) || !seen.insert(type).second)
                continue;
            const Blob values(bytes.begin() + at, bytes.begin() + end);
            const auto id = (u32(top + 8) << 24) | (type << 16);
            seeds.addTable(id, table({pool(texts), package(u32(top + 8), {values, values})}));
            if (++written == tablesPerFile)
                return;
        }
    }
}
/// An entry of an archive: its name, what it holds, and how it is packed.
struct Packed {
    std::string name;
    std::string content;
    zip_int32_t method = ZIP_CM_DEFLATE;
};

Blob archiveOf(const std::vector<Packed> &entries)
{
    auto *whole = zip_source_buffer_create(nullptr, 0, 0, nullptr);
    zip_source_keep(whole);
    auto *archive = zip_open_from_source(whole, ZIP_TRUNCATE, nullptr);
    for (const auto &[name, content, method] : entries) {
        auto *source = zip_source_buffer(archive, content.data(), content.size(), 0);
        const auto index = zip_file_add(archive, name.c_str(), source, 0);
        zip_set_file_compression(archive, static_cast<zip_uint64_t>(index), method, 0);
    }
    zip_close(archive);
    zip_stat_t facts;
    zip_source_stat(whole, &facts);
    Blob bytes(facts.size);
    zip_source_open(whole);
    zip_source_read(whole, bytes.data(), bytes.size());
    zip_source_close(whole);
    zip_source_free(whole);
    return bytes;
}

void addHandmadeArchives(Seeds &seeds)
{
    const std::string many(3000, 'm');
    const std::vector<Packed> entries{
        {"AndroidManifest.xml", many + "manifest"},
        {"resources.arsc", "table", ZIP_CM_STORE},
        {"res/", ""},
        {"Payload/A.app/Info.plist", "<plist/>"}};
    auto archive = archiveOf(entries);
    seeds.add("zipReader", archive);
    seeds.add("zipReader", archiveOf({{"a", ""}}));
    // Encrypted, and with a size that lies.
    const std::array<std::uint8_t, 4> line{'P', 'K', 1, 2};
    const auto directory = std::search(archive.begin(), archive.end(), line.begin(), line.end()) - archive.begin();
    archive[6] |= 1;
    archive[static_cast<std::size_t>(directory) + 8] |= 1;
    seeds.add("zipReader", archive);
    archive[6] &= 0xFE;
    archive[static_cast<std::size_t>(directory) + 8] &= 0xFE;
    archive[static_cast<std::size_t>(directory) + 27] = 0xFF;
    seeds.add("zipReader", archive);
}
} // namespace

int main(int argc, char **argv)
{
    if (argc != 4) {
        std::fputs("usage: make-seeds SEEDS WORST FILES\n", stderr);
        return 2;
    }
    Seeds seeds(argv[1]);
    Seeds worst(argv[2]);
    for (const auto &input : worstCases()) {
        Writer writer;
        for (const auto argument : input.arguments)
            writer.u32(argument);
        worst.add(input.reader, input.name, writer.add(input.bytes).bytes());
    }
    addHandmade(seeds);
    addHandmadeDrawables(seeds);
    addHandmadePaths(seeds);
    addHandmadeArchives(seeds);

    std::vector<fs::path> xml;
    for (const auto &file : fs::recursive_directory_iterator(argv[3])) {
        if (file.path().extension() == ".arsc")
            addCutTable(seeds, contents(file.path()));
        else if (file.path().extension() == ".xml" && file.file_size() <= largestSeed)
            xml.push_back(file.path());
    }
    std::sort(xml.begin(), xml.end());
    const auto step = std::max<std::size_t>(1, xml.size() / filesPerTarget);
    for (std::size_t i = 0; i < xml.size(); i += step)
        seeds.addXml(contents(xml[i]));
    constexpr std::array drawableRoots{"vector", "shape", "inset", "adaptive-icon", "layer-list", "gradient"};
    for (const auto &path : xml) {
        const auto bytes = contents(path);
        const auto elements = BinaryXml::elements(bytes);
        if (!elements.empty() && std::count(drawableRoots.begin(), drawableRoots.end(), elements[0].name) > 0)
            addDrawable(seeds, bytes);
    }
    return 0;
}
