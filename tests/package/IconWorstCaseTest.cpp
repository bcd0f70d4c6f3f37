#include "package/IconFixture.h"
#include "package/IconVector.h"
#include "platform/desktop/QtDrawing.h"

#include <chrono>
#include <cstdio>

using namespace quillnest;
using namespace quillnest::build;

namespace
{

/// Files of at most a megabyte that ask for as much drawing as they can.
class IconWorstCase : public IconFixture
{
protected:
    IconWorstCase() : m_drawingTools{archives, drawing, tools.log} { }

    /// Draws a vector of as many of these elements as a megabyte holds, and says how long it took. The elements share
    /// their texts, so that each costs little.
    void draw(const char *name, const std::vector<Tag> &tags)
    {
        Strings strings;
        Writer body;
        const Tag root{"vector", {{"viewportWidth", real(24)}, {"viewportHeight", real(24)}}};
        Writer opening;
        writeTag(root, strings, opening);
        auto begin = opening.bytes();
        begin.resize(begin.size() - endElement(0).size());
        body.add(begin);
        Writer some;
        for (const auto &tag : tags)
            writeTag(tag, strings, some);
        std::size_t texts = 0;
        for (const auto &text : strings.texts())
            texts += text.size() + 8;
        while (body.size() + some.size() + texts + 1000 < 1024 * 1024)
            body.add(some.bytes());
        const auto file = xmlFile({pool(strings.texts()), body.bytes()});
        EXPECT_LE(file.size(), 1024U * 1024);
        measure(name, [&] { m_drawn = IconVector::render(source(), file, 0); });
    }

    template <typename Work> void measure(const char *name, const Work &work)
    {
        const auto started = std::chrono::steady_clock::now();
        work();
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - started;
        std::printf("%s: %.3f s\n", name, taken.count());
        // A megabyte takes a second at most on any machine of today; sanitizers and a busy machine take their share.
        EXPECT_LT(taken.count(), 20) << name;
    }

    IconSource &source()
    {
        m_table = table();
        m_package = archives.open(packagePath);
        return m_source.emplace(m_drawingTools, *m_package, m_table);
    }

    QtDrawing drawing;
    std::optional<Image> m_drawn;

private:
    APKIconExtractor::IconTools m_drawingTools;
    Blob m_table;
    std::unique_ptr<OpenArchive> m_package;
    std::optional<IconSource> m_source;
};

std::string zigzag(std::size_t size)
{
    std::string text = "M0 0";
    while (text.size() < size)
        text += "L24 24L24 0L0 24L0 0L23 1L1 24";
    return text;
}

Tag path(const std::string &data, std::vector<std::pair<std::string, Value>> attributes)
{
    attributes.emplace_back("pathData", literal(data));
    return {"path", std::move(attributes)};
}

std::vector<std::pair<std::string, Value>> stroke(float width, int style)
{
    return {
        {"strokeColor", argb(0xFF000000)},
        {"strokeWidth", real(width)},
        {"strokeLineCap", integer(style)},
        {"strokeLineJoin", integer(style)}};
}

} // namespace

TEST_F(IconWorstCase, longFilledPaths)
{
    draw("fills", {path(zigzag(30000), {{"fillColor", argb(0x80FF0000)}})});
    draw("even-odd fills", {path(zigzag(30000), {{"fillColor", argb(0x80FF0000)}, {"fillType", integer(1)}})});
}

TEST_F(IconWorstCase, manySmallFilledPaths)
{
    draw("small fills", {path("M0 0h24v24h-24z", {{"fillColor", argb(0x80FF0000)}})});
    EXPECT_TRUE(m_drawn);
}

