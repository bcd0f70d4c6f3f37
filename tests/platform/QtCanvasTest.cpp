#include "platform/CanvasFixture.h"

#include <numbers>

using namespace quillnest;

namespace
{
using QtCanvasTest = CanvasTest;
constexpr double pi = std::numbers::pi;

Gradient gradient(std::initializer_list<Gradient::Stop> stops)
{
    return {stops};
}
const Gradient::Stop blackAtStart{0, black};
const Gradient::Stop redAtEnd{1, red};
} // namespace

TEST_F(QtCanvasTest, aNewCanvasIsTransparentAndDrawsInBlack)
{
    EXPECT_EQ(coveredArea(), 0);
    canvas->fillRect({10, 20, 30, 5});
    EXPECT_EQ(coveredArea(), 150);
    EXPECT_EQ(pixel(10, 20), 0xFF000000U);
    EXPECT_EQ(pixel(39, 24), 0xFF000000U);
    EXPECT_EQ(pixel(40, 24), 0U);
    EXPECT_EQ(pixel(10, 19), 0U);
}

TEST_F(QtCanvasTest, theOriginIsTheBottomLeftCorner)
{
    canvas->fillRect({0, 0, 10, 1});
    const auto image = canvas->image();
    EXPECT_EQ(image.pixels[99 * 100], 0xFF000000U);
    EXPECT_EQ(image.pixels[0], 0U);
}

TEST_F(QtCanvasTest, aRectangleMayBeGivenFromAnyCorner)
{
    canvas->fillRect({40, 25, -30, -5});
    EXPECT_EQ(coveredArea(), 150);
    EXPECT_EQ(alpha(10, 20), 255);
}

TEST_F(QtCanvasTest, edgesAreSmooth)
{
    canvas->fillRect({10.5, 10, 10, 10});
    EXPECT_NEAR(alpha(10, 15), 128, 2);
    EXPECT_EQ(alpha(11, 15), 255);
    EXPECT_NEAR(alpha(20, 15), 128, 2);
}

TEST_F(QtCanvasTest, windingAndEvenOddFillOverlapsDifferently)
{
    Path path = rectangle(10, 10, 50, 50);
    for (const auto point : {Point{30, 30}, {80, 30}, {80, 80}, {30, 80}}) {
        if (point == Point{30, 30})
            path.moveTo(point);
        else
            path.lineTo(point);
    }
    canvas->fill(path, FillRule::winding);
    EXPECT_EQ(alpha(45, 45), 255);
    EXPECT_NEAR(coveredArea(), 2500 * 2 - 900, 1);
    clear();
    canvas->fill(path, FillRule::evenOdd);
    EXPECT_EQ(alpha(45, 45), 0);
    EXPECT_EQ(alpha(70, 70), 255) << "an open subpath is filled as if it were closed";
    EXPECT_NEAR(coveredArea(), 2500 * 2 - 1800, 1);
}

TEST_F(QtCanvasTest, afterAClosedSubpathTheNextOneStartsAtItsBeginning)
{
    Path path = rectangle(10, 10, 20, 20);
    path.lineTo({10, 60});
    path.lineTo({-40, 10});
    canvas->fill(path, FillRule::winding);
    EXPECT_EQ(alpha(5, 20), 255);
    EXPECT_NEAR(coveredArea(), 400 + 10 * 45, 5);
}

TEST_F(QtCanvasTest, curvesAreSmoothAtEverySize)
{
    canvas->fillEllipse({10, 10, 80, 60});
    EXPECT_NEAR(coveredArea(), pi * 40 * 30, 4);
    clear();
    canvas->scale(1000, 1000);
    canvas->fillEllipse({0.01, 0.01, 0.08, 0.06});
    EXPECT_NEAR(coveredArea(), pi * 40 * 30, 4);
    clear();
    // A parabola, whose area is known.
    Path path;
    path.moveTo({10, 10});
    path.quadraticTo({50, 110}, {90, 10});
    canvas->fill(path, FillRule::winding);
    EXPECT_NEAR(coveredArea(), 80 * 50 * 2 / 3.0, 3);
    EXPECT_EQ(alpha(50, 58), 255);
    EXPECT_EQ(alpha(50, 61), 0);
}

