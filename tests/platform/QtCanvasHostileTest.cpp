#include "platform/CanvasFixture.h"

#include <limits>
#include <random>

using namespace quillnest;

namespace
{
using QtCanvasHostileTest = CanvasTest;

constexpr double infinite = std::numeric_limits<double>::infinity();
const double strange[]
    = {0,    -0.0, 1,     -1,   0.5,   1e-30,  -1e-30, 1e-300, 5e-324,   32768,     -32769,       1e6,
       -1e9, 1e30, -1e30, 1e99, 1e150, -1e200, 1e308,  -1e308, infinite, -infinite, std::nan(""), 50};
} // namespace

TEST_F(QtCanvasHostileTest, whatHasNoFinitePlaceDrawsNothing)
{
    const Gradient stops{{{0, red}, {1, blue}}};
    const Image picture{1, 1, {0xFFFF0000}};
    for (const double bad : {infinite, -infinite, std::nan("")}) {
        canvas->fill(polygon({{10, 10}, {90, 10}, {bad, 90}}), FillRule::winding);
        canvas->stroke(polygon({{10, 10}, {90, bad}, {50, 90}}));
        canvas->fillRect({10, 10, bad, 50});
        canvas->fillEllipse({10, bad, 10, 50});
        canvas->drawImage(picture, {bad, 10, 50, 50});
        canvas->drawLinearGradient(stops, {0, bad}, {100, 0});
        canvas->drawRadialGradient(stops, {50, 50}, bad);
        canvas->drawRadialGradient(stops, {bad, 50}, 50);
        EXPECT_EQ(coveredArea(), 0) << bad;
    }
}

TEST_F(QtCanvasHostileTest, underATransformThatCannotBeInvertedNothingIsDrawn)
{
    const Gradient stops{{{0, red}, {1, blue}}};
    const Image picture{1, 1, {0xFFFF0000}};
    for (const double factor : {0.0, infinite, std::nan(""), 1e-320}) {
        canvas->saveState();
        canvas->scale(factor, 1);
        canvas->setLineWidth(10);
        canvas->fillRect({0, 0, 100, 100});
        canvas->fillEllipse({0, 0, 100, 100});
        canvas->stroke(line({0, 50}, {100, 50}));
        canvas->drawImage(picture, {0, 0, 100, 100});
        canvas->drawLinearGradient(stops, {0, 0}, {100, 0});
        canvas->drawRadialGradient(stops, {50, 50}, 50);
        canvas->restoreState();
        EXPECT_EQ(coveredArea(), 0) << factor;
    }
    canvas->scale(0, 1);
    canvas->clip(rectangle(0, 0, 100, 100), FillRule::winding);
    canvas->restoreState();
    canvas->fillRect({0, 0, 100, 100});
    EXPECT_EQ(coveredArea(), 0) << "a clip to nothing";
}

TEST_F(QtCanvasHostileTest, areasFarLargerThanTheBitmapAreCutRightly)
{
    for (const double size : {1e4, 1e5, 1e9, 1e30, 1e200}) {
        clear();
        canvas->fill(polygon({{-size, -size}, {30, -size}, {30, size}, {-size, size}}), FillRule::winding);
        EXPECT_NEAR(coveredArea(), 3000, 2) << size;
        clear();
        Path ring = polygon({{-size, -size}, {size, -size}, {size, size}, {-size, size}});
        ring.moveTo({30, 30});
        ring.lineTo({50, 30});
        ring.lineTo({50, 50});
        ring.lineTo({30, 50});
        canvas->fill(ring, FillRule::evenOdd);
        EXPECT_NEAR(coveredArea(), 10000 - 400, 1) << size;
    }
    // Slanted edges are where they belong as long as the numbers can tell.
    for (const double size : {1e4, 1e5, 1e9}) {
        clear();
        canvas->fill(polygon({{-size, -size}, {size, size}, {size, -size}}), FillRule::winding);
        EXPECT_NEAR(coveredArea(), 5000, 10) << size;
        EXPECT_NEAR(alpha(40, 40), 128, 8) << size;
    }
}

TEST_F(QtCanvasHostileTest, windingStaysWhereAnAreaIsCut)
{
    // Around the bitmap twice one way and once the other, far outside: once in all.
    const double size = 1e6;
    Path path;
    path.moveTo({-size, -size});
    for (const auto point :
         {Point{size, -size},
          {size, size},
          {-size, size},
          {-size, -size},
          {size, -size},
          {size, size},
          {-size, size},
          {-size, -size},
          {-size, size},
          {size, size},
          {size, -size}})
        path.lineTo(point);
    path.close();
    canvas->fill(path, FillRule::winding);
    EXPECT_EQ(coveredArea(), 10000);
    clear();
    canvas->fill(path, FillRule::evenOdd);
    EXPECT_EQ(coveredArea(), 10000);
    path.lineTo({-size, size});
    path.lineTo({size, size});
    path.lineTo({size, -size});
    path.close();
    clear();
    canvas->fill(path, FillRule::winding);
    EXPECT_EQ(coveredArea(), 0);
}

