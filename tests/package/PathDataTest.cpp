#include "package/PathData.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <numbers>
#include <sstream>
#include <string>

using namespace quillnest;

namespace
{

/// "M 1 2 L 3 4 Z", numbers with up to six digits; "absent" for no path.
std::string text(const std::optional<Path> &path)
{
    if (!path)
        return "absent";
    std::ostringstream out;
    const auto *point = path->points().data();
    const auto points = [&](int count) {
        for (; count > 0; --count, ++point)
            out << ' ' << (std::abs(point->x) < 1e-9 ? 0 : point->x) << ' '
                << (std::abs(point->y) < 1e-9 ? 0 : point->y);
    };
    for (const auto verb : path->verbs()) {
        out << (out.tellp() > 0 ? " " : "") << "MLQCZ"[static_cast<int>(verb)];
        points(verb == Path::Verb::close ? 0 : verb == Path::Verb::cubic ? 3 : verb == Path::Verb::quadratic ? 2 : 1);
    }
    return out.str();
}

std::string parsed(std::string_view data)
{
    return text(PathData::parse(data));
}

double distance(Point a, Point b)
{
    return std::hypot(a.x - b.x, a.y - b.y);
}

} // namespace

TEST(PathData, aSingleMoveIsAPathThatHoldsIt)
{
    EXPECT_EQ(parsed("M10 10"), "M 10 10");
}

TEST(PathData, pairsAfterAMoveAreLines)
{
    EXPECT_EQ(parsed("M0 0 10 0 10 10z"), "M 0 0 L 10 0 L 10 10 Z");
}

TEST(PathData, pairsAfterARelativeMoveAreRelativeLines)
{
    EXPECT_EQ(parsed("m5 5 10 0 0 10z"), "M 5 5 L 15 5 L 15 15 Z");
    EXPECT_EQ(parsed("M1 1m5 5"), "M 1 1 M 6 6");
}

TEST(PathData, aLineWithoutAMoveBeginsAtTheOriginAndTheOthersDoNot)
{
    EXPECT_EQ(parsed("L5 6"), "M 0 0 L 5 6");
    EXPECT_EQ(parsed("H5"), "absent");
    EXPECT_EQ(parsed("V5"), "absent");
    EXPECT_EQ(parsed("C1 2 3 4 5 6"), "absent");
    // The current point moves all the same.
    EXPECT_EQ(parsed("H5L7 8"), "M 5 0 L 7 8");
}

TEST(PathData, aSecondPointOrASignBeginsANumber)
{
    EXPECT_EQ(parsed("M1.5.5-2-3"), "M 1.5 0.5 L -2 -3");
    EXPECT_EQ(parsed("M1.5.5-2"), "M 1.5 0.5");
    EXPECT_EQ(parsed("M1e-2,2E-1"), "M 0.01 0.2");
    EXPECT_EQ(parsed("M-.5 +5"), "M -0.5 5");
    EXPECT_EQ(parsed("M1e+1 5."), "M 10 5");
}

TEST(PathData, whatSeparatesTokens)
{
    EXPECT_EQ(parsed("M1,2\nL\t3 4"), "M 1 2 L 3 4");
    EXPECT_EQ(parsed("M1,,2 , L3 4"), "M 1 2 L 3 4");
    // A carriage return is no separator: it spoils the number.
    EXPECT_EQ(parsed("M1 2L3 4\r\nL5 6"), "M 1 2 L 5 6");
}

TEST(PathData, aPlusInsideANumberSpoilsIt)
{
    EXPECT_EQ(parsed("M1 2L3+4 5L6 7"), "M 1 2 L 6 7");
}

TEST(PathData, aRepeatedCommandGoesOnFromTheEndOfTheOneBefore)
{
    EXPECT_EQ(parsed("M10 10c1 1 2 2 3 3 1 1 2 2 3 3"), "M 10 10 C 11 11 12 12 13 13 C 14 14 15 15 16 16");
}

TEST(PathData, horizontalAndVerticalLinesKeepTheOtherCoordinate)
{
    EXPECT_EQ(parsed("M1 2H5V6h1v1"), "M 1 2 L 5 2 L 5 6 L 6 6 L 6 7");
}

