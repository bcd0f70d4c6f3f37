#include "package/BinaryXml.h"
#include "package/IconFixture.h"
#include "package/IconVector.h"
#include "package/Pictures.h"
#include "platform/desktop/QtDrawing.h"
#include "platform/posix/ZipArchives.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

using namespace quillnest;
using namespace quillnest::build;

namespace
{

constexpr std::uint32_t red = 0xFFFF0000;
constexpr std::uint32_t green = 0xFF00FF00;
constexpr std::uint32_t blue = 0xFF0000FF;

/// Icons out of made-up packages, drawn by the real canvas.
class IconPicture : public IconFixture
{
protected:
    IconPicture() : m_drawingTools{archives, drawing, tools.log} { }

    std::optional<Image> picture(const Blob &file)
    {
        m_table = table();
        const auto package = archives.open(packagePath);
        IconSource real(m_drawingTools, *package, m_table);
        return IconVector::render(real, file, 0);
    }

    std::optional<Image> picture(std::vector<Tag> children, float viewport = 24)
    {
        return picture(compile(
            {"vector", {{"viewportWidth", real(viewport)}, {"viewportHeight", real(viewport)}}, std::move(children)}));
    }

    std::optional<Image> icon(std::uint32_t id)
    {
        files["AndroidManifest.xml"] = compile({"manifest", {}, {{"application", {{"icon", reference(id)}}}}});
        files["resources.arsc"] = table();
        const auto png = APKIconExtractor::iconPNG(m_drawingTools, "/p/app.apk");
        return png ? drawing.decode(*png) : std::nullopt;
    }

    QtDrawing drawing;

private:
    APKIconExtractor::IconTools m_drawingTools;
    Blob m_table;
};

std::uint32_t at(const std::optional<Image> &image, int x, int y)
{
    return image ? image->pixels.at(static_cast<std::size_t>(y * image->width + x)) : 0xDEADBEEF;
}

Tag square(const char *data, std::uint32_t color)
{
    return {"path", {{"pathData", literal(data)}, {"fillColor", argb(color)}}};
}

Blob bytesOf(const QByteArray &bytes)
{
    return {bytes.begin(), bytes.end()};
}

} // namespace

TEST_F(IconPicture, theViewportsTopLeftIsThePicturesTopLeft)
{
    const auto image = picture({square("M0 0h12v6h-12z", red)});
    EXPECT_EQ(at(image, 0, 0), red);
    EXPECT_EQ(at(image, 95, 47), red);
    EXPECT_EQ(at(image, 96, 0), 0U);
    EXPECT_EQ(at(image, 0, 48), 0U);
}

TEST_F(IconPicture, aTurnAboutTheCentreTakesTheTopToTheRight)
{
    const Tag group{
        "group", {{"rotation", real(90)}, {"pivotX", real(12)}, {"pivotY", real(12)}}, {square("M8 0h8v4h-8z", red)}};
    const auto image = picture({group});
    EXPECT_EQ(at(image, 180, 96), red);
    EXPECT_EQ(at(image, 96, 10), 0U);
    EXPECT_EQ(at(image, 96, 180), 0U);
    EXPECT_EQ(at(image, 10, 96), 0U);
}

TEST_F(IconPicture, aGroupScalesAboutItsPivotAndThenMoves)
{
    const Tag group{
        "group",
        {{"scaleX", real(0.5)},
         {"scaleY", real(0.5)},
         {"pivotX", real(12)},
         {"pivotY", real(12)},
         {"translateX", real(6)}},
        {square("M0 0h24v24h-24z", red)}};
    const auto image = picture({group});
    EXPECT_EQ(at(image, 97, 49), red);
    EXPECT_EQ(at(image, 190, 142), red);
    EXPECT_EQ(at(image, 94, 96), 0U);
    EXPECT_EQ(at(image, 144, 46), 0U);
}