TEST_F(QtCanvasTest, positiveAnglesTurnTheXAxisTowardsTheYAxis)
{
    canvas->translate(50, 50);
    canvas->rotate(pi / 2);
    canvas->fillRect({10, -2, 30, 4});
    EXPECT_EQ(alpha(50, 75), 255) << "above the middle";
    EXPECT_NEAR(coveredArea(), 120, 0.5);
}

TEST_F(QtCanvasTest, transformsApplyToWhatFollowsInTheirOwnCoordinates)
{
    canvas->translate(10, 10);
    canvas->scale(2, 3);
    canvas->translate(5, 5);
    canvas->fillRect({0, 0, 1, 1});
    EXPECT_EQ(coveredArea(), 6);
    EXPECT_EQ(alpha(20, 25), 255);
    EXPECT_EQ(alpha(21, 27), 255);
}

TEST_F(QtCanvasTest, aFlippedCanvasCountsFromTheTop)
{
    canvas->translate(0, 100);
    canvas->scale(1, -1);
    canvas->fillRect({0, 0, 10, 1});
    EXPECT_EQ(alpha(0, 99), 255);
    EXPECT_EQ(coveredArea(), 10);
}

TEST_F(QtCanvasTest, alphaAppliesOnTopOfTheColours)
{
    canvas->setFillColor({1, 0, 0, 0.5});
    canvas->setAlpha(0.5);
    canvas->fillRect({0, 0, 10, 10});
    EXPECT_TRUE(isNear(pixel(5, 5), 0x40400000, 1));
    // Both are kept within what they can be.
    clear();
    canvas->setAlpha(7);
    canvas->setFillColor({3, -1, std::nan(""), 2});
    canvas->fillRect({0, 0, 10, 10});
    EXPECT_EQ(pixel(5, 5), 0xFFFF0000U);
    canvas->setAlpha(-1);
    canvas->setFillColor(blue);
    canvas->fillRect({0, 0, 10, 10});
    EXPECT_EQ(pixel(5, 5), 0xFFFF0000U);
}

TEST_F(QtCanvasTest, drawingComposesSourceOverDestination)
{
    canvas->setFillColor(blue);
    canvas->fillRect({0, 0, 20, 20});
    canvas->setFillColor({1, 0, 0, 0.25});
    canvas->fillRect({10, 0, 20, 20});
    EXPECT_EQ(pixel(5, 5), 0xFF0000FFU);
    EXPECT_TRUE(isNear(pixel(15, 5), 0xFF4000BF, 1));
    EXPECT_TRUE(isNear(pixel(25, 5), 0x40400000, 1));
}

TEST_F(QtCanvasTest, aClipHasSmoothEdges)
{
    canvas->clip(polygon({{0, 0}, {90, 0}, {0, 45}}), FillRule::winding);
    canvas->fillRect({0, 0, 100, 100});
    EXPECT_EQ(alpha(10, 10), 255);
    EXPECT_EQ(alpha(80, 40), 0);
    // The slanted edge falls half a pixel with each pixel to the right, so most of its pixels are partly covered.
    int between = 0;
    for (int x = 2; x < 88; ++x) {
        for (int y = 0; y < 46; ++y)
            between += alpha(x, y) > 16 && alpha(x, y) < 239;
    }
    EXPECT_GT(between, 80);
    EXPECT_NEAR(coveredArea(), 90 * 45 / 2.0, 3);
}

TEST_F(QtCanvasTest, aClipIsAppliedToEverythingThatIsDrawn)
{
    const auto onlyInside = [this](const char *what) {
        EXPECT_GT(alpha(50, 50), 200) << what;
        EXPECT_EQ(alpha(12, 12), 0) << what;
        clear();
        canvas->clip(polygon({{50, 10}, {90, 50}, {50, 90}, {10, 50}}), FillRule::winding);
    };
    clear();
    canvas->clip(polygon({{50, 10}, {90, 50}, {50, 90}, {10, 50}}), FillRule::winding);
    canvas->fillEllipse({0, 0, 100, 100});
    onlyInside("ellipse");
    canvas->setLineWidth(60);
    canvas->stroke(line({0, 0}, {100, 100}));
    onlyInside("stroke");
    canvas->drawImage({1, 1, {0xFFFFFFFF}}, {0, 0, 100, 100});
    onlyInside("image");
    canvas->drawLinearGradient(gradient({blackAtStart, redAtEnd}), {0, 0}, {100, 0});
    onlyInside("linear gradient");
    canvas->drawRadialGradient(gradient({blackAtStart, redAtEnd}), {50, 50}, 50);
    onlyInside("radial gradient");
}