TEST(PathData, aSmoothCurveReflectsTheLastControlPoint)
{
    EXPECT_EQ(parsed("M0 0C1 2 3 4 5 6S9 9 10 10"), "M 0 0 C 1 2 3 4 5 6 C 7 8 9 9 10 10");
    EXPECT_EQ(parsed("M0 0c1 2 3 4 5 6s4 3 5 4"), "M 0 0 C 1 2 3 4 5 6 C 7 8 9 9 10 10");
    EXPECT_EQ(parsed("M0 0S1 2 3 4S5 5 6 6"), "M 0 0 C 0 0 1 2 3 4 C 5 6 5 5 6 6");
    EXPECT_EQ(parsed("M0 0Q1 2 3 4T6 6T9 9"), "M 0 0 Q 1 2 3 4 Q 5 6 6 6 Q 7 6 9 9");
}

TEST(PathData, aSmoothCurveAfterTheOtherKindReflectsNothing)
{
    EXPECT_EQ(parsed("M0 0Q1 2 3 4S5 5 6 6"), "M 0 0 Q 1 2 3 4 C 3 4 5 5 6 6");
    EXPECT_EQ(parsed("M0 0C1 2 3 4 5 6T9 9"), "M 0 0 C 1 2 3 4 5 6 Q 5 6 9 9");
    EXPECT_EQ(parsed("M0 0C1 2 3 4 5 6L6 6S9 9 10 10"), "M 0 0 C 1 2 3 4 5 6 L 6 6 C 6 6 9 9 10 10");
}

TEST(PathData, aHalfCircleIsTwoQuarterTurns)
{
    const auto path = PathData::parse("M0 0A5 5 0 1 1 10 0");
    ASSERT_TRUE(path);
    ASSERT_EQ(path->verbs(), (std::vector{Path::Verb::move, Path::Verb::cubic, Path::Verb::cubic}));
    EXPECT_LT(distance(path->points()[3], {5, -5}), 1e-9);
    EXPECT_LT(distance(path->points()[6], {10, 0}), 1e-9);
    const double handle = 5 * 4.0 / 3 * std::tan(std::numbers::pi / 8);
    EXPECT_LT(distance(path->points()[1], {0, -handle}), 1e-9);
    EXPECT_LT(distance(path->points()[2], {5 - handle, -5}), 1e-9);
}

TEST(PathData, theFlagsOfAnArcChooseOneOfFour)
{
    const auto middle = [](const char *flags) {
        const auto path = PathData::parse(std::string("M0 0A10 10 0 ") + flags + " 10 10");
        return path ? path->verbs().size() - 1 : 0;
    };
    // A quarter is one piece, three quarters are three.
    EXPECT_EQ(middle("0 0"), 1U);
    EXPECT_EQ(middle("0 1"), 1U);
    EXPECT_EQ(middle("1 0"), 3U);
    EXPECT_EQ(middle("1 1"), 3U);
    // Swept one way the quarter bulges up and to the right, the other way down and to the left.
    const auto swept = PathData::parse("M0 0A10 10 0 0 1 10 10");
    const auto counter = PathData::parse("M0 0A10 10 0 0 0 10 10");
    EXPECT_GT(swept->points()[1].x, 5);
    EXPECT_LT(std::abs(counter->points()[1].x), 1e-9);
}

TEST(PathData, anArcWithoutARadiusOrALengthIsALine)
{
    EXPECT_EQ(parsed("M0 0A0 5 0 1 1 10 0"), "M 0 0 L 10 0");
    EXPECT_EQ(parsed("M0 0A5 0 0 1 1 10 0"), "M 0 0 L 10 0");
    EXPECT_EQ(parsed("M3 3A5 5 0 1 1 3 3"), "M 3 3 L 3 3");
}

TEST(PathData, radiiTooSmallForTheirChordAreScaledUp)
{
    const auto path = PathData::parse("M0 0A1 1 0 0 1 10 0");
    ASSERT_TRUE(path);
    ASSERT_EQ(path->verbs().size(), 3U);
    EXPECT_LT(distance(path->points()[3], {5, -5}), 1e-9);
    EXPECT_LT(distance(path->points().back(), {10, 0}), 1e-9);
    const auto negative = PathData::parse("M0 0A-1 -1 0 0 1 10 0");
    EXPECT_EQ(text(negative), text(path));
}

TEST(PathData, aRotatedArcEndsWhereItShould)
{
    const auto path = PathData::parse("M2 3a8 4 30 0 1 5 6L0 0");
    ASSERT_TRUE(path);
    EXPECT_LT(distance(path->points()[path->points().size() - 2], {7, 9}), 1e-9);
}

TEST(PathData, afterAnArcTheCurrentPointIsExactlyItsEnd)
{
    EXPECT_EQ(PathData::parse("M0 0A3 5 20 1 0 1.1 2.2l0 0")->points().back(), (Point{1.1, 2.2}));
}