TEST_F(IconPicture, aClipInAGroupEndsWithTheGroupAndHasSmoothEdges)
{
    const Tag clip{"clip-path", {{"pathData", literal("M0 0L24 0L0 24z")}}};
    const auto image = picture(
        {Tag{"group", {}, {square("M20 20h4v4h-4z", blue), clip, square("M0 0h24v24h-24z", red)}},
         square("M16 16h4v4h-4z", green)});
    EXPECT_EQ(at(image, 40, 40), red);
    EXPECT_EQ(at(image, 140, 120), 0U);
    EXPECT_EQ(at(image, 176, 176), blue);
    EXPECT_EQ(at(image, 144, 144), green);
    // The diagonal runs through this pixel.
    const auto edge = at(image, 95, 96) >> 24;
    EXPECT_GT(edge, 96U);
    EXPECT_LT(edge, 160U);
}

TEST_F(IconPicture, aClipAtTheTopHoldsToTheEnd)
{
    const auto image = picture(
        {Tag{"clip-path", {{"pathData", literal("M0 0h12v24h-12z")}}},
         Tag{"group", {}, {square("M0 0h24v24h-24z", red)}}});
    EXPECT_EQ(at(image, 95, 100), red);
    EXPECT_EQ(at(image, 96, 100), 0U);
}

TEST_F(IconPicture, aGradientRunsInTheVectorsUnitsInsideThePath)
{
    const auto gradient = fileResource(
        "res/g.xml",
        compile(
            {"gradient",
             {{"startX", real(6)}, {"endX", real(18)}, {"startColor", argb(red)}, {"endColor", argb(blue)}}}));
    const auto image
        = picture({{"path", {{"pathData", literal("M0 6h24v12h-24z")}, {"fillColor", reference(gradient)}}}});
    EXPECT_EQ(at(image, 10, 96), red);
    EXPECT_EQ(at(image, 180, 96), blue);
    const auto middle = at(image, 96, 96);
    EXPECT_NEAR(static_cast<double>((middle >> 16) & 0xFF), 127, 2);
    EXPECT_NEAR(static_cast<double>(middle & 0xFF), 128, 2);
    EXPECT_EQ(at(image, 96, 40), 0U);
}

TEST_F(IconPicture, halfTheAlphaHalvesAGradientToo)
{
    const auto gradient = fileResource(
        "res/g.xml", compile({"gradient", {{"endX", real(24)}, {"startColor", argb(red)}, {"endColor", argb(red)}}}));
    const auto image = picture(
        {{"path",
          {{"pathData", literal("M0 0h24v24h-24z")}, {"fillColor", reference(gradient)}, {"fillAlpha", real(0.5)}}}});
    EXPECT_NEAR(static_cast<double>(at(image, 96, 96) >> 24), 128, 1);
    EXPECT_NEAR(static_cast<double>((at(image, 96, 96) >> 16) & 0xFF), 128, 1);
}

TEST_F(IconPicture, stopsOutOfOrderTakeTheirPlacesAlongTheLine)
{
    const auto item = [](float offset, std::uint32_t color) {
        return Tag{"item", {{"offset", real(offset)}, {"color", argb(color)}}};
    };
    const auto gradient = fileResource(
        "res/g.xml",
        compile({"gradient", {{"endX", real(24)}}, {item(0.75, red), item(0.25, green), item(0.5, blue)}}));
    const auto image
        = picture({{"path", {{"pathData", literal("M0 0h24v24h-24z")}, {"fillColor", reference(gradient)}}}});
    EXPECT_EQ(at(image, 10, 96), green);
    EXPECT_EQ(at(image, 180, 96), red);
    EXPECT_GT(at(image, 96, 96) & 0xFF, 250U);
}

TEST_F(IconPicture, anInsetOfAQuarterShowsInTheMiddleHalf)
{
    const auto inner = fileResource("res/inner.xml", compile({"color", {{"color", argb(red)}}}));
    const auto image = picture(compile({"inset", {{"drawable", reference(inner)}, {"inset", percent(25)}}}));
    EXPECT_EQ(at(image, 47, 96), 0U);
    EXPECT_EQ(at(image, 49, 96), red);
    EXPECT_EQ(at(image, 142, 96), red);
    EXPECT_EQ(at(image, 144, 96), 0U);
    EXPECT_EQ(at(image, 96, 47), 0U);
    EXPECT_EQ(at(image, 96, 49), red);
}