TEST_F(QtCanvasTest, clipsIntersectAndEndWithTheirState)
{
    canvas->saveState();
    canvas->clip(rectangle(10.5, 10, 40, 40), FillRule::winding);
    canvas->saveState();
    canvas->clip(polygon({{30, 0}, {100, 0}, {100, 100}, {30, 100}}), FillRule::winding);
    canvas->fillRect({0, 0, 100, 100});
    EXPECT_NEAR(coveredArea(), 20.5 * 40, 1);
    canvas->restoreState();
    canvas->fillRect({0, 0, 100, 100});
    EXPECT_NEAR(alpha(10, 20), 128, 2);
    EXPECT_EQ(alpha(20, 20), 255);
    EXPECT_EQ(alpha(51, 20), 0);
    canvas->restoreState();
    canvas->fillRect({0, 0, 100, 100});
    EXPECT_EQ(coveredArea(), 10000);
}

TEST_F(QtCanvasTest, twoSmoothClipsMultiply)
{
    canvas->clip(rectangle(10.5, 0, 40, 100), FillRule::winding);
    canvas->clip(rectangle(10.5, 0, 40, 100), FillRule::winding);
    canvas->fillRect({0, 0, 100, 100});
    EXPECT_NEAR(alpha(10, 50), 64, 3);
    EXPECT_EQ(alpha(11, 50), 255);
}

TEST_F(QtCanvasTest, aClipGoesByItsRule)
{
    Path ring = rectangle(10, 10, 60, 60);
    ring.moveTo({30, 30});
    ring.lineTo({50, 30});
    ring.lineTo({50, 50});
    ring.lineTo({30, 50});
    canvas->clip(ring, FillRule::evenOdd);
    canvas->fillRect({0, 0, 100, 100});
    EXPECT_EQ(coveredArea(), 3600 - 400);
}

TEST_F(QtCanvasTest, aClipToNothingLeavesNothing)
{
    for (const auto &path : {Path(), line({10, 10}, {90, 90}), rectangle(200, 200, 50, 50)}) {
        clear();
        canvas->clip(path, FillRule::winding);
        canvas->fillRect({0, 0, 100, 100});
        canvas->drawLinearGradient(gradient({blackAtStart, redAtEnd}), {0, 0}, {100, 0});
        EXPECT_EQ(coveredArea(), 0);
    }
}

TEST_F(QtCanvasTest, theStateHoldsEverythingThatCanBeSet)
{
    canvas->restoreState();
    canvas->saveState();
    canvas->translate(50, 50);
    canvas->setAlpha(0);
    canvas->setFillColor(red);
    canvas->setStrokeColor(red);
    canvas->setLineWidth(50);
    canvas->setLineCap(LineCap::square);
    canvas->setLineJoin(LineJoin::round);
    canvas->restoreState();
    canvas->stroke(line({10, 10.5}, {20, 10.5}));
    EXPECT_EQ(coveredArea(), 10);
    EXPECT_EQ(pixel(10, 10), 0xFF000000U);
    canvas->fillRect({10, 20, 1, 1});
    EXPECT_EQ(pixel(10, 20), 0xFF000000U);
}

TEST_F(QtCanvasTest, aLinearGradientPaintsAllOfTheClip)
{
    canvas->drawLinearGradient(gradient({blackAtStart, redAtEnd}), {25, 0}, {75, 0});
    EXPECT_EQ(coveredArea(), 10000);
    EXPECT_EQ(pixel(10, 90), 0xFF000000U);
    EXPECT_EQ(pixel(90, 10), 0xFFFF0000U);
    EXPECT_TRUE(isNear(pixel(50, 50), 0xFF820000));
    EXPECT_TRUE(isNear(pixel(37, 50), 0xFF400000));
}

TEST_F(QtCanvasTest, stopsComeInAnyOrder)
{
    canvas->drawLinearGradient(gradient({{0.75, red}, {0.25, blue}, {0.5, green}}), {0, 0}, {100, 0});
    EXPECT_EQ(pixel(0, 0), 0xFF0000FFU);
    EXPECT_TRUE(isNear(pixel(50, 0), 0xFF05FA00));
    EXPECT_EQ(pixel(99, 0), 0xFFFF0000U);
}

