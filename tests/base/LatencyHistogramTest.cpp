#include "base/LatencyHistogram.h"

#include <gtest/gtest.h>

using namespace quillnest;
using namespace std::chrono_literals;

TEST(LatencyHistogram, percentilesAreRoundedUpToAStep)
{
    LatencyHistogram times;
    for (int i = 1; i <= 100; ++i)
        times.add(i * 1ms - 10us);
    EXPECT_EQ(times.count(), 100U);
    EXPECT_NEAR(times.percentile(0.5), 50, 1e-9);
    EXPECT_NEAR(times.percentile(0.99), 99, 1e-9);
    EXPECT_NEAR(times.percentile(1), 99.99, 1e-9);
    EXPECT_NEAR(times.worst(), 99.99, 1e-9);
}

TEST(LatencyHistogram, oneOutlierIsTheWorstAndNothingElse)
{
    LatencyHistogram times;
    for (int i = 0; i < 999; ++i)
        times.add(2ms);
    times.add(3s);
    EXPECT_NEAR(times.percentile(0.99), 2.05, 1e-9);
    EXPECT_NEAR(times.percentile(1), 3000, 1e-9);
    EXPECT_NEAR(times.worst(), 3000, 1e-9);
}

TEST(LatencyHistogram, withoutTimesEverythingIsNought)
{
    LatencyHistogram times;
    EXPECT_EQ(times.percentile(0.5), 0);
    EXPECT_EQ(times.worst(), 0);
    times.add(-5ms);
    EXPECT_EQ(times.percentile(0.5), 0) << "a clock that went back is no time";
}