TEST_F(IconPicture, anInsetOnTopMovesThePictureDown)
{
    const auto inner = fileResource("res/inner.xml", compile({"color", {{"color", argb(red)}}}));
    const auto image = picture(compile({"inset", {{"drawable", reference(inner)}, {"insetTop", percent(50)}}}));
    EXPECT_EQ(at(image, 96, 40), 0U);
    EXPECT_EQ(at(image, 96, 150), red);
}

TEST_F(IconPicture, theColourUnderAnAdaptiveIconFillsItsCorners)
{
    const auto front = fileResource("res/front.xml", compile({"vector", {}, {square("M36 36h36v36h-36z", red)}}));
    const auto id = fileResource(
        "res/icon.xml",
        compile(
            {"adaptive-icon",
             {},
             {{"background", {{"drawable", argb(green)}}}, {"foreground", {{"drawable", reference(front)}}}}}));
    const auto image = icon(id);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->width, 192);
    EXPECT_EQ(image->height, 192);
    for (const int x : {0, 191})
        for (const int y : {0, 191})
            EXPECT_EQ(at(image, x, y), green);
    // The middle third of the layer's canvas is the middle half of what shows.
    EXPECT_EQ(at(image, 96, 96), red);
    EXPECT_EQ(at(image, 52, 96), red);
    EXPECT_EQ(at(image, 44, 96), green);
}

TEST_F(IconPicture, withoutABackgroundTheGroundIsTransparent)
{
    const auto front = fileResource("res/front.xml", compile({"vector", {}, {square("M36 36h36v36h-36z", red)}}));
    const auto image = icon(fileResource(
        "res/icon.xml", compile({"adaptive-icon", {}, {{"foreground", {{"drawable", reference(front)}}}}})));
    EXPECT_EQ(at(image, 0, 0), 0U);
    EXPECT_EQ(at(image, 96, 96), red);
    EXPECT_EQ(log.size(), 1U);
}

TEST_F(IconPicture, aPathOfASingleMovePaintsNothing)
{
    const auto image = picture({{"path", {{"pathData", literal("M12 12")}, {"fillColor", argb(red)}}}});
    EXPECT_EQ(image ? pictures::painted(*image) : 0, 0);
}