TEST_F(QtCanvasTest, twoStopsAtOnePlaceAreAHardEdge)
{
    canvas->drawLinearGradient(gradient({{0.5, red}, {0.5, blue}}), {0, 0}, {100, 0});
    EXPECT_EQ(pixel(49, 0), 0xFFFF0000U);
    EXPECT_EQ(pixel(50, 0), 0xFF0000FFU);
    // Of more than two the first and the last are seen.
    canvas->drawLinearGradient(gradient({{0.5, red}, {0.5, green}, {0.5, blue}}), {0, 0}, {100, 0});
    EXPECT_EQ(pixel(49, 0), 0xFFFF0000U);
    EXPECT_EQ(pixel(50, 0), 0xFF0000FFU);
}

TEST_F(QtCanvasTest, positionsAreKeptBetweenTheEnds)
{
    canvas->drawLinearGradient(gradient({{7, red}, {-7, blue}}), {0, 0}, {100, 0});
    EXPECT_TRUE(isNear(pixel(25, 0), 0xFF4100BE));
    canvas->drawLinearGradient(gradient({{1, red}, {std::nan(""), blue}}), {0, 0}, {100, 0});
    EXPECT_TRUE(isNear(pixel(25, 0), 0xFF4100BE));
}

TEST_F(QtCanvasTest, coloursAreInterpolatedBeforeTheyAreMultipliedByAlpha)
{
    canvas->drawLinearGradient(gradient({{0, {1, 0, 0, 0}}, {1, {1, 0, 0, 1}}}), {0, 0}, {100, 0});
    EXPECT_TRUE(isNear(pixel(50, 0), 0x81810000));
    clear();
    canvas->drawLinearGradient(gradient({{0, {0, 1, 0, 0}}, {1, {1, 0, 0, 1}}}), {0, 0}, {100, 0});
    EXPECT_TRUE(isNear(pixel(50, 0), 0x81414000));
}

TEST_F(QtCanvasTest, alphaAppliesToGradientsAndPictures)
{
    canvas->setAlpha(0.5);
    canvas->drawLinearGradient(gradient({{0, red}, {1, red}}), {0, 0}, {100, 0});
    EXPECT_TRUE(isNear(pixel(50, 50), 0x80800000, 1));
    clear();
    canvas->setAlpha(0.5);
    canvas->drawRadialGradient(gradient({{0, red}}), {50, 50}, 10);
    EXPECT_TRUE(isNear(pixel(50, 50), 0x80800000, 1));
    clear();
    canvas->setAlpha(0.5);
    canvas->drawImage({1, 1, {0xFFFF0000}}, {0, 0, 100, 100});
    EXPECT_TRUE(isNear(pixel(50, 50), 0x80800000, 1));
}

TEST_F(QtCanvasTest, aRadialGradientGoesFromItsCentreOutward)
{
    canvas->drawRadialGradient(gradient({blackAtStart, redAtEnd}), {30, 60}, 20);
    EXPECT_EQ(coveredArea(), 10000);
    EXPECT_TRUE(isNear(pixel(30, 60), 0xFF090000));
    EXPECT_TRUE(isNear(pixel(40, 60), 0xFF860000));
    EXPECT_TRUE(isNear(pixel(30, 70), 0xFF860000));
    EXPECT_EQ(pixel(55, 60), 0xFFFF0000U);
    EXPECT_EQ(pixel(0, 0), 0xFFFF0000U);
}

TEST_F(QtCanvasTest, gradientsGoWithTheTransform)
{
    canvas->scale(2, 0.5);
    canvas->drawRadialGradient(gradient({blackAtStart, redAtEnd}), {25, 100}, 20);
    EXPECT_TRUE(isNear(pixel(70, 50), 0xFF820000, 6)) << "forty pixels to the side";
    EXPECT_TRUE(isNear(pixel(50, 55), 0xFF870000, 12)) << "ten pixels up";
    EXPECT_EQ(pixel(50, 65), 0xFFFF0000U);
    canvas->drawLinearGradient(gradient({blackAtStart, redAtEnd}), {0, 0}, {50, 200});
    // The lines of one colour are at a right angle to the way before the transform, not after it.
    EXPECT_TRUE(isNear(pixel(0, 50), 0xFF790000, 6));
    EXPECT_TRUE(isNear(pixel(99, 50), 0xFF880000, 6));
}

