#include "launcher/grid/AppIcon.h"

#include <gtest/gtest.h>

using namespace quillnest;

namespace
{
QImage painted(const QString &name, const QImage &image, ThemeStyle style, double ratio = 1)
{
    QImage display(QSize(74, 74) * ratio, QImage::Format_ARGB32_Premultiplied);
    display.setDevicePixelRatio(ratio);
    display.fill(Qt::transparent);
    QPainter painter(&display);
    AppIcon::paint(painter, QRectF(10, 10, 54, 54), name, image, style);
    return display;
}

QImage plain(const QColor &color, int side = 192)
{
    QImage image(side, side, QImage::Format_RGB32);
    image.fill(color);
    return image;
}
} // namespace

TEST(AppIcon, theMonogramIsMadeOfTheFirstLettersOfTwoWords)
{
    const auto monogram = [](const char *name) { return AppIcon::monogram(QString::fromUtf8(name)).toStdString(); };
    EXPECT_EQ(monogram("Two-Words"), "TW");
    EXPECT_EQ(monogram("one two three"), "OT");
    EXPECT_EQ(monogram("a_b"), "AB");
    EXPECT_EQ(monogram("  -lonely_ "), "L");
    EXPECT_EQ(monogram("Moon"), "M");
    EXPECT_EQ(monogram("---"), "?");
    EXPECT_EQ(monogram(""), "?");
    EXPECT_EQ(monogram("émile zola"), "ÉZ");
    EXPECT_EQ(monogram("天気 予報"), "天予");
    EXPECT_EQ(monogram("👩‍🚀 space"), "👩‍🚀S") << "what is seen as one character is one";
}

TEST(AppIcon, theColoursStayWithTheName)
{
    // Worked out by hand: 7 for the empty name, and times 31 plus the letter from there.
    EXPECT_EQ(AppIcon::paletteIndex(QString()), 0U);
    EXPECT_EQ(AppIcon::paletteIndex(QStringLiteral("A")), (7U * 31 + 65) % 7);
    EXPECT_EQ(AppIcon::paletteIndex(QStringLiteral("AB")), ((7U * 31 + 65) * 31 + 66) % 7);
    EXPECT_EQ(AppIcon::paletteIndex(QStringLiteral("Quillnest")), [] {
        std::uint64_t hash = 7;
        for (const char letter : std::string("Quillnest"))
            hash = (hash * 31 + static_cast<std::uint64_t>(letter)) & 0xFFFFFFFFU;
        return hash % 7;
    }());
    // One scalar beyond the basic plane, not two halves.
    EXPECT_EQ(AppIcon::paletteIndex(QStringLiteral("😀")), (7U * 31 + 0x1F600U) % 7);
}

TEST(AppIcon, theSevenGradientsAreThese)
{
    constexpr float table[7][6]{{0.2F, 0.6F, 0.98F, 0.36F, 0.36F, 0.95F},  {0.13F, 0.77F, 0.53F, 0.05F, 0.55F, 0.62F},
                                {1.0F, 0.58F, 0.2F, 0.96F, 0.3F, 0.36F},   {0.75F, 0.35F, 0.95F, 0.45F, 0.25F, 0.85F},
                                {0.98F, 0.36F, 0.56F, 0.85F, 0.2F, 0.45F}, {0.25F, 0.78F, 0.9F, 0.15F, 0.48F, 0.85F},
                                {0.98F, 0.78F, 0.2F, 0.95F, 0.52F, 0.12F}};
    for (std::size_t i = 0; i < 7; ++i) {
        const auto &colors = AppIcon::palettes()[i];
        EXPECT_EQ(colors.first, QColor::fromRgbF(table[i][0], table[i][1], table[i][2])) << i;
        EXPECT_EQ(colors.second, QColor::fromRgbF(table[i][3], table[i][4], table[i][5])) << i;
    }
}

TEST(AppIcon, theCornersFollowTheStyle)
{
    EXPECT_DOUBLE_EQ(AppIcon::radius(100, ThemeStyle::classic), 23.5);
    EXPECT_DOUBLE_EQ(AppIcon::radius(100, ThemeStyle::oneui), 32);
    EXPECT_DOUBLE_EQ(AppIcon::radius(100, ThemeStyle::ios), 22.5);
    EXPECT_DOUBLE_EQ(AppIcon::radius(100, ThemeStyle::pixel), 50);
}