TEST_F(IconPicture, namesThatMisleadAnUnpackerOrAShellLeadToNoIcon)
{
    const QTemporaryDir folder;
    const QDir content(folder.filePath(QStringLiteral("content")));
    ASSERT_TRUE(QDir().mkpath(content.filePath(QStringLiteral("res"))));
    const auto write = [&content](const QString &name, const Blob &bytes) {
        QFile file(content.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(reinterpret_cast<const char *>(bytes.data()), static_cast<qint64>(bytes.size()));
    };
    write(QStringLiteral("res/icon.xml"), compile({"color", {{"color", argb(red)}}}));
    const auto mark = folder.filePath(QStringLiteral("shell-was-here"));
    ZipArchives real;
    const APKIconExtractor::IconTools realTools{real, drawing, tools.log};
    const auto apk = folder.filePath(QStringLiteral("app.apk"));
    const auto iconAt = [&](const std::string &path) {
        const auto resources = build::table({pool({path}), package(0x7F, {typeChunk(1, 0, {fullEntry(3, 0)})})});
        write(
            QStringLiteral("AndroidManifest.xml"),
            compile({"manifest", {}, {{"application", {{"icon", reference(0x7F010000)}}}}}));
        write(QStringLiteral("resources.arsc"), resources);
        QFile::remove(apk);
        QProcess zip;
        zip.setWorkingDirectory(content.path());
        zip.start(QStringLiteral("zip"), {QStringLiteral("-qr"), apk, QStringLiteral(".")});
        EXPECT_TRUE(zip.waitForFinished() && zip.exitCode() == 0);
        return APKIconExtractor::iconPNG(realTools, apk.toStdString());
    };
    EXPECT_TRUE(iconAt("res/icon.xml"));
    for (const std::string &path :
         {std::string("res/*.xml"), std::string("res/icon.?ml"), std::string("res/[i]con.xml"), std::string("*"),
          std::string("-x"), std::string("-d/tmp"), std::string("../content/res/icon.xml"), std::string("/etc/passwd"),
          std::string("res/icon.xml\0x", 14), std::string("$(touch " + mark.toStdString() + ")"),
          std::string("`touch " + mark.toStdString() + "`"), std::string("; touch " + mark.toStdString()),
          std::string("res/icon.xml\nres/icon.xml"), std::string("\\res/icon.xml"), std::string()})
        EXPECT_FALSE(iconAt(path)) << path;
    EXPECT_FALSE(QFile::exists(mark));
}

/// Drawables of the platform's own package as they have looked since they were first drawn and looked at. A rasterizer
/// may round otherwise; a shape that moves by half a pixel, or a colour that changes, is more than that.
TEST(FrameworkPicture, drawablesOfThePlatformLookAsTheyDid)
{
    ZipArchives archives;
    QtDrawing drawing;
    const std::string package = FRAMEWORK_PACKAGE;
    const APKIconExtractor::IconTools tools{archives, drawing, [](const std::string &) {}};
    const auto table = APKIconExtractor::read(archives, package, "resources.arsc");
    ASSERT_TRUE(table);
    const auto opened = archives.open(package);
    ASSERT_TRUE(opened);
    const QDir expected(QStringLiteral(EXPECTED_PICTURES));
    const auto names = expected.entryList({QStringLiteral("*.png")});
    ASSERT_GE(names.size(), 12);
    for (const auto &name : names) {
        SCOPED_TRACE(name.toStdString());
        QFile file(expected.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const auto before = drawing.decode(bytesOf(file.readAll()));
        IconSource source(tools, *opened, *table);
        const auto stem = name.chopped(4).toStdString();
        const auto *bytes = source.read("res/drawable/" + stem + ".xml");
        if (!bytes)
            bytes = source.read("res/drawable-nodpi-v4/" + stem + ".xml");
        ASSERT_TRUE(bytes);
        const auto now = IconVector::render(source, *bytes, 0);
        ASSERT_TRUE(before && now);
        const auto difference = pictures::difference(*before, *now);
        EXPECT_LE(difference.greatest, 24);
        EXPECT_LE(difference.mean, 0.05);
    }
}

namespace
{

/// The icon's file as the platform's own tool names it, at the highest density.
QString badgingIcon(const QString &apk)
{
    QProcess aapt;
    aapt.start(QStringLiteral("aapt2"), {QStringLiteral("dump"), QStringLiteral("badging"), apk});
    EXPECT_TRUE(aapt.waitForFinished());
    const QRegularExpression line(QStringLiteral("application-icon-\\d+:'([^']+)'"));
    QString file;
    for (auto matches = line.globalMatch(QString::fromUtf8(aapt.readAllStandardOutput())); matches.hasNext();)
        file = matches.next().captured(1);
    return file;
}

} // namespace

TEST(SampleIcons, areThoseThatThePlatformsToolNames)
{
    ZipArchives archives;
    QtDrawing drawing;
    std::vector<std::string> log;
    const APKIconExtractor::IconTools tools{
        archives, drawing, [&log](const std::string &line) { log.push_back(line); }};
    for (const auto *name : {"tide", "ember", "lantern"}) {
        SCOPED_TRACE(name);
        const auto apk = QStringLiteral(SAMPLE_FOLDER "/%1.apk").arg(QLatin1String(name));
        const auto named = badgingIcon(apk).toStdString();
        const auto png = APKIconExtractor::iconPNG(tools, apk.toStdString());
        ASSERT_TRUE(png);
        const auto icon = drawing.decode(*png);
        ASSERT_TRUE(icon);
        const auto file = APKIconExtractor::read(archives, apk.toStdString(), named);
        ASSERT_TRUE(file);
        if (named.ends_with(".png")) {
            EXPECT_EQ(drawing.decode(*file), icon);
        } else {
            EXPECT_EQ(BinaryXml::elements(*file).front().name, "adaptive-icon");
            EXPECT_EQ(icon->width, 192);
            EXPECT_EQ(pictures::painted(*icon), 192 * 192);
        }
    }
    EXPECT_TRUE(log.empty());
}
