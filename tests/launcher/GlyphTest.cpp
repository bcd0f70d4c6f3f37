#include "launcher/Glyph.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace quillnest;

namespace
{
QImage drawn(QSize size, QRectF area)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    drawGlyph(painter, area, Qt::black);
    return image;
}
} // namespace

TEST(Glyph, standsWhereItsStrokesAreLaid)
{
    // At this width a unit of the design is a pixel.
    const double width = 471 / 0.86;
    const QRectF area(0, 0, width, width);
    const auto image = drawn(QSize(548, 548), area);
    const auto at = [&](double x, double y) {
        return image.pixelColor(static_cast<int>(width / 2 + x - 511.5), static_cast<int>(width / 2 + y - 504.5))
            .alpha();
    };
    // The middles of the cup's sides, of its floor and of the chevron's ends and tip.
    for (const auto &[x, y] :
         {std::pair(309.5, 450.0),
          {511.5, 309.5},
          {713.5, 450.0},
          {511.5, 699.5},
          {397.0, 483.0},
          {512.0, 569.0},
          {627.0, 483.0}})
        EXPECT_EQ(at(x, y), 255) << x << "," << y;
    // Beside the strokes, 67 and 62 wide, and in the corner, which is sharp.
    EXPECT_EQ(at(309.5 + 36, 400), 0);
    EXPECT_EQ(at(309.5 + 31, 400), 255);
    EXPECT_EQ(at(309.5 - 31, 309.5 - 31), 255) << "a mitre fills the corner";
    EXPECT_EQ(at(511.5, 620), 0);
    EXPECT_EQ(at(511.5, 400), 0);
    EXPECT_EQ(at(397 - 18, 483 - 18), 255) << "the chevron's ends are round";
    EXPECT_EQ(at(397 - 28, 483 + 4), 255);
}

TEST(Glyph, scalesWithTheWidthAloneAndKeepsToTheMiddle)
{
    const auto square = drawn(QSize(100, 100), QRectF(0, 0, 100, 100));
    const auto tall = drawn(QSize(100, 300), QRectF(0, 0, 100, 300));
    EXPECT_EQ(tall.copy(0, 100, 100, 100), square);
}

TEST(Glyph, isDrawnInOneColourInsideItsArea)
{
    QImage image(64, 64, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    drawGlyph(painter, QRectF(16, 16, 32, 32), Qt::red);
    painter.end();
    int count = 0;
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x) {
            const auto color = image.pixelColor(x, y);
            if (color.alpha() == 0)
                continue;
            ++count;
            EXPECT_TRUE(QRect(15, 15, 34, 34).contains(x, y)) << x << "," << y;
            EXPECT_EQ(color.blue() + color.green(), 0);
        }
    }
    EXPECT_GT(count, 100);
}

TEST(Glyph, anIconHasTheSizesOfStatusBars)
{
    const auto icon = glyphIcon(Qt::white);
    for (const int size : {18, 22, 24, 36, 48, 64})
        EXPECT_TRUE(icon.availableSizes().contains(QSize(size, size))) << size;
}

TEST(Glyph, theStatusIconStandsOutFromLightAndFromDarkBars)
{
    const auto luminance = [](const QColor &color) {
        const auto linear
            = [](float part) { return part <= 0.03928F ? part / 12.92F : std::pow((part + 0.055F) / 1.055F, 2.4F); };
        return 0.2126F * linear(color.redF()) + 0.7152F * linear(color.greenF()) + 0.0722F * linear(color.blueF());
    };
    for (const QColor bar : {QColor(Qt::black), QColor(0x2B2B2B), QColor(0xF0F0F0), QColor(Qt::white)}) {
        const float a = luminance(glyphBlue);
        const float b = luminance(bar);
        EXPECT_GE((std::max(a, b) + 0.05F) / (std::min(a, b) + 0.05F), 3) << bar.name().toStdString();
    }
}