TEST(AppIcon, aMonogramRunsFromItsFirstColourAtTheTopLeftToItsSecond)
{
    const auto image = painted(QString(), {}, ThemeStyle::classic);
    const auto near = [](const QColor &a, const QColor &b) {
        return std::abs(a.red() - b.red()) + std::abs(a.green() - b.green()) + std::abs(a.blue() - b.blue()) < 40;
    };
    EXPECT_TRUE(near(image.pixelColor(17, 17), AppIcon::palettes()[0].first));
    EXPECT_TRUE(near(image.pixelColor(56, 56), AppIcon::palettes()[0].second));
    EXPECT_EQ(image.pixelColor(10, 10).alpha(), 0);
}

TEST(AppIcon, oneLetterIsLargerThanTwo)
{
    const auto whiteHeight = [](const char *name) {
        const auto image = painted(QLatin1String(name), {}, ThemeStyle::classic, 2);
        int top = image.height();
        int bottom = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (image.pixelColor(x, y) == QColor(Qt::white)) {
                    top = std::min(top, y);
                    bottom = std::max(bottom, y);
                }
            }
        }
        return bottom - top;
    };
    EXPECT_GT(whiteHeight("H"), whiteHeight("H H") * 1.15);
}

TEST(AppIcon, aPictureIsCutToTheStylesShapeAndCastsASoftShadowBelow)
{
    const QColor red(0xC01020);
    for (const auto style : {ThemeStyle::classic, ThemeStyle::oneui, ThemeStyle::ios, ThemeStyle::pixel}) {
        const auto image = painted(QStringLiteral("Moon"), plain(red), style);
        EXPECT_EQ(image.pixelColor(37, 37), red);
        EXPECT_EQ(image.pixelColor(11, 37), red);
        EXPECT_NE(image.pixelColor(11, 11), red);
        const auto below = image.pixelColor(37, 66);
        EXPECT_GT(below.alpha(), 0);
        EXPECT_LT(below.alpha(), 40);
        EXPECT_GT(below.alpha(), image.pixelColor(37, 8).alpha());
        EXPECT_EQ(image.pixelColor(0, 0).alpha(), 0);
    }
    EXPECT_EQ(painted({}, plain(red), ThemeStyle::classic).pixelColor(20, 14), red);
    EXPECT_NE(painted({}, plain(red), ThemeStyle::pixel).pixelColor(20, 14), red);
}

TEST(AppIcon, aPictureIsAsSharpAsTheDisplay)
{
    // Stripes of one of the display's pixels, which any mixing would make grey.
    for (const double ratio : {1.0, 1.5, 2.0, 3.0}) {
        const int side = static_cast<int>(std::lround(54 * ratio));
        QImage stripes(side, side, QImage::Format_RGB32);
        for (int y = 0; y < side; ++y) {
            for (int x = 0; x < side; ++x)
                stripes.setPixel(x, y, x % 2 ? qRgb(255, 255, 255) : qRgb(0, 0, 0));
        }
        const auto display = painted({}, stripes, ThemeStyle::classic, ratio);
        int differing = 0;
        const int left = static_cast<int>(std::lround(10 * ratio));
        // The outermost pixels belong to the outline.
        for (int x = 2; x < side - 2; ++x)
            differing += display.pixel(left + x, display.height() / 2) != stripes.pixel(x, side / 2);
        EXPECT_EQ(differing, 0) << ratio;
    }
}

TEST(AppIcon, aPlateWithRoomAroundIsAsLargeAsTheOthersAndCutOnce)
{
    const QColor red(0xC01020);
    QImage plate(192, 192, QImage::Format_ARGB32_Premultiplied);
    plate.fill(Qt::transparent);
    QPainter painter(&plate);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(red);
    painter.drawRoundedRect(QRectF(8, 8, 176, 176), 44, 44);
    painter.end();
    for (const auto style : {ThemeStyle::oneui, ThemeStyle::pixel}) {
        const auto own = painted({}, plate, style);
        const auto full = painted({}, plain(red), style);
        for (int y = 10; y < 64; ++y) {
            for (int x = 10; x < 64; ++x)
                EXPECT_NEAR(own.pixelColor(x, y).red(), full.pixelColor(x, y).red(), 12) << x << "," << y;
        }
    }
    // A figure that stands free keeps its room.
    QImage figure(192, 192, QImage::Format_ARGB32_Premultiplied);
    figure.fill(Qt::transparent);
    painter.begin(&figure);
    painter.setPen(QPen(red, 20));
    painter.drawLine(30, 30, 160, 160);
    painter.drawLine(160, 30, 30, 160);
    painter.end();
    EXPECT_NE(painted({}, figure, ThemeStyle::classic).pixelColor(12, 12), red);
    EXPECT_EQ(painted({}, figure, ThemeStyle::classic).pixelColor(20, 20), red);
}
