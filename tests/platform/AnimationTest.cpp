#include "platform/Animation.h"

#include "fakes/ManualClock.h"

#include <gtest/gtest.h>

#include <optional>
#include <vector>

using namespace quillnest;
using namespace std::chrono_literals;

namespace
{

class AnimationTest : public ::testing::Test
{
protected:
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    std::vector<double> steps;
    std::optional<Animation> animation{std::in_place, clock, [this](double value) { steps.push_back(value); }};
};

} // namespace

TEST_F(AnimationTest, itGoesGentlyAndEndsExactlyAtItsTarget)
{
    int ends = 0;
    animation->runTo(1, 160ms, [&ends] { ++ends; });
    EXPECT_TRUE(animation->isRunning());
    EXPECT_TRUE(steps.empty());
    clock->advance(160ms);
    EXPECT_EQ(ends, 1);
    EXPECT_FALSE(animation->isRunning());
    EXPECT_EQ(clock->pending(), 0U);
    ASSERT_EQ(steps.size(), 10U);
    EXPECT_NEAR(steps[0], 0.028, 1e-9) << "a tenth of the time";
    EXPECT_NEAR(steps[4], 0.5, 1e-9) << "half of it";
    EXPECT_NEAR(steps[8], 0.972, 1e-9);
    EXPECT_EQ(steps[9], 1.0);
    for (std::size_t i = 1; i < steps.size(); ++i)
        EXPECT_GT(steps[i], steps[i - 1]);
}

TEST_F(AnimationTest, howFarItIsIsAMatterOfTimeAndNotOfSteps)
{
    animation->runTo(100, 90ms);
    clock->advance(96ms);
    EXPECT_EQ(steps.size(), 6U);
    EXPECT_EQ(steps.back(), 100.0) << "the first step after the time is the last one";
}

TEST_F(AnimationTest, onTheWayItCanBeTurnedRoundAndTheFirstEndIsNotTold)
{
    int firstEnds = 0;
    int secondEnds = 0;
    animation->runTo(1, 160ms, [&firstEnds] { ++firstEnds; });
    clock->advance(80ms);
    EXPECT_NEAR(animation->value(), 0.5, 1e-9);
    animation->runTo(0, 160ms, [&secondEnds] { ++secondEnds; });
    clock->advance(80ms);
    EXPECT_NEAR(animation->value(), 0.25, 1e-9) << "from where it was, without a jump";
    clock->advance(80ms);
    EXPECT_EQ(animation->value(), 0.0);
    EXPECT_EQ(firstEnds, 0);
    EXPECT_EQ(secondEnds, 1);
}

TEST_F(AnimationTest, withoutADurationItIsThereAtOnce)
{
    int ends = 0;
    animation->runTo(3, 0ms, [&ends] { ++ends; });
    EXPECT_EQ(steps, std::vector<double>{3});
    EXPECT_EQ(ends, 1);
    EXPECT_FALSE(animation->isRunning());
}

TEST_F(AnimationTest, aJumpAndAStopEndWhatIsUnderWay)
{
    int ends = 0;
    animation->runTo(1, 160ms, [&ends] { ++ends; });
    clock->advance(16ms);
    animation->jumpTo(7);
    EXPECT_EQ(steps.back(), 7.0);
    EXPECT_FALSE(animation->isRunning());
    animation->runTo(8, 160ms, [&ends] { ++ends; });
    clock->advance(80ms);
    animation->stop();
    EXPECT_NEAR(animation->value(), 7.5, 1e-9);
    const auto count = steps.size();
    clock->advance(1s);
    EXPECT_EQ(steps.size(), count);
    EXPECT_EQ(ends, 0);
}

TEST_F(AnimationTest, itMayGoInTheMiddleAndInItsOwnCallbacks)
{
    animation->runTo(1, 160ms);
    clock->advance(16ms);
    animation.reset();
    clock->advance(1s);
    EXPECT_EQ(steps.size(), 1U);

    const auto token = std::make_shared<int>(1);
    bool wasThere = false;
    animation.emplace(clock, [this, token, &wasThere](double) {
        animation.reset();
        wasThere = token.use_count() > 1;
    });
    animation->runTo(1, 160ms);
    clock->advance(1s);
    EXPECT_TRUE(wasThere);
    EXPECT_EQ(token.use_count(), 1);
    EXPECT_EQ(clock->pending(), 0U);

    animation.emplace(clock, nullptr);
    animation->runTo(1, 16ms, [this] { animation.reset(); });
    clock->advance(1s);
    EXPECT_FALSE(animation.has_value());
}