TEST_F(QtCanvasTest, aGradientWithoutAWayIsItsLastColour)
{
    const auto stops = gradient({{1, red}, {0.5, green}, {0, blue}});
    canvas->drawLinearGradient(stops, {10, 10}, {10, 10});
    EXPECT_EQ(pixel(0, 0), 0xFFFF0000U);
    EXPECT_EQ(pixel(99, 99), 0xFFFF0000U);
    for (const double radius : {0.0, -5.0}) {
        clear();
        canvas->drawRadialGradient(stops, {10, 10}, radius);
        EXPECT_EQ(pixel(10, 10), 0xFFFF0000U);
        EXPECT_EQ(pixel(99, 99), 0xFFFF0000U);
    }
    clear();
    canvas->drawLinearGradient(gradient({{0.5, green}}), {0, 0}, {100, 0});
    EXPECT_EQ(pixel(10, 10), 0xFF00FF00U);
    EXPECT_EQ(pixel(90, 10), 0xFF00FF00U);
    clear();
    canvas->drawLinearGradient({}, {0, 0}, {100, 0});
    EXPECT_EQ(coveredArea(), 0);
}

TEST_F(QtCanvasTest, theTopOfAPictureLiesAtTheGreaterY)
{
    const Image image{2, 2, {0xFFFF0000, 0xFF00FF00, 0xFF0000FF, 0xFFFFFFFF}};
    for (const auto &rect : {Rect{10, 20, 40, 60}, Rect{50, 80, -40, -60}}) {
        clear();
        canvas->drawImage(image, rect);
        EXPECT_EQ(coveredArea(), 2400);
        EXPECT_EQ(pixel(12, 78), 0xFFFF0000U);
        EXPECT_EQ(pixel(47, 78), 0xFF00FF00U);
        EXPECT_EQ(pixel(12, 22), 0xFF0000FFU);
        EXPECT_EQ(pixel(47, 22), 0xFFFFFFFFU);
    }
}

TEST_F(QtCanvasTest, aPictureAtItsOwnSizeIsCopied)
{
    Image image{37, 41, {}};
    for (int i = 0; i < 37 * 41; ++i)
        image.pixels.push_back(0xFF000000U | static_cast<std::uint32_t>(i * 7919 & 0xFFFFFF));
    canvas->drawImage(image, {3, 5, 37, 41});
    for (int y = 0; y < 41; ++y) {
        for (int x = 0; x < 37; ++x)
            ASSERT_EQ(pixel(3 + x, 5 + 40 - y), image.pixels[static_cast<std::size_t>(y * 37 + x)]);
    }
}

TEST_F(QtCanvasTest, aPictureIsScaledSmoothly)
{
    canvas->drawImage({2, 1, {0xFF000000, 0xFFFF0000}}, {0, 0, 100, 100});
    EXPECT_TRUE(isNear(pixel(50, 50), 0xFF820000, 4));
    EXPECT_EQ(pixel(20, 50), 0xFF000000U);
    // A fine pattern becomes its average, not some of its pixels.
    Image pattern{400, 400, {}};
    for (int i = 0; i < 400 * 400; ++i)
        pattern.pixels.push_back((i % 400 + i / 400) % 4 == 0 ? 0xFFFFFFFF : 0xFF000000);
    clear();
    canvas->drawImage(pattern, {0, 0, 20, 20});
    for (int i = 2; i < 18; ++i)
        EXPECT_TRUE(isNear(pixel(i, 9), 0xFF404040, 6));
}

TEST_F(QtCanvasTest, aTurnedPictureHasSmoothEdges)
{
    canvas->translate(50, 50);
    canvas->rotate(pi / 4);
    canvas->drawImage({1, 1, {0xFFFF0000}}, {-20, -20, 40, 40});
    EXPECT_NEAR(coveredArea(), 1600, 5);
    EXPECT_EQ(pixel(50, 50), 0xFFFF0000U);
    int between = 0;
    for (int y = 0; y < 100; ++y) {
        for (int x = 0; x < 100; ++x)
            between += alpha(x, y) > 0 && alpha(x, y) < 255;
    }
    EXPECT_GT(between, 80);
}

TEST_F(QtCanvasTest, aPictureWhosePixelsAreNotAllThereIsNotDrawn)
{
    canvas->drawImage({4, 4, {0xFFFF0000}}, {0, 0, 100, 100});
    canvas->drawImage({-1, -1, {0xFFFF0000}}, {0, 0, 100, 100});
    canvas->drawImage({}, {0, 0, 100, 100});
    EXPECT_EQ(coveredArea(), 0);
}
