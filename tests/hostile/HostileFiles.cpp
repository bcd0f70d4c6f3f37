#include "hostile/HostileFiles.h"

#include "hostile/HostileTexts.h"
#include "package/WorstCases.h"
#include "package/XmlBuilder.h"
#include "packages/ZipWriter.h"
#include "platform/desktop/QtDrawing.h"

#include <QBuffer>
#include <QImage>
#include <QtEndian>

#include <limits>

namespace quillnest::hostile
{

using namespace build;

namespace
{
/// How many resources a package has.
constexpr std::uint32_t resourceCount = 12;
constexpr std::uint32_t labelResource = firstResource;

Blob blobOf(const QByteArray &bytes)
{
    return {bytes.begin(), bytes.end()};
}

Blob poolOf(Chance &chance, const std::vector<std::string> &texts)
{
    // A longer text can't be said in UTF-8.
    const bool isShort = std::all_of(texts.begin(), texts.end(), [](const auto &text) { return text.size() < 32'000; });
    std::vector<Blob> bodies;
    if (isShort && !chance.oneIn(4)) {
        for (const auto &text : texts)
            bodies.push_back(utf8Body(text));
        return rawPool(bodies, Encoding::utf8);
    }
    for (const auto &text : texts)
        bodies.push_back(utf16Body(QString::fromStdString(text).toStdU16String()));
    return rawPool(bodies, Encoding::utf16);
}

/// Numbers changed, bytes changed, the end cut off, something appended.
Blob damaged(Chance &chance, Blob bytes)
{
    if (bytes.size() < 16)
        return bytes;
    const auto size = static_cast<std::uint32_t>(bytes.size());
    for (auto count = 1 + chance.below(6); count > 0; --count) {
        // The first chunks' heads decide most.
        const auto reach = chance.oneIn(2) ? std::min<std::uint32_t>(size, 120) : size;
        switch (chance.below(4)) {
        case 0:
            patch32(bytes, chance.below(reach / 4) * 4, chance.number(size));
            break;
        case 1:
            patch16(bytes, chance.below(reach / 2) * 2, chance.number(size));
            break;
        case 2:
            bytes[chance.below(reach)] = static_cast<std::uint8_t>(chance.u32());
            break;
        default:
            patch32(bytes, chance.below(reach - 4), chance.number(size));
        }
    }
    if (chance.oneIn(6))
        bytes.resize(chance.below(size));
    else if (chance.oneIn(12))
        bytes.resize(size + chance.pick<std::uint32_t>({1, 4096, 1024 * 1024, 4 * 1024 * 1024}));
    return bytes;
}

Blob maybeDamaged(Chance &chance, Blob bytes, std::uint32_t oneIn)
{
    return chance.oneIn(oneIn) ? damaged(chance, std::move(bytes)) : bytes;
}

Blob xml(Chance &chance, const Tag &root)
{
    Strings strings;
    Writer body;
    writeTag(root, strings, body);
    return xmlFile({poolOf(chance, strings.texts()), body.bytes()});
}

/// One of the dearest inputs that we know of for one of the readers.
Blob worst(Chance &chance)
{
    static const auto cases = worstCases();
    return cases[chance.below(static_cast<std::uint32_t>(cases.size()))].bytes;
}

Value anyReference(Chance &chance)
{
    if (chance.oneIn(8))
        return reference(chance.pick<std::uint32_t>({0, 0x0106000B, 0x0106000D, 0x01060000, 0x7F01FFFF, 0xFFFFFFFF}));
    return reference(firstResource + chance.below(resourceCount));
}

Value anyNumber(Chance &chance)
{
    using Limits = std::numeric_limits<float>;
    switch (chance.below(5)) {
    case 0:
        return real(chance.pick<float>(
            {0, -1, 24, 1e-30F, 1e30F, Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN(),
             Limits::denorm_min()}));
    case 1:
        return integer(static_cast<std::int32_t>(chance.number(24)));
    case 2:
        return {.type = chance.below(32), .data = chance.u32()};
    case 3:
        return dimension(static_cast<std::int32_t>(chance.below(200)));
    default:
        return real(static_cast<float>(chance.below(100)));
    }
}

Value anyPaint(Chance &chance)
{
    return chance.oneIn(3) ? anyReference(chance) : argb(chance.u32() | 0x80000000);
}

void addNumbers(Chance &chance, Tag &tag, std::initializer_list<const char *> names)
{
    for (const auto *name : names) {
        if (chance.oneIn(4))
            tag.attributes.emplace_back(name, anyNumber(chance));
    }
}

Tag shapeInVector(Chance &chance, int depth)
{
    Tag tag;
    switch (chance.below(4)) {
    case 0:
        tag.name = "group";
        addNumbers(chance, tag, {"pivotX", "pivotY", "translateX", "translateY", "rotation", "scaleX", "scaleY"});
        if (depth < 4) {
            for (auto count = chance.below(4); count > 0; --count)
                tag.children.push_back(shapeInVector(chance, depth + 1));
        }
        return tag;
    case 1:
        tag.name = "clip-path";
        break;
    default:
        tag.name = "path";
        tag.attributes.emplace_back("fillColor", anyPaint(chance));
        if (chance.oneIn(2))
            tag.attributes.emplace_back("strokeColor", anyPaint(chance));
        addNumbers(
            chance, tag,
            {"strokeWidth", "strokeAlpha", "fillAlpha", "fillType", "strokeLineCap", "strokeLineJoin", "trimPathEnd"});
    }
    tag.attributes.emplace_back("pathData", literal(pathData(chance)));
    return tag;
}

Tag nested(const std::string &name, int depth)
{
    Tag tag{name};
    for (int i = 0; i < depth; ++i) {
        Tag outer{name};
        outer.children.push_back(std::move(tag));
        tag = std::move(outer);
    }
    return tag;
}

/// About what a tag takes in memory.
std::size_t weight(const Tag &tag)
{
    std::size_t sum = 200;
    for (const auto &[name, value] : tag.attributes)
        sum += 100 + value.raw.value_or(std::string()).size();
    for (const auto &child : tag.children)
        sum += weight(child);
    return sum;
}

/// The same tags again and again, as many as a patient attacker would write.
void multiply(Chance &chance, std::vector<Tag> &tags)
{
    if (tags.empty() || !chance.oneIn(4))
        return;
    const auto wanted = chance.pick<std::size_t>({50, 500, 5000, 20'000});
    const auto some = tags.size();
    for (std::size_t sum = 0; tags.size() < wanted && sum < 16 * 1024 * 1024;) {
        auto again = tags[tags.size() % some];
        sum += weight(again);
        tags.push_back(std::move(again));
    }
}

Tag drawable(Chance &chance)
{
    Tag root;
    switch (chance.below(8)) {
    case 0:
    case 1:
        root.name = "vector";
        if (!chance.oneIn(4))
            root.attributes = {{"viewportWidth", real(24)}, {"viewportHeight", real(24)}};
        addNumbers(chance, root, {"viewportWidth", "viewportHeight", "width", "height", "alpha"});
        for (auto count = 1 + chance.below(5); count > 0; --count)
            root.children.push_back(shapeInVector(chance, 0));
        if (chance.oneIn(20))
            root.children.push_back(nested("group", 5000));
        multiply(chance, root.children);
        return root;
    case 2:
    case 3:
        root.name = "adaptive-icon";
        for (const auto *name : {"background", "foreground", "monochrome"}) {
            Tag layer{name, {{"drawable", anyReference(chance)}}};
            if (chance.oneIn(4))
                layer = Tag{name, {}, {Tag{"inset", {{"drawable", anyReference(chance)}, {"inset", percent(16)}}}}};
            root.children.push_back(std::move(layer));
        }
        multiply(chance, root.children);
        return root;
    case 4:
        root = {"inset", {{"drawable", anyReference(chance)}}};
        addNumbers(chance, root, {"inset", "insetLeft", "insetTop", "insetRight", "insetBottom"});
        return root;
    case 5:
        root = {"gradient", {{"type", anyNumber(chance)}}};
        addNumbers(
            chance, root, {"startX", "endX", "startY", "endY", "centerX", "centerY", "gradientRadius", "startColor"});
        for (auto count = chance.below(6); count > 0; --count)
            root.children.push_back({"item", {{"offset", anyNumber(chance)}, {"color", anyPaint(chance)}}});
        multiply(chance, root.children);
        return root;
    case 6:
        root = {chance.pick<std::string>({"selector", "layer-list", "bitmap", "ripple"})};
        for (auto count = 1 + chance.below(5); count > 0; --count)
            root.children.push_back({"item", {{"drawable", anyReference(chance)}, {"color", anyPaint(chance)}}});
        multiply(chance, root.children);
        return root;
    default:
        return {"shape", {{"shape", anyNumber(chance)}}, {{"solid", {{"color", anyPaint(chance)}}}}};
    }
}

/// A picture file of a side, packed once for each kind: the large ones take their time.
const QByteArray &pictureOf(int side, const char *format)
{
    static std::map<std::pair<int, std::string>, QByteArray> made;
    auto &bytes = made[{side, format}];
    if (bytes.isEmpty()) {
        QImage image(side, side, QImage::Format_ARGB32);
        image.fill(0xFF336699);
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        image.save(&buffer, format);
    }
    return bytes;
}

Blob picture(Chance &chance)
{
    const bool isPng = !chance.oneIn(4);
    auto bytes = pictureOf(
        chance.oneIn(12) ? chance.pick({1024, 4096, 5000}) : chance.pick({1, 48, 192}), isPng ? "PNG" : "JPG");
    if (isPng && chance.oneIn(3)) {
        // A head that promises another size, with the sum that makes it believed.
        for (const auto at : {16, 20})
            qToBigEndian(chance.number(4096), bytes.data() + at);
        qToBigEndian(standin::crc32(bytes.mid(12, 17)), bytes.data() + 29);
    }
    if (chance.oneIn(10))
        bytes = chance.pick<QByteArray>(
            {"RIFF\xFF\xFF\xFF\xFFWEBPVP8L", "\x89PNG\r\n\x1a\n", "\xff\xd8\xff", "GIF89a", "<svg/>"});
    if (chance.oneIn(10))
        bytes += QByteArray(1024 * 1024, 'x');
    return maybeDamaged(chance, blobOf(bytes), 6);
}

Tag applicationTag(Chance &chance)
{
    Tag application{"application"};
    if (chance.oneIn(3))
        application.attributes.emplace_back("label", chance.oneIn(4) ? anyReference(chance) : reference(labelResource));
    else
        application.attributes.emplace_back("label", literal(label(chance)));
    application.attributes.emplace_back("icon", anyReference(chance));
    if (chance.oneIn(3))
        application.attributes.emplace_back("roundIcon", anyReference(chance));
    return application;
}

Blob manifest(Chance &chance)
{
    if (chance.oneIn(20))
        return worst(chance);
    Tag root{"manifest"};
    if (chance.oneIn(6))
        root.attributes.emplace_back("packag\u0435", literal("org.other.app"));
    root.attributes.emplace_back("package", literal(packageName(chance)));
    if (chance.oneIn(12))
        root.children.push_back(nested("queries", 10'000));
    root.children.push_back(applicationTag(chance));
    multiply(chance, root.children);
    return maybeDamaged(chance, xml(chance, root), 4);
}

/// The label, and behind it files; ids that lead in circles come by chance.
Blob tableOf(Chance &chance, const std::vector<std::pair<std::string, Blob>> &files)
{
    if (chance.oneIn(20))
        return worst(chance);
    Strings strings;
    Writer chunks;
    for (std::uint32_t i = 0; i < resourceCount; ++i) {
        auto copies = 1 + chance.below(3);
        if (chance.oneIn(40))
            copies = chance.pick<std::uint32_t>({200, 10'000});
        for (; copies > 0; --copies) {
            Value value;
            if (i == 0)
                value = literal(label(chance));
            else if (chance.oneIn(8))
                value = chance.oneIn(2) ? anyReference(chance) : argb(chance.u32());
            else
                value = literal(files[chance.below(static_cast<std::uint32_t>(files.size()))].first);
            const auto data = value.raw ? strings(*value.raw) : value.data;
            std::vector<std::optional<Blob>> column(i + 1);
            column[i] = chance.oneIn(5) ? compactEntry(value.type, data) : fullEntry(value.type, data);
            const auto form = chance.oneIn(3) ? chance.pick({Offsets::shortForm, Offsets::sparse}) : Offsets::plain;
            chunks.add(typeChunk(1, chance.pick<std::uint32_t>({0, 160, 640, 0xFFFE, 0xFFFF}), column, form));
        }
    }
    auto bytes = table({poolOf(chance, strings.texts()), build::package(0x7F, {chunks.bytes()})});
    return maybeDamaged(chance, std::move(bytes), 4);
}
} // namespace

Package package(Chance &chance)
{
    Package result;
    for (int i = 0; i < 8; ++i) {
        const auto name = "res/" + std::to_string(i);
        if (chance.oneIn(4))
            result.files.emplace_back(name + ".png", picture(chance));
        else if (chance.oneIn(20))
            result.files.emplace_back(name + ".xml", worst(chance));
        else
            result.files.emplace_back(name + ".xml", maybeDamaged(chance, xml(chance, drawable(chance)), 8));
    }
    result.manifest = manifest(chance);
    result.table = tableOf(chance, result.files);
    return result;
}

} // namespace quillnest::hostile
