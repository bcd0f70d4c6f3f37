#include "platform/Tasks.h"

#include "platform/Conditions.h"
#include "platform/desktop/QtClock.h"
#include "platform/desktop/QtExecutor.h"

#include <QThread>

#include <stdexcept>

#include <gtest/gtest.h>

using namespace quillnest;
using namespace std::chrono_literals;

namespace
{
class TasksTest : public ::testing::Test
{
protected:
    QtExecutor executor;
    QtClock clock;
    bool ended = false;
};
} // namespace

TEST_F(TasksTest, backgroundGivesItsValueOnTheMainThread)
{
    QThread *worker = nullptr;
    QThread *after = nullptr;
    QString value;
    auto task
        = [](TasksTest *, QtExecutor &on, QThread *&worked, QThread *&resumed, QString &result, bool &done) -> Task<> {
        auto work = [&worked] {
            worked = QThread::currentThread();
            return QStringLiteral("value");
        };
        result = co_await background(on, work);
        resumed = QThread::currentThread();
        done = true;
    }(this, executor, worker, after, value, ended);
    EXPECT_FALSE(ended) << "not inside the call";
    ASSERT_TRUE(comesTrue([this] { return ended; }));
    EXPECT_EQ(value, QStringLiteral("value"));
    EXPECT_NE(worker, QThread::currentThread());
    EXPECT_EQ(after, QThread::currentThread());
}

TEST_F(TasksTest, backgroundThrowsOnTheMainThreadWhatTheWorkThrew)
{
    std::string caught;
    auto task = [](QtExecutor &on, std::string &text, bool &done) -> Task<> {
        auto work = []() -> int { throw std::runtime_error("no luck"); };
        try {
            co_await background(on, work);
        } catch (const std::runtime_error &error) {
            text = error.what();
        }
        done = true;
    }(executor, caught, ended);
    ASSERT_TRUE(comesTrue([this] { return ended; }));
    EXPECT_EQ(caught, "no luck");
}

TEST_F(TasksTest, backgroundWithoutAValue)
{
    std::atomic_int runs = 0;
    int caught = 0;
    auto task = [](QtExecutor &on, std::atomic_int &count, int &errors, bool &done) -> Task<> {
        auto work = [&count] { ++count; };
        auto throwing = [] { throw std::runtime_error("no luck"); };
        co_await background(on, work);
        try {
            co_await background(on, throwing);
        } catch (const std::runtime_error &) {
            ++errors;
        }
        done = true;
    }(executor, runs, caught, ended);
    ASSERT_TRUE(comesTrue([this] { return ended; }));
    EXPECT_EQ(runs, 1);
    EXPECT_EQ(caught, 1);
}

TEST_F(TasksTest, backgroundValueMayBeMoveOnly)
{
    int value = 0;
    auto task = [](QtExecutor &on, int &result, bool &done) -> Task<> {
        auto work = [] { return std::make_unique<int>(7); };
        const auto owned = co_await background(on, work);
        result = *owned;
        done = true;
    }(executor, value, ended);
    ASSERT_TRUE(comesTrue([this] { return ended; }));
    EXPECT_EQ(value, 7);
}

TEST_F(TasksTest, manyAtOnceAllComeBack)
{
    int done = 0;
    int sum = 0;
    std::vector<Task<>> tasks;
    for (int i = 0; i < 200; ++i) {
        tasks.push_back([](QtExecutor &on, int number, int &total, int &count) -> Task<> {
            auto work = [number] { return number; };
            total += co_await background(on, work);
            ++count;
        }(executor, i, sum, done));
    }
    ASSERT_TRUE(comesTrue([&] { return done == 200; }));
    EXPECT_EQ(sum, 199 * 200 / 2);
}

TEST_F(TasksTest, sleepForResumesAfterItsTime)
{
    const auto due = clock.monotonic() + 20ms;
    auto task = [](QtClock &on, bool &done) -> Task<> {
        co_await sleepFor(on, 20ms);
        done = true;
    }(clock, ended);
    EXPECT_FALSE(ended);
    ASSERT_TRUE(comesTrue([this] { return ended; }));
    EXPECT_GE(clock.monotonic(), due - 1ms);
}
