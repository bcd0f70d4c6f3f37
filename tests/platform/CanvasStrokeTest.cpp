#include "platform/CanvasFixture.h"

#include <numbers>

using namespace quillnest;

namespace
{
using CanvasStrokeTest = CanvasTest;
constexpr double pi = std::numbers::pi;

/// Two arms of 30 pixels that meet at (20, 50) and point to the right, with an angle between them.
Path corner(double angle)
{
    const double x = 30 * std::cos(angle / 2);
    const double y = 30 * std::sin(angle / 2);
    Path path;
    path.moveTo({50 + x, 50 + y});
    path.lineTo({50, 50});
    path.lineTo({50 + x, 50 - y});
    return path;
}
} // namespace

TEST_F(CanvasStrokeTest, aLineIsAsWideAsThePen)
{
    canvas->setStrokeColor(red);
    canvas->setLineWidth(4);
    canvas->stroke(line({10, 50}, {60, 50}));
    EXPECT_EQ(coveredArea(), 200);
    EXPECT_EQ(pixel(10, 48), 0xFFFF0000U);
    EXPECT_EQ(pixel(59, 51), 0xFFFF0000U);
    EXPECT_EQ(alpha(30, 52), 0);
}

TEST_F(CanvasStrokeTest, capsReachBeyondTheEnds)
{
    canvas->setLineWidth(10);
    canvas->setLineCap(LineCap::square);
    canvas->stroke(line({20, 50}, {60, 50}));
    EXPECT_EQ(coveredArea(), 500);
    clear();
    canvas->setLineWidth(10);
    canvas->setLineCap(LineCap::round);
    canvas->stroke(line({20, 50}, {60, 50}));
    EXPECT_NEAR(coveredArea(), 400 + pi * 25, 1);
}

TEST_F(CanvasStrokeTest, joinsFillTheCornersOutside)
{
    const auto area = [this](LineJoin join) {
        clear();
        canvas->setLineWidth(10);
        canvas->setLineJoin(join);
        canvas->stroke(corner(pi / 2));
        return coveredArea();
    };
    // Both arms overlap in a square of half the pen's width.
    const double arms = 2 * 300 - 25;
    EXPECT_NEAR(area(LineJoin::bevel), arms + 12.5, 1);
    EXPECT_NEAR(area(LineJoin::round), arms + pi * 25 / 4, 1);
    EXPECT_NEAR(area(LineJoin::miter), arms + 25, 1);
}

TEST_F(CanvasStrokeTest, aMiterLongerThanTenPensIsBevelled)
{
    const auto tip = [this](double angle) {
        clear();
        canvas->setLineWidth(4);
        canvas->stroke(corner(angle));
        int x = 0;
        while (alpha(x, 50) < 32 && alpha(x, 49) < 32)
            ++x;
        return 50 - x;
    };
    // A miter's length is the pen's width by the sine of half the angle, and half of it lies beyond the corner.
    const double atLimit = 2 * std::asin(0.1);
    EXPECT_GT(tip(atLimit * 1.02), 15);
    EXPECT_LE(tip(atLimit * 1.02), 20);
    EXPECT_LE(tip(atLimit * 0.98), 3);
    EXPECT_LE(tip(0.01), 3);
}

TEST_F(CanvasStrokeTest, anUnevenScaleGivesAnUnevenPen)
{
    canvas->scale(2, 0.5);
    canvas->setLineWidth(8);
    canvas->stroke(line({10, 100}, {40, 100}));
    EXPECT_EQ(coveredArea(), 60 * 4);
    clear();
    canvas->scale(2, 0.5);
    canvas->setLineWidth(8);
    canvas->stroke(line({25, 20}, {25, 180}));
    EXPECT_EQ(coveredArea(), 16 * 80);
}

TEST_F(CanvasStrokeTest, thePenGoesByTheTransformAtTheTimeOfTheStroke)
{
    canvas->setLineWidth(2);
    canvas->scale(3, 3);
    canvas->stroke(line({5, 15}, {15, 15}));
    EXPECT_EQ(coveredArea(), 30 * 6);
}

TEST_F(CanvasStrokeTest, curvesAreSmoothAtEverySize)
{
    const double arm = 0.5522847498;
    for (const double size : {0.001, 1.0, 1000.0}) {
        clear();
        canvas->translate(50, 50);
        canvas->scale(40 * size, 40 * size);
        canvas->setLineWidth(0.1 / size);
        Path quarter;
        quarter.moveTo({1 / size, 0});
        quarter.cubicTo({1 / size, arm / size}, {arm / size, 1 / size}, {0, 1 / size});
        canvas->stroke(quarter);
        EXPECT_NEAR(coveredArea(), pi * 40 * 4 / 2, 2) << size;
    }
}