TEST(PathData, flagsWrittenTogetherAreOneNumber)
{
    // 0, 11, then 10 for the flags: what follows is too short for an arc.
    EXPECT_EQ(parsed("M0 0A5 5 0 1110 0"), "M 0 0");
}

TEST(PathData, aDamagedArgumentLosesItsCommandAndOneToken)
{
    EXPECT_EQ(parsed("M0 0L1 x 3 4"), "M 0 0 L 3 4");
    EXPECT_EQ(parsed("M0 0L1 2 3 x 5 6L7 8"), "M 0 0 L 1 2 L 5 6 L 7 8");
}

TEST(PathData, missingArgumentsAtTheEndLoseThatCommandOnly)
{
    EXPECT_EQ(parsed("M0 0L1 2L3"), "M 0 0 L 1 2");
    EXPECT_EQ(parsed("M0 0C1 2 3 4 5"), "M 0 0");
}

TEST(PathData, unknownLettersPassOverTheNumbersBehindThem)
{
    EXPECT_EQ(parsed("M0 0B1 2 3L4 5"), "M 0 0 L 4 5");
    EXPECT_EQ(parsed("M0 0\xD0\x96 1 2L4 5"), "M 0 0 L 4 5");
    // An exponent mark on its own is such a letter.
    EXPECT_EQ(parsed("M0 0 e 1 2L4 5"), "M 0 0 L 4 5");
}

TEST(PathData, emptyAndBlankTextsAreAbsent)
{
    EXPECT_EQ(parsed(""), "absent");
    EXPECT_EQ(parsed(" \n\t, "), "absent");
}

TEST(PathData, closingNothingLeavesNothing)
{
    EXPECT_EQ(parsed("z"), "absent");
    EXPECT_EQ(parsed("Z Z z"), "absent");
}

TEST(PathData, afterClosingTheNextCommandStartsWhereTheSubpathBegan)
{
    EXPECT_EQ(parsed("M1 2L5 6L9 9zl1 1"), "M 1 2 L 5 6 L 9 9 Z L 2 3");
}

TEST(PathData, aNumberAfterClosingEndsThePath)
{
    EXPECT_EQ(parsed("M0 0L5 0L5 5z 7 M1 1L2 2"), "M 0 0 L 5 0 L 5 5 Z");
}

TEST(PathData, numbersPastTheRangeAreInfiniteOrNothing)
{
    const auto path = PathData::parse("M1e999 -1e999L1e-999 0");
    ASSERT_TRUE(path);
    EXPECT_EQ(path->points()[0], (Point{INFINITY, -INFINITY}));
    EXPECT_EQ(path->points()[1], (Point{0, 0}));
}

TEST(PathData, howANumberPastTheRangeIsWrittenDoesNotMatter)
{
    const std::string zeros(400, '0');
    const std::string text
        = "M0." + zeros + "1 1" + zeros + "e-5L-1" + zeros + " 1e+999L" + zeros + "7e-2 1" + zeros + "e-400";
    const auto path = PathData::parse(text);
    ASSERT_TRUE(path);
    EXPECT_EQ(path->points()[0], (Point{0, INFINITY}));
    EXPECT_EQ(path->points()[1], (Point{-INFINITY, INFINITY}));
    EXPECT_EQ(path->points()[2], (Point{0.07, 1}));
}

TEST(PathData, whatIsNearlyANumberIsNone)
{
    for (const auto *text : {"M1. .5", "M+1 5e0", "M1e+0 50E-1"})
        EXPECT_TRUE(PathData::parse(text)) << text;
    for (const auto *text : {"M. 5", "M+ 5", "M++1 5", "M1+1 5", "M1e 5", "M1e- 5", "M1e5.5+ 5", "M1_0 5"})
        EXPECT_FALSE(PathData::parse(text)) << text;
}

TEST(PathData, closingAgainAndAgainIsClosingOnce)
{
    const auto started = std::chrono::steady_clock::now();
    for (int i = 0; i < 20'000; ++i)
        EXPECT_EQ(PathData::parse("M0 0L5 0z1")->verbs().size(), 3U);
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(10));
}

TEST(PathData, arcsOfExtremeSizeEnd)
{
    EXPECT_TRUE(PathData::parse("M0 0A1e-300 1e-300 0 0 1 1 1"));
    EXPECT_TRUE(PathData::parse("M0 0A1e300 1e300 0 0 1 1 1"));
    EXPECT_TRUE(PathData::parse("M0 0A1e999 1 1e999 0 1 1 1"));
}

TEST(PathData, invalidBytesSpoilOnlyTheirNumber)
{
    EXPECT_EQ(parsed("M0 0L1\xFF 2L3 4"), "M 0 0 L 3 4");
}
