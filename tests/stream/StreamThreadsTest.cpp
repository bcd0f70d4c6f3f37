#include "stream/StreamThreads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace quillnest;
using namespace std::chrono_literals;

TEST(StreamThreads, withoutThreadsThereIsNothingToWaitFor)
{
    StreamThreads threads;
    EXPECT_TRUE(threads.waitForEnd(0ms));
}

TEST(StreamThreads, theWaitLastsUntilTheLastOneHasEndedAndItsWorkIsGone)
{
    StreamThreads threads;
    std::atomic_bool release = false;
    std::weak_ptr<int> owned;
    {
        auto token = std::make_shared<int>(1);
        owned = token;
        threads.run([&release, token = std::move(token)] {
            while (!release)
                std::this_thread::yield();
        });
    }
    threads.run([] {});
    EXPECT_FALSE(threads.waitForEnd(1ms));
    EXPECT_FALSE(owned.expired());
    release = true;
    EXPECT_TRUE(threads.waitForEnd(30s));
    EXPECT_TRUE(owned.expired());
}

TEST(StreamThreads, aThreadMayStartAnotherAndDropTheLastHoldOnAllOfThem)
{
    std::atomic_int done = 0;
    {
        auto threads = std::make_shared<StreamThreads>();
        threads->run([threads, &done] {
            threads->run([threads, &done] { ++done; });
            ++done;
        });
    }
    while (done < 2)
        std::this_thread::yield();
}