TEST_F(CanvasStrokeTest, aClosedSubpathIsJoinedAndAnOpenOneHasCaps)
{
    Path open;
    open.moveTo({30, 30});
    for (const auto point : {Point{70, 30}, {70, 70}, {30, 70}, {30, 30}})
        open.lineTo(point);
    canvas->setLineWidth(10);
    canvas->stroke(open);
    EXPECT_EQ(alpha(26, 26), 0) << "two butt caps";
    auto closed = open;
    closed.close();
    canvas->stroke(closed);
    EXPECT_EQ(alpha(26, 26), 255) << "a corner";
    EXPECT_EQ(alpha(50, 50), 0);
}

TEST_F(CanvasStrokeTest, aSubpathWithoutLengthIsADotUnlessItsCapsAreButt)
{
    Path point = line({50, 50}, {50, 50});
    Path closed;
    closed.moveTo({50, 50});
    closed.close();
    for (const auto &path : {point, closed}) {
        const auto area = [&](LineCap cap) {
            clear();
            canvas->setLineWidth(20);
            canvas->setLineCap(cap);
            canvas->stroke(path);
            return coveredArea();
        };
        EXPECT_EQ(area(LineCap::butt), 0);
        EXPECT_NEAR(area(LineCap::round), pi * 100, 2);
        EXPECT_EQ(area(LineCap::square), 400);
    }
    clear();
    Path move;
    move.moveTo({50, 50});
    canvas->setLineWidth(20);
    canvas->setLineCap(LineCap::round);
    canvas->stroke(move);
    EXPECT_EQ(coveredArea(), 0);
}

TEST_F(CanvasStrokeTest, dotsAndLinesAndRingsThatOverlapAreOneArea)
{
    // Subpaths of every kind and direction across one place: none may cut a hole into another.
    Path path;
    path.moveTo({50, 50});
    path.lineTo({50, 50});
    path.moveTo({20, 50});
    path.lineTo({80, 50});
    path.moveTo({50, 80});
    path.lineTo({50, 20});
    for (const bool turned : {false, true}) {
        path.moveTo({20, 52});
        path.lineTo(turned ? Point{80, 52} : Point{50, 90});
        path.lineTo(turned ? Point{50, 90} : Point{80, 52});
        path.close();
    }
    canvas->setLineWidth(12);
    canvas->setLineCap(LineCap::round);
    canvas->stroke(path);
    EXPECT_EQ(alpha(50, 50), 255);
    EXPECT_EQ(alpha(46, 54), 255);
    EXPECT_EQ(alpha(46, 46), 255);
    EXPECT_EQ(alpha(35, 52), 255);
}

TEST_F(CanvasStrokeTest, aPenWiderThanItsCurveLeavesNoHole)
{
    const auto circle = [](double radius) {
        constexpr double arm = 0.5522847498;
        const auto at = [radius](double x, double y) { return Point{50 + radius * x, 50 + radius * y}; };
        Path path;
        path.moveTo(at(1, 0));
        path.cubicTo(at(1, arm), at(arm, 1), at(0, 1));
        path.cubicTo(at(-arm, 1), at(-1, arm), at(-1, 0));
        path.cubicTo(at(-1, -arm), at(-arm, -1), at(0, -1));
        path.cubicTo(at(arm, -1), at(1, -arm), at(1, 0));
        path.close();
        return path;
    };
    for (const double radius : {0.5, 2.0, 5.0, 10.0, 14.0}) {
        clear();
        canvas->setLineWidth(40);
        canvas->stroke(circle(radius));
        EXPECT_NEAR(coveredArea(), pi * (20 + radius) * (20 + radius), 12) << radius;
        for (const auto join : {LineJoin::miter, LineJoin::round, LineJoin::bevel}) {
            clear();
            canvas->setLineWidth(40);
            canvas->setLineJoin(join);
            canvas->stroke(rectangle(50 - radius, 50 - radius, 2 * radius, 2 * radius));
            const double side = 2 * radius;
            // Where round joins overlap, their smooth edges add up.
            const double corners = join == LineJoin::miter ? 4 * 400 : join == LineJoin::round ? pi * 400 : 2 * 400;
            EXPECT_NEAR(coveredArea(), side * side + 4 * 20 * side + corners, 25)
                << radius << ' ' << static_cast<int>(join);
        }
    }
}

TEST_F(CanvasStrokeTest, aPenWithoutWidthDrawsNothing)
{
    for (const double width : {0.0, -3.0, std::nan(""), HUGE_VAL}) {
        canvas->setLineWidth(width);
        canvas->stroke(line({10, 10}, {90, 90}));
        EXPECT_EQ(coveredArea(), 0) << width;
    }
}
