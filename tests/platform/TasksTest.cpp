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

namespace
{
Task<> await(Completion<int> completion, QStringList &log, QString name)
{
    try {
        const int value = co_await completion;
        log.append(QStringLiteral("%1 %2").arg(name).arg(value));
    } catch (const std::runtime_error &error) {
        log.append(QStringLiteral("%1 %2").arg(name, QLatin1String(error.what())));
    }
}
} // namespace

TEST(Completion, whoWaitsGoesOnInTheOrderOfComingAndOnce)
{
    const Completion<int> completion;
    QStringList log;
    auto first = await(completion, log, QStringLiteral("first"));
    auto second = await(completion, log, QStringLiteral("second"));
    EXPECT_TRUE(log.isEmpty());
    completion.finish(7);
    completion.finish(8);
    completion.fail(std::make_exception_ptr(std::runtime_error("too late")));
    EXPECT_EQ(log, (QStringList{QStringLiteral("first 7"), QStringLiteral("second 7")}));
    auto third = await(completion, log, QStringLiteral("third"));
    EXPECT_EQ(log.last(), QStringLiteral("third 7")) << "after the end nobody waits";
}

TEST(Completion, anErrorReachesEveryWaiter)
{
    const Completion<int> completion;
    QStringList log;
    auto first = await(completion, log, QStringLiteral("first"));
    completion.fail(std::make_exception_ptr(std::runtime_error("no luck")));
    completion.finish(7);
    auto second = await(completion, log, QStringLiteral("second"));
    EXPECT_EQ(log, (QStringList{QStringLiteral("first no luck"), QStringLiteral("second no luck")}));
}

TEST(Completion, itMayGoWithWhoeverGoesOnFirst)
{
    auto completion = std::make_unique<Completion<>>();
    int ended = 0;
    const auto wait = [](Completion<> end, std::function<void()> then) -> Task<> {
        co_await end;
        then();
    };
    auto first = wait(*completion, [&] {
        ++ended;
        completion.reset();
    });
    auto second = wait(*completion, [&] { ++ended; });
    completion->finish();
    EXPECT_EQ(ended, 2);
}

TEST_F(TasksTest, theNextTurnComesBehindWhatWaits)
{
    QStringList log;
    executor.onMain([&log] { log.append(QStringLiteral("waiting")); });
    auto task = [](Executor &on, QStringList &said) -> Task<> {
        said.append(QStringLiteral("now"));
        co_await nextTurn(on);
        said.append(QStringLiteral("then"));
    }(executor, log);
    EXPECT_EQ(log, QStringList{QStringLiteral("now")});
    ASSERT_TRUE(comesTrue([&log] { return log.size() == 3; }));
    EXPECT_EQ(log.last(), QStringLiteral("then"));
}
