#include "platform/desktop/QtExecutor.h"

#include "platform/Conditions.h"
#include "platform/Semaphore.h"

#include <QThread>

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <unistd.h>

using namespace quillnest;

TEST(QtExecutorTest, onMainRunsLaterOnTheMainThreadInTheOrderOfTheCalls)
{
    std::vector<int> order;
    bool elsewhere = false;
    QtExecutor executor;
    for (int i = 0; i < 100; ++i) {
        executor.onMain([&, i, main = QThread::currentThread()] {
            order.push_back(i);
            elsewhere = elsewhere || QThread::currentThread() != main;
        });
    }
    EXPECT_TRUE(order.empty()) << "not inside the call";
    ASSERT_TRUE(comesTrue([&] { return order.size() == 100; }));
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
    EXPECT_FALSE(elsewhere);
}

TEST(QtExecutorTest, onMainFromOtherThreadsKeepsEachThreadsOrder)
{
    std::vector<std::vector<int>> seen(4);
    std::vector<std::thread> threads;
    QtExecutor executor;
    for (std::size_t thread = 0; thread < seen.size(); ++thread) {
        threads.emplace_back([&, thread] {
            for (int i = 0; i < 500; ++i)
                executor.onMain([&seen, thread, i] { seen[thread].push_back(i); });
        });
    }
    const auto all
        = [&] { return std::all_of(seen.begin(), seen.end(), [](const auto &one) { return one.size() == 500; }); };
    ASSERT_TRUE(comesTrue(all));
    for (auto &thread : threads)
        thread.join();
    for (const auto &one : seen)
        EXPECT_TRUE(std::is_sorted(one.begin(), one.end()));
}

TEST(QtExecutorTest, workOnMainMayPostMore)
{
    std::vector<int> order;
    QtExecutor executor;
    executor.onMain([&] {
        executor.onMain([&] { order.push_back(3); });
        order.push_back(1);
    });
    executor.onMain([&] { order.push_back(2); });
    ASSERT_TRUE(comesTrue([&] { return order.size() == 3; }));
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
}

TEST(QtExecutorTest, backgroundRunsElsewhere)
{
    Semaphore done;
    QThread *where = nullptr;
    QtExecutor executor;
    executor.inBackground([&] {
        where = QThread::currentThread();
        done.release();
    });
    ASSERT_TRUE(done.tryAcquire(1));
    EXPECT_NE(where, QThread::currentThread());
}

TEST(QtExecutorTest, backgroundGrowsForWorkersThatWait)
{
    // In front of the executor, which waits for its workers at its end.
    Semaphore waiting;
    Semaphore release;
    Semaphore done;
    constexpr int workers = 32;
    QtExecutor executor;
    for (int i = 0; i < workers; ++i) {
        executor.inBackground([&] {
            waiting.release();
            release.acquire();
            done.release();
        });
    }
    EXPECT_TRUE(waiting.tryAcquire(workers)) << "work waits for other work to end";
    release.release(workers);
    EXPECT_TRUE(done.tryAcquire(workers));
}

TEST(QtExecutorTest, utilityWorkRunsFewAtATimeAndLeavesTheBackgroundFree)
{
    Semaphore begun;
    Semaphore release;
    Semaphore done;
    std::atomic_int running = 0;
    std::atomic_int most = 0;
    constexpr int pieces = 100;
    QtExecutor executor;
    const int processors = std::max(1, QThread::idealThreadCount());
    for (int i = 0; i < pieces; ++i) {
        executor.asUtility([&] {
            const int now = ++running;
            for (int seen = most; seen < now && !most.compare_exchange_weak(seen, now);) { }
            begun.release();
            release.acquire();
            --running;
            done.release();
        });
    }
    ASSERT_TRUE(begun.tryAcquire(processors));
    // While all of these threads wait.
    executor.inBackground([&] { done.release(); });
    EXPECT_TRUE(done.tryAcquire(1)) << "background work waits for utility work";
    release.release(pieces);
    EXPECT_TRUE(done.tryAcquire(pieces));
    EXPECT_EQ(most, processors);
}

TEST(QtExecutorTest, utilityWorkRunsInOrderAndGivesWayToTheRest)
{
    Semaphore done;
    int niceness = 0;
    int childs = 0;
    int others = 0;
    QtExecutor executor;
    executor.asUtility([&] {
        niceness = getpriority(PRIO_PROCESS, static_cast<id_t>(gettid()));
        std::thread child([&] { childs = getpriority(PRIO_PROCESS, static_cast<id_t>(gettid())); });
        child.join();
        done.release();
    });
    ASSERT_TRUE(done.tryAcquire(1));
    executor.inBackground([&] {
        others = getpriority(PRIO_PROCESS, static_cast<id_t>(gettid()));
        done.release();
    });
    ASSERT_TRUE(done.tryAcquire(1));
    const int own = getpriority(PRIO_PROCESS, static_cast<id_t>(gettid()));
    EXPECT_GT(niceness, own);
    EXPECT_EQ(childs, niceness);
    EXPECT_EQ(others, own);
}

TEST(QtExecutorTest, utilityWorkThatHasNotBegunIsDroppedAtTheEnd)
{
    Semaphore begun;
    Semaphore release;
    std::atomic_int finished = 0;
    const auto owned = std::make_shared<int>(1);
    auto executor = std::make_unique<QtExecutor>();
    const int processors = std::max(1, QThread::idealThreadCount());
    for (int i = 0; i < processors + 50; ++i) {
        executor->asUtility([&, owned] {
            begun.release();
            release.acquire();
            ++finished;
        });
    }
    ASSERT_TRUE(begun.tryAcquire(processors));
    std::thread ending([&] { executor.reset(); });
    EXPECT_TRUE(comesTrueWithoutMain([&] { return owned.use_count() == 1 + processors; }));
    release.release(processors + 50);
    ending.join();
    EXPECT_EQ(finished, processors);
}