TEST_F(IconWorstCase, longStrokes)
{
    draw("round strokes", {path(zigzag(30000), stroke(9, 1))});
    draw("mitred strokes", {path(zigzag(30000), stroke(0.1F, 0))});
    std::string arcs = "M12 12";
    while (arcs.size() < 30000)
        arcs += "a9 5 30 1 1 1 1";
    draw("stroked arcs", {path(arcs, stroke(3, 1))});
    draw("huge strokes", {path("M0 0L1e9 1e9C-1e30 5 1e30 9 0 0", stroke(1e20F, 1))});
}

TEST_F(IconWorstCase, huge)
{
    std::string curves = "M0 0";
    while (curves.size() < 30000)
        curves += "C9e9 -9e9 -9e9 9e9 24 24";
    draw("huge curves", {path(curves, {{"fillColor", argb(0x80FF0000)}})});
    draw("huge stroked curves", {path(curves, stroke(1, 1))});
}

TEST_F(IconWorstCase, clips)
{
    draw(
        "clips",
        {Tag{"clip-path", {{"pathData", literal(zigzag(30000))}}},
         path("M0 0h24v24h-24z", {{"fillColor", argb(0x80FF0000)}})});
    draw(
        "small clips",
        {Tag{"clip-path", {{"pathData", literal("M0 0h24v24h-23z")}}},
         path("M0 0h24v24h-24z", {{"fillColor", argb(0x80FF0000)}})});
}

TEST_F(IconWorstCase, gradients)
{
    std::vector<Tag> items;
    for (int i = 0; i < 5000; ++i)
        items.push_back(
            {"item",
             {{"offset", real(static_cast<float>(i) / 5000)},
              {"color", argb(0xFF000000U + static_cast<unsigned>(i))}}});
    const auto radial = fileResource(
        "res/g.xml",
        compile({"gradient", {{"type", integer(1)}, {"centerX", real(12)}, {"gradientRadius", real(20)}}, items}));
    draw("gradients", {path("M0 0h24v24h-23z", {{"fillColor", reference(radial)}})});
}

TEST_F(IconWorstCase, groups)
{
    draw(
        "groups",
        {Tag{"group", {{"rotation", real(1)}}, {path("M0 0h24v24h-24z", {{"fillColor", argb(0x80FF0000)}})}}});
    draw("empty groups", {Tag{"group"}});
}

TEST_F(IconWorstCase, closingsThatTakeNumbers)
{
    draw("closings", {path("M0 0z1", {{"fillColor", argb(0x80FF0000)}})});
}

TEST_F(IconWorstCase, oneColourFileInManyEntries)
{
    // Four megabytes of chunks as small as they can be.
    Writer chunks;
    chunks.u16(3).u16(4);
    while (chunks.size() < 4 * 1024 * 1024)
        chunks.u16(4).u16(0);
    files["res/color.xml"] = chunks.bytes();
    const auto color = resource(std::vector<Resource>(10'000, {0, literal("res/color.xml")}));
    draw("colours", {path("M0 0h24v24h-24z", {{"fillColor", reference(color)}})});
}

TEST_F(IconWorstCase, rasters)
{
    // The largest that is read, in a few kilobytes.
    const Image large{4096, 4096, std::vector<std::uint32_t>(4096U * 4096, 0xFF336699)};
    const auto png = drawing.encodePng(large);
    ASSERT_TRUE(png);
    std::printf("%zu bytes stand for 64 MiB\n", png->size());
    std::vector<Tag> layers;
    for (int i = 0; i < 30; ++i) {
        const auto id = fileResource("res/large" + std::to_string(i) + ".png", *png);
        const auto inset = fileResource(
            "res/inset" + std::to_string(i) + ".xml",
            compile({"inset", {{"drawable", reference(id)}, {"inset", percent(10)}}}));
        layers.push_back({i < 15 ? "background" : "foreground", {{"drawable", reference(i % 2 ? id : inset)}}});
    }
    const auto icon = fileResource("res/icon.xml", compile({"adaptive-icon", {}, layers}));
    measure("rasters", [&] { m_drawn = APKIconExtractor::render(source(), icon, 0); });
}
