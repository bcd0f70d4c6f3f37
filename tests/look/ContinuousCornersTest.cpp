#include "look/ContinuousCorners.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace quillnest;

TEST(ContinuousCorners, passWhereTheArcsPassAndBendMoreGently)
{
    const auto path = continuousRectangle(QRectF(0, 0, 100, 100), 20);
    // On the diagonal the arc is 20 × (1 − √½) from both sides.
    EXPECT_FALSE(path.contains(QPointF(5.7, 5.7)));
    EXPECT_TRUE(path.contains(QPointF(6.0, 6.0)));
    // Where the arc would have left the side already, and where it still follows it.
    EXPECT_FALSE(path.contains(QPointF(21, 0.02)));
    EXPECT_TRUE(path.contains(QPointF(31, 0.02)));
    EXPECT_EQ(path.boundingRect(), QRectF(0, 0, 100, 100));
    // With half the side it is a circle.
    const auto circle = continuousRectangle(QRectF(0, 0, 100, 100), 50);
    for (int degrees = 0; degrees < 360; degrees += 15) {
        const double angle = degrees * 3.14159265358979 / 180;
        const QPointF direction(std::cos(angle), std::sin(angle));
        EXPECT_TRUE(circle.contains(QPointF(50, 50) + 49.7 * direction)) << degrees;
        EXPECT_FALSE(circle.contains(QPointF(50, 50) + 50.3 * direction)) << degrees;
    }
}