TEST_F(QtCanvasHostileTest, aCurveOfWhichLittleIsSeenIsStillACurve)
{
    // A circle of a million pixels whose lowest point touches the middle of the bitmap, and which bends there by less
    // than a pixel.
    canvas->fillEllipse({50 - 1e6, 50, 2e6, 2e6});
    EXPECT_NEAR(coveredArea(), 5000, 110);
    EXPECT_EQ(alpha(50, 52), 255);
    EXPECT_EQ(alpha(50, 48), 0);
    clear();
    canvas->fillEllipse({50 - 1e30, 50 - 1e30, 2e30, 2e30});
    EXPECT_EQ(coveredArea(), 10000);
}

TEST_F(QtCanvasHostileTest, enormousStrokesEnd)
{
    canvas->setLineWidth(10);
    canvas->stroke(line({-1e30, 50}, {1e30, 50}));
    EXPECT_NEAR(coveredArea(), 1000, 2);
    for (const auto join : {LineJoin::miter, LineJoin::round, LineJoin::bevel}) {
        for (const auto cap : {LineCap::butt, LineCap::round, LineCap::square}) {
            clear();
            canvas->setLineJoin(join);
            canvas->setLineCap(cap);
            canvas->setLineWidth(1e6);
            canvas->stroke(polygon({{10, 10}, {90, 10}, {50, 90}}));
            EXPECT_EQ(coveredArea(), 10000);
            for (const double width : {1e15, 1e30, 1e300}) {
                canvas->setLineWidth(width);
                canvas->stroke(polygon({{10, 10}, {90, 10}, {50, 90}}));
            }
        }
    }
}

TEST_F(QtCanvasHostileTest, aPathOfManyCurvesEnds)
{
    // Each of them would be flattened into many lines, and all of them together fill the bitmap.
    Path path;
    path.moveTo({0, 0});
    std::mt19937 random(7);
    std::uniform_real_distribution<double> place(-1000, 1100);
    const auto point = [&] { return Point{place(random), place(random)}; };
    for (int i = 0; i < 20000; ++i) {
        const auto first = point();
        const auto second = point();
        path.cubicTo(first, second, point());
    }
    canvas->fill(path, FillRule::winding);
    EXPECT_LE(coveredArea(), 10000);
}

TEST_F(QtCanvasHostileTest, strangeNumbersInEveryPlaceNeitherStopNorLeadAstray)
{
    std::mt19937 random(11);
    const auto number = [&] { return strange[random() % std::size(strange)]; };
    const auto point = [&] { return Point{number(), number()}; };
    const Image picture{3, 2, {0xFFFF0000, 0x80800000, 0, 0xFF00FF00, 0xFFFFFFFF, 0x01010101}};
    for (int round = 0; round < 3000; ++round) {
        if (round % 10 == 0)
            clear();
        canvas->saveState();
        if (random() % 2)
            canvas->translate(number(), number());
        if (random() % 2)
            canvas->scale(number(), number());
        if (random() % 4 == 0)
            canvas->rotate(number());
        canvas->setLineWidth(number());
        canvas->setAlpha(number());
        canvas->setLineJoin(static_cast<LineJoin>(random() % 3));
        canvas->setLineCap(static_cast<LineCap>(random() % 3));
        Path path;
        path.moveTo(point());
        for (unsigned i = 0; i < random() % 6; ++i) {
            const auto one = point();
            const auto other = point();
            const auto end = point();
            switch (random() % 5) {
            case 0:
                path.lineTo(one);
                break;
            case 1:
                path.quadraticTo(one, other);
                break;
            case 2:
                path.cubicTo(one, other, end);
                break;
            case 3:
                path.close();
                break;
            default:
                path.moveTo(one);
            }
        }
        const auto from = point();
        const auto to = point();
        const Rect rect{from.x, from.y, to.x, to.y};
        canvas->stroke(path);
        canvas->fill(path, random() % 2 ? FillRule::winding : FillRule::evenOdd);
        canvas->drawImage(picture, rect);
        canvas->fillEllipse(rect);
        if (random() % 2)
            canvas->clip(path, FillRule::winding);
        canvas->drawLinearGradient({{{number(), red}, {number(), blue}}}, from, to);
        canvas->drawRadialGradient({{{number(), red}, {number(), blue}}}, from, number());
        canvas->restoreState();
    }
    for (const auto value : canvas->image().pixels) {
        for (int shift = 0; shift < 24; shift += 8)
            ASSERT_LE(value >> shift & 0xFF, value >> 24) << "a colour above its alpha";
    }
}

TEST_F(QtCanvasHostileTest, canvasesOfNoOrTooGreatASizeAreNotMade)
{
    EXPECT_EQ(drawing.canvas(0, 10), nullptr);
    EXPECT_EQ(drawing.canvas(10, -1), nullptr);
    EXPECT_EQ(drawing.canvas(std::numeric_limits<int>::max(), 1), nullptr);
    EXPECT_NE(drawing.canvas(16384, 1), nullptr);
}
