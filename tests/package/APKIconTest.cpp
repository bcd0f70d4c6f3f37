#include "package/IconFixture.h"

#include "package/BinaryXml.h"
#include <sys/resource.h>

using namespace quillnest;
using namespace quillnest::build;

namespace
{

/// Bytes that say they are a PNG; the last one tells them apart.
Blob raster(std::uint8_t mark, std::uint8_t first = 0x89, std::uint8_t second = 'P')
{
    return {first, second, 0, 0, 0, mark};
}

Blob adaptiveIcon(std::vector<Tag> layers)
{
    return compile({"adaptive-icon", {}, std::move(layers)});
}

Tag layerTag(const char *name, const Value &drawable)
{
    return {name, {{"drawable", drawable}}};
}

Blob vectorFile(std::uint32_t color = 0xFFFF0000)
{
    return compile({"vector", {}, {{"path", {{"pathData", literal("M0 0h9v9z")}, {"fillColor", argb(color)}}}}});
}

class APKIcon : public IconFixture
{
protected:
    APKIcon()
    {
        recording.decodes = [this](std::span<const std::uint8_t> bytes) -> std::optional<Image> {
            const auto mark = bytes.back();
            decoded.push_back(mark);
            if (mark == broken)
                return std::nullopt;
            return Image{mark, 1, {mark}};
        };
    }

    void manifest(std::vector<std::pair<std::string, Value>> application)
    {
        files["AndroidManifest.xml"]
            = compile({"manifest", {}, {{"application", std::move(application), {{"activity"}}}}});
    }

    /// The icon of a package with these attributes on its application element. The recording's "PNG" tells the size.
    std::optional<Blob> icon(std::vector<std::pair<std::string, Value>> application)
    {
        manifest(std::move(application));
        files["resources.arsc"] = table();
        return APKIconExtractor::iconPNG(tools, "/p/app.apk");
    }

    std::optional<Image> render(std::uint32_t id, int depth = 0)
    {
        return APKIconExtractor::render(source(), id, depth);
    }

    static constexpr std::uint8_t broken = 99;
    std::vector<int> decoded;
    int icons = 0;
    const Blob drawn{'P', 192, 192};
};

} // namespace

TEST_F(APKIcon, aRasterIconIsItsHighestDensityAtItsOwnSize)
{
    std::vector<Resource> densities;
    for (const unsigned density : {16U, 24U, 64U, 48U, 32U}) {
        const auto name = "res/icon" + std::to_string(density) + ".png";
        files[name] = raster(static_cast<std::uint8_t>(density));
        densities.push_back({density * 10, literal(name)});
    }
    EXPECT_EQ(icon({{"icon", reference(resource(densities))}}), (Blob{'P', 64, 1}));
    EXPECT_EQ(decoded, std::vector<int>{64});
    EXPECT_TRUE(recording.lines.size() == 1);
}

