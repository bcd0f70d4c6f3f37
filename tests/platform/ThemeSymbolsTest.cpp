#include "platform/linux/ThemeSymbols.h"

#include <QImage>

#include <gtest/gtest.h>

using namespace quillnest;

namespace
{
const char *const names[]
    = {"square.grid.2x2",
       "chevron.left",
       "camera",
       "bell",
       "aspectratio",
       "pin",
       "pin.fill",
       "minus",
       "xmark",
       "magnifyingglass",
       "chevron.backward",
       "arrow.uturn.backward"};

/// The picture's opaque pixels, all in one colour; how many there are, or -1 if one has another colour.
int paintedPixels(const QImage &image, const QColor &color)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const auto pixel = image.pixelColor(x, y);
            if (pixel.alpha() != 255)
                continue;
            if (pixel != color)
                return -1;
            ++count;
        }
    }
    return count;
}
} // namespace

TEST(ThemeSymbolsTest, everySymbolIsPaintedInTheColourAskedFor)
{
    const ThemeSymbols symbols;
    const QColor color(12, 34, 56);
    for (const char *name : names) {
        const auto pixmap = symbols.pixmap(QString::fromLatin1(name), 16, color, 2.0);
        ASSERT_FALSE(pixmap.isNull()) << name;
        EXPECT_EQ(pixmap.size(), QSize(32, 32)) << name;
        EXPECT_EQ(pixmap.devicePixelRatio(), 2.0) << name;
        const auto painted = paintedPixels(pixmap.toImage(), color);
        EXPECT_GT(painted, 0) << name;
        EXPECT_LT(painted, 32 * 32) << name << " is a mere block";
    }
}

TEST(ThemeSymbolsTest, aLookIsDrawnOnceAndEachLookIsItsOwn)
{
    const ThemeSymbols symbols;
    const auto name = QStringLiteral("pin");
    const auto first = symbols.pixmap(name, 16, Qt::black, 1.0);
    EXPECT_EQ(symbols.pixmap(name, 16, Qt::black, 1.0).cacheKey(), first.cacheKey());
    EXPECT_NE(symbols.pixmap(name, 16, Qt::red, 1.0).toImage(), first.toImage());
    EXPECT_EQ(symbols.pixmap(name, 20, Qt::black, 1.0).size(), QSize(20, 20));
    EXPECT_EQ(symbols.pixmap(name, 16, Qt::black, 2.0).size(), QSize(32, 32));
}

TEST(ThemeSymbolsTest, sizeIsRoundedToWholePixels)
{
    const auto pixmap = ThemeSymbols().pixmap(QStringLiteral("xmark"), 15, Qt::black, 1.5);
    EXPECT_EQ(pixmap.size(), QSize(23, 23));
}

TEST(ThemeSymbolsTest, differentSymbolsLookDifferent)
{
    const ThemeSymbols symbols;
    EXPECT_NE(
        symbols.pixmap(QStringLiteral("minus"), 16, Qt::black, 1.0).toImage(),
        symbols.pixmap(QStringLiteral("xmark"), 16, Qt::black, 1.0).toImage());
}

TEST(ThemeSymbolsTest, unknownSymbolIsNull)
{
    EXPECT_TRUE(ThemeSymbols().pixmap(QStringLiteral("no.such.symbol"), 16, Qt::black, 1.0).isNull());
    EXPECT_TRUE(ThemeSymbols().pixmap(QString(), 16, Qt::black, 1.0).isNull());
}
