#include "base/FireAndForget.h"
#include "fakes/FakePlatform.h"

#include <gtest/gtest.h>

using namespace quillnest;

TEST(FireAndForget, whatATaskThrowsIsLogged)
{
    const auto fakes = fakePlatform();
    const auto log = std::make_shared<QuillnestLog>(fakes.clock, fakes.home->path(), QStringLiteral("a.log"), false);
    const auto clock = fakes.clock;
    auto task = [](std::shared_ptr<ManualClock> time) -> Task<> {
        co_await sleepFor(*time, std::chrono::seconds(1));
        throw std::runtime_error("broken");
    }(clock);
    fireAndForget(log, std::move(task));
    EXPECT_EQ(log->tail(9), QString());
    fakes.clock->advance(std::chrono::seconds(1));
    EXPECT_EQ(log->tail(9), QStringLiteral("task failed error=broken"));
}