TEST(QtExecutorTest, endOfTheExecutorWaitsForItsWork)
{
    std::atomic_bool done = false;
    Semaphore begun;
    Semaphore release;
    auto executor = std::make_unique<QtExecutor>();
    executor->inBackground([&] {
        begun.release();
        release.acquire();
        done = true;
    });
    begun.acquire();
    release.release();
    executor.reset();
    EXPECT_TRUE(done);
}

TEST(QtExecutorTest, serialQueueKeepsTheOrderAndRunsOneAtATime)
{
    std::vector<int> order;
    std::atomic_int running = 0;
    std::atomic_bool overlapped = false;
    Semaphore done;
    QtExecutor executor;
    const auto queue = executor.serialQueue("test.queue");
    for (int i = 0; i < 1000; ++i) {
        queue->post([&, i] {
            overlapped = overlapped || ++running != 1;
            order.push_back(i);
            --running;
            done.release();
        });
    }
    ASSERT_TRUE(done.tryAcquire(1000));
    EXPECT_FALSE(overlapped);
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST(QtExecutorTest, serialQueueTakesWorkFromSeveralThreads)
{
    std::vector<std::vector<int>> seen(4);
    Semaphore done;
    std::vector<std::thread> threads;
    QtExecutor executor;
    const auto queue = executor.serialQueue("test.queue");
    for (std::size_t thread = 0; thread < seen.size(); ++thread) {
        threads.emplace_back([&, thread] {
            for (int i = 0; i < 500; ++i) {
                queue->post([&, thread, i] {
                    seen[thread].push_back(i);
                    done.release();
                });
            }
        });
    }
    ASSERT_TRUE(done.tryAcquire(4 * 500));
    for (auto &thread : threads)
        thread.join();
    for (const auto &one : seen)
        EXPECT_TRUE(std::is_sorted(one.begin(), one.end()));
}

TEST(QtExecutorTest, droppedQueueWaitsForTheRunningClosureAndDiscardsTheRest)
{
    Semaphore begun;
    Semaphore release;
    std::atomic_bool finished = false;
    std::atomic_int others = 0;
    const auto owned = std::make_shared<int>(1);
    QtExecutor executor;
    auto queue = executor.serialQueue("test.queue");
    queue->post([&] {
        begun.release();
        release.acquire();
        finished = true;
    });
    for (int i = 0; i < 10; ++i)
        queue->post([&others, owned] { ++others; });
    begun.acquire();
    std::thread dropping([&] { queue.reset(); });
    // The discarded closures go before the wait for the running one.
    EXPECT_TRUE(comesTrueWithoutMain([&] { return owned.use_count() == 1; }));
    EXPECT_FALSE(finished);
    release.release();
    dropping.join();
    EXPECT_TRUE(finished);
    EXPECT_EQ(others, 0);
}

TEST(QtExecutorTest, closureIsDestroyedBeforeTheNextOneBegins)
{
    auto owned = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = owned;
    bool gone = false;
    Semaphore done;
    QtExecutor executor;
    const auto queue = executor.serialQueue("test.queue");
    queue->post([owned] {});
    owned.reset();
    queue->post([&] {
        gone = watched.expired();
        done.release();
    });
    ASSERT_TRUE(done.tryAcquire(1));
    EXPECT_TRUE(gone);
}

namespace
{
/// What a closure owns may have a destructor that posts once more.
struct Poster {
    SerialQueue *queue = nullptr;
    Semaphore *posted = nullptr;
    ~Poster()
    {
        queue->post([semaphore = posted] {
            if (semaphore)
                semaphore->release();
        });
    }
};
} // namespace

TEST(QtExecutorTest, closureThatRanMayPostOnItsWayOut)
{
    Semaphore posted;
    auto poster = std::make_shared<Poster>();
    QtExecutor executor;
    const auto queue = executor.serialQueue("test.queue");
    poster->queue = queue.get();
    poster->posted = &posted;
    queue->post([poster = std::move(poster)] {});
    EXPECT_TRUE(posted.tryAcquire(1));
}

TEST(QtExecutorTest, discardedClosureMayPostToTheQueueThatIsGoing)
{
    Semaphore begun;
    Semaphore release;
    QtExecutor executor;
    auto queue = executor.serialQueue("test.queue");
    queue->post([&] {
        begun.release();
        release.acquire();
    });
    begun.acquire();
    auto poster = std::make_shared<Poster>();
    poster->queue = queue.get();
    const std::weak_ptr watched = poster;
    queue->post([poster = std::move(poster)] {});
    std::thread dropping([&] { queue.reset(); });
    EXPECT_TRUE(comesTrueWithoutMain([&] { return watched.expired(); }));
    release.release();
    dropping.join();
}

TEST(QtExecutorTest, queuesComeAndGoWithTheirThreads)
{
    QtExecutor executor;
    const int threads = ownThreads();
    for (int i = 0; i < 50; ++i) {
        const auto queue = executor.serialQueue("test.queue");
        queue->post([] {});
    }
    EXPECT_TRUE(comesTrueWithoutMain([&] { return ownThreads() <= threads; }));
}