TEST_F(APKIcon, aPlainPngIsItsOwnFileAndNothingElseIs)
{
    const auto fileOf = [this](const Blob &file) {
        const auto id = fileResource("res/icon" + std::to_string(++icons) + ".png", file);
        manifest({{"icon", reference(id)}});
        files["resources.arsc"] = table();
        const auto found = APKIconExtractor::icon(tools, "/p/app.apk");
        return found ? found->png : Blob{0};
    };
    const Blob start{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    const Blob end{0, 0, 0, 0, 'I', 'E', 'N', 'D', 0xAE, 'B', 0x60, 0x82};
    const auto joined = [](std::initializer_list<Blob> parts) {
        Blob whole;
        for (const auto &part : parts)
            whole.insert(whole.end(), part.begin(), part.end());
        return whole;
    };
    const auto plain = joined({start, Blob(100, 7), end});
    recording.decodes = [](std::span<const std::uint8_t>) { return Image{2, 1, {1, 2}}; };
    EXPECT_EQ(fileOf(plain), plain);
    EXPECT_EQ(APKIconExtractor::iconPNG(tools, "/p/app.apk"), plain);
    EXPECT_EQ(fileOf(joined({plain, Blob{0}})), Blob()) << "something hangs on";
    EXPECT_EQ(fileOf(joined({start, Blob(100, 7)})), Blob()) << "without its end";
    EXPECT_EQ(fileOf(joined({Blob{0xFF, 0xD8}, Blob(100, 7), end})), Blob()) << "another kind";
    // Two pixels, and 64 KiB for what may be noted in a file.
    const std::size_t most = 2 * 4 + 64 * 1024 - start.size() - end.size();
    EXPECT_FALSE(fileOf(joined({start, Blob(most, 7), end})).empty());
    EXPECT_TRUE(fileOf(joined({start, Blob(most + 1, 7), end})).empty()) << "a file for more than its picture";
}

TEST_F(APKIcon, theMarkersAnyAndNoneCountAsTheHighestDensities)
{
    files["res/a.png"] = raster(1);
    files["res/b.png"] = raster(2);
    files["res/c.png"] = raster(3);
    const auto id = resource({{640, literal("res/a.png")}, {0xFFFE, literal("res/b.png")}, {0, literal("res/c.png")}});
    EXPECT_EQ(render(id)->width, 2);
}

TEST_F(APKIcon, theFirstInTheTableWinsAmongEqualDensities)
{
    files["res/a.png"] = raster(1);
    files["res/b.png"] = raster(2);
    EXPECT_EQ(render(resource({{640, literal("res/a.png")}, {640, literal("res/b.png")}}))->width, 1);
}

TEST_F(APKIcon, theSquareIconComesBeforeTheRoundOne)
{
    const auto square = fileResource("res/square.png", raster(1));
    const auto round = fileResource("res/round.png", raster(2));
    EXPECT_EQ(icon({{"roundIcon", reference(round)}, {"icon", reference(square)}}), (Blob{'P', 1, 1}));
}

TEST_F(APKIcon, theRoundIconServesWhereTheSquareOneLeadsNowhere)
{
    const auto round = fileResource("res/round.png", raster(2));
    EXPECT_EQ(icon({{"icon", reference(0x7F020000)}, {"roundIcon", reference(round)}}), (Blob{'P', 2, 1}));
    EXPECT_EQ(icon({{"icon", literal("res/round.png")}, {"roundIcon", reference(round)}}), (Blob{'P', 2, 1}));
    EXPECT_TRUE(log.empty());
}

TEST_F(APKIcon, aColourUnderAVectorIsDrawnOnTheWholeSquareFirst)
{
    const auto front = fileResource("res/front.xml", vectorFile());
    const auto id = fileResource(
        "res/icon.xml",
        adaptiveIcon({layerTag("background", argb(0xFF00FF00)), layerTag("foreground", reference(front))}));
    EXPECT_EQ(icon({{"icon", reference(id)}}), drawn);
    const auto all = recording.all();
    EXPECT_NE(all.find("; fillColor ff00ff00; rect 0 0 192 192; image 1 -48 -48 288 288"), std::string::npos) << all;
    EXPECT_TRUE(log.empty());
}

TEST_F(APKIcon, anAdaptiveIconWithoutABackgroundIsDrawnAndSaidSo)
{
    const auto front = fileResource("res/front.xml", vectorFile());
    const auto id = fileResource("res/icon.xml", adaptiveIcon({layerTag("foreground", reference(front))}));
    EXPECT_EQ(icon({{"icon", reference(id)}}), drawn);
    EXPECT_EQ(
        log,
        std::vector<std::string>{"icon trace adaptive: bg=false fg=true BG  FG foreground{drawable=t1/0x7f010000->"
                                 "res/front.xml(vector,path)}"});
    EXPECT_EQ(recording.all().find("rect"), std::string::npos);
}

TEST_F(APKIcon, anAdaptiveIconWithoutLayersIsAbsent)
{
    const auto missing = resource({{0, literal("res/missing.png")}, {0, integer(5)}});
    const auto id = fileResource(
        "res/icon.xml",
        adaptiveIcon(
            {layerTag("background", reference(missing)),
             {"foreground", {{"other", integer(1)}, {"a", integer(255)}}}}));
    EXPECT_EQ(icon({{"icon", reference(id)}}), std::nullopt);
    ASSERT_EQ(log.size(), 2U);
    EXPECT_EQ(
        log[0],
        "icon trace adaptive: bg=false fg=false BG background{drawable=t1/0x7f010000->res/missing.png(t3)|(t16)} "
        "FG foreground{a=t16/0xff other=t16/0x1}");
    EXPECT_EQ(log[1], "icon trace app.apk: attrs=[\"icon\"] icon=type1/0x7f010001 [0 res/icon.xml root=adaptive-icon]");
}

TEST_F(APKIcon, anAdaptiveIconIsFinalEvenWhereItIsAbsent)
{
    files["res/icon.xml"] = adaptiveIcon({});
    files["res/vector.xml"] = vectorFile();
    EXPECT_FALSE(render(resource({{0, literal("res/icon.xml")}, {0, literal("res/vector.xml")}})));
    EXPECT_TRUE(render(resource({{0, literal("res/vector.xml")}, {0, literal("res/icon.xml")}})));
}

TEST_F(APKIcon, theSystemsTransparentIsALayerThatWasFound)
{
    const auto front = fileResource("res/front.xml", vectorFile());
    const auto id = fileResource(
        "res/icon.xml",
        adaptiveIcon({layerTag("background", reference(0x0106000D)), layerTag("foreground", reference(front))}));
    EXPECT_EQ(icon({{"icon", reference(id)}}), drawn);
    EXPECT_NE(recording.all().find("fillColor 0; rect 0 0 192 192"), std::string::npos);
    EXPECT_TRUE(log.empty());
}

TEST_F(APKIcon, theSystemsWhiteAndBlackAreKnownToo)
{
    const auto id = fileResource(
        "res/icon.xml",
        adaptiveIcon({layerTag("background", reference(0x0106000B)), layerTag("foreground", reference(0x0106000C))}));
    EXPECT_TRUE(render(id));
    EXPECT_EQ(recording.all(), "fillColor ffffffff; rect 0 0 192 192; fillColor ff000000; rect 0 0 192 192");
}

TEST_F(APKIcon, monochromeLayersAndStrayElementsAreLeftOut)
{
    const auto id = fileResource(
        "res/icon.xml",
        adaptiveIcon(
            {layerTag("stray", argb(0xFF000001)),
             {"background", {}, {layerTag("inner", argb(0xFF000002))}},
             layerTag("monochrome", argb(0xFF000003)),
             {"foreground", {{"src", argb(0xFF000004)}}},
             layerTag("monochrome", argb(0xFF000005))}));
    EXPECT_TRUE(render(id));
    EXPECT_EQ(recording.all(), "fillColor ff000002; rect 0 0 192 192; fillColor ff000004; rect 0 0 192 192");
}

TEST_F(APKIcon, whatLiesInAMonochromeLayerBelongsToNoOther)
{
    const auto id = fileResource(
        "res/icon.xml",
        adaptiveIcon(
            {Tag{"background"}, Tag{"monochrome", {}, {layerTag("inner", argb(0xFF000002))}},
             layerTag("foreground", argb(0xFF000004))}));
    EXPECT_TRUE(render(id));
    EXPECT_EQ(recording.all(), "fillColor ff000004; rect 0 0 192 192");
}

TEST_F(APKIcon, rasterFilesComeBeforeAnAdaptiveIcon)
{
    files["res/icon.xml"] = adaptiveIcon({layerTag("background", argb(0xFF00FF00))});
    files["res/icon.png"] = raster(7);
    EXPECT_EQ(render(resource({{0xFFFE, literal("res/icon.xml")}, {160, literal("res/icon.png")}}))->width, 7);
}

TEST_F(APKIcon, aBrokenRasterFileIsNotReplacedByALowerDensityButByXml)
{
    files["res/high.png"] = raster(broken);
    files["res/low.png"] = raster(1);
    files["res/icon.xml"] = vectorFile();
    EXPECT_FALSE(render(resource({{160, literal("res/low.png")}, {640, literal("res/high.png")}})));
    EXPECT_EQ(decoded, std::vector<int>{broken});
    const auto both
        = resource({{160, literal("res/low.png")}, {640, literal("res/high.png")}, {0, literal("res/icon.xml")}});
    EXPECT_EQ(render(both)->width, 192);
}

TEST_F(APKIcon, filesAreToldByTheirFirstTwoBytes)
{
    EXPECT_EQ(render(fileResource("res/a.webp", raster(1, 'R', 'I')))->width, 1);
    EXPECT_EQ(render(fileResource("res/b.jpg", raster(2, 0xFF, 0xD8)))->width, 2);
    EXPECT_EQ(render(fileResource("res/c", raster(3)))->width, 3);
    EXPECT_FALSE(render(fileResource("res/d.png", raster(4, 'G', 'I'))));
    EXPECT_FALSE(render(fileResource("res/e.png", {0x89, 'P', 'N', 'G'})));
    EXPECT_EQ(decoded, (std::vector<int>{1, 2, 3}));
}

TEST_F(APKIcon, insetsWithinInsetsEndAfterFourLevels)
{
    const auto chain = [this](int length) {
        auto id = fileResource("res/end" + std::to_string(length) + ".png", raster(1));
        for (int i = 0; i < length; ++i) {
            id = fileResource(
                "res/inset" + std::to_string(length) + "-" + std::to_string(i) + ".xml",
                compile({"inset", {{"drawable", reference(id)}}}));
        }
        return id;
    };
    EXPECT_TRUE(render(chain(3)));
    EXPECT_FALSE(render(chain(4)));
    EXPECT_FALSE(render(chain(5)));
    EXPECT_FALSE(icon({{"icon", reference(chain(6))}}));
}

TEST_F(APKIcon, anInsetOfItselfEnds)
{
    const auto id = nextId();
    fileResource("res/self.xml", compile({"inset", {{"drawable", reference(id)}}}));
    EXPECT_FALSE(render(id));
    EXPECT_EQ(reads("res/self.xml"), 1);
}

TEST_F(APKIcon, pastTheDepthNothingIsRead)
{
    const auto id = fileResource("res/a.png", raster(1));
    EXPECT_TRUE(render(id, 3));
    EXPECT_FALSE(render(id, 4));
}

TEST_F(APKIcon, anXmlFileThatCannotBeDrawnMayNameOneThatCan)
{
    const auto bitmap = fileResource("res/inner.png", raster(5));
    const auto id = fileResource("res/bitmap.xml", compile({"bitmap", {{"src", reference(bitmap)}}}));
    EXPECT_EQ(render(id)->width, 5);
    // A colour is no picture.
    EXPECT_FALSE(render(fileResource("res/color.xml", compile({"bitmap", {{"src", argb(0xFF000001)}}}))));
}

TEST_F(APKIcon, aLayerIsItsFirstColourOrPicture)
{
    const auto layer = [this](std::vector<std::pair<std::string, Value>> attributes) {
        return APKIconExtractor::layer(
            source(), BinaryXml::elements(compile({"foreground", std::move(attributes)})), 0);
    };
    const auto color = resource({{0, literal("res/none.png")}, {0, argb(0xFF0000FF)}});
    const auto picture = fileResource("res/a.png", raster(3));
    EXPECT_EQ(std::get<Color>(*layer({{"src", argb(0xFF00FF00)}, {"drawable", argb(0xFFFF0000)}})).red, 1);
    EXPECT_EQ(std::get<Color>(*layer({{"drawable", reference(color)}})).blue, 1);
    EXPECT_EQ(std::get<Image>(*layer({{"src", reference(picture)}})).width, 3);
    EXPECT_EQ(std::get<Image>(*layer({{"drawable", reference(1)}, {"src", reference(picture)}})).width, 3);
    EXPECT_FALSE(layer({{"drawable", literal("res/a.png")}}));
    EXPECT_FALSE(layer({}));
}

TEST_F(APKIcon, aManifestWithoutAnIconIsSaidWithTheNamesThatItHas)
{
    EXPECT_FALSE(icon({{"name", literal("App")}, {"label", literal("App")}}));
    EXPECT_EQ(log, std::vector<std::string>{"icon trace app.apk: attrs=[\"label\", \"name\"]"});
}

TEST_F(APKIcon, theTraceTellsWhatEachValueLedTo)
{
    files["res/layers.xml"] = compile({"layer-list"});
    files["res/empty.xml"] = {3, 0, 8, 0, 8, 0, 0, 0};
    const auto id = resource(
        {{160, literal("res/layers.xml")},
         {0xFFFE, literal("res/empty.xml")},
         {0, literal("res/gone.png")},
         {0, argb(0xFF000000)}});
    EXPECT_FALSE(icon({{"roundIcon", integer(10)}, {"icon", reference(id)}}));
    EXPECT_EQ(
        log,
        std::vector<std::string>{
            "icon trace app.apk: attrs=[\"icon\", \"roundIcon\"] icon=type1/0x7f010000 "
            "[160 res/layers.xml root=layer-list] [65534 res/empty.xml root=?] [0 res/gone.png root=-] "
            "[0 t28 root=-] roundIcon=type16/0xa"});
}

TEST_F(APKIcon, aPackageWithoutManifestOrTableIsAbsentInSilence)
{
    EXPECT_FALSE(APKIconExtractor::iconPNG(tools, "/p/app.apk"));
    manifest({{"label", literal("App")}});
    EXPECT_FALSE(APKIconExtractor::iconPNG(tools, "/p/app.apk"));
    EXPECT_TRUE(log.empty());
}

TEST_F(APKIcon, aPictureThatCannotBeEncodedIsAbsentInSilence)
{
    recording.refusesToEncode = true;
    EXPECT_FALSE(icon({{"icon", reference(fileResource("res/a.png", raster(1)))}}));
    EXPECT_TRUE(log.empty());
}

TEST_F(APKIcon, eachFileIsReadOnce)
{
    const auto front = fileResource("res/front.xml", vectorFile());
    const auto id = fileResource(
        "res/icon.xml",
        adaptiveIcon({layerTag("background", reference(front)), layerTag("foreground", reference(front))}));
    EXPECT_EQ(icon({{"icon", reference(id)}}), drawn);
    EXPECT_EQ(reads("res/front.xml"), 1);
    EXPECT_EQ(archives.reads.size(), 4U);
    EXPECT_EQ(archives.opened.size(), 1U);
}

TEST_F(APKIcon, iconsThatFanOutWithoutEndEnd)
{
    // Every file names every other one, hundreds of times.
    std::vector<std::uint32_t> ids;
    const auto first = nextId();
    for (std::uint32_t i = 0; i < 30; ++i) {
        std::vector<Tag> tags;
        for (std::uint32_t j = 0; j < 300; ++j)
            tags.push_back({"item", {{"drawable", reference(first + j % 30)}}});
        fileResource("res/fan" + std::to_string(i) + ".xml", compile({"layer-list", {}, tags}));
    }
    EXPECT_FALSE(icon({{"icon", reference(first)}}));
    EXPECT_LT(archives.reads.size(), 250U);
}

TEST_F(APKIcon, anIconThatTakesMoreWorkThanAnyRealOneIsNone)
{
    const std::vector<Tag> paths(
        5000, Tag{"path", {{"pathData", literal("M0 0h9v9z")}, {"fillColor", argb(0xFFFF0000)}}});
    const auto id = fileResource("res/icon.xml", compile({"vector", {}, paths}));
    EXPECT_FALSE(icon({{"icon", reference(id)}, {"roundIcon", reference(fileResource("res/a.png", raster(1)))}}))
        << "half of it would be kept for good";
    EXPECT_EQ(log, std::vector<std::string>{"icon trace app.apk: takes more work than any icon"});
}

TEST_F(APKIcon, namesThatAreEmptyKeepTheirPlaceInTheLog)
{
    const auto inner = fileResource("res/inner.xml", compile({"", {}, {{"b"}, {""}, {"d"}, {"e"}}}));
    EXPECT_FALSE(render(fileResource("res/icon.xml", adaptiveIcon({layerTag("background", reference(inner))}))));
    ASSERT_EQ(log.size(), 1U);
    EXPECT_NE(log[0].find("->res/inner.xml(,b,,d)}"), std::string::npos) << log[0];
}

TEST_F(APKIcon, textsOfElementsTimesEntriesAreBounded)
{
    // Thousands of layers, each of which refers to thousands of files with long names: gigabytes of text in a package
    // of two megabytes.
    std::vector<Resource> values;
    for (unsigned i = 0; i < 3000; ++i)
        values.push_back({0, literal(std::string(500, 'n') + std::to_string(i))});
    const auto many = resource(values);
    const std::vector<Tag> layers(3000, layerTag("background", reference(many)));
    EXPECT_FALSE(icon({{"icon", reference(fileResource("res/icon.xml", adaptiveIcon(layers)))}}));
    for (const auto &line : log)
        EXPECT_LE(line.size(), 4000U);
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
#ifndef __SANITIZE_ADDRESS__
    EXPECT_LT(usage.ru_maxrss, 400 * 1024);
#endif
}

TEST_F(APKIcon, linesOfTheLogStayLinesWhateverThePackageHolds)
{
    EXPECT_FALSE(icon({{"forged\n2026-01-01T00:00:00Z line", literal("x")}, {std::string(30000, 'n'), literal("x")}}));
    ASSERT_EQ(log.size(), 1U);
    EXPECT_EQ(log[0].find('\n'), std::string::npos);
    EXPECT_LE(log[0].size(), 4000U);
}
