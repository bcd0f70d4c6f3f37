#include "platform/desktop/QtClock.h"

#include "platform/Conditions.h"

#include <QThread>

#include <gtest/gtest.h>

using namespace quillnest;
using namespace std::chrono_literals;

TEST(QtClockTest, monotonicTimeNeverGoesBack)
{
    const QtClock clock;
    auto last = clock.monotonic();
    EXPECT_GT(last.count(), 0);
    for (int i = 0; i < 1000; ++i) {
        const auto now = clock.monotonic();
        ASSERT_GE(now, last);
        last = now;
    }
    EXPECT_TRUE(comesTrueWithoutMain([&] { return clock.monotonic() > last; }));
}

TEST(QtClockTest, wallTimeIsUtc)
{
    const QtClock clock;
    const auto before = QDateTime::currentDateTimeUtc();
    const auto time = clock.wallTime();
    EXPECT_EQ(time.timeSpec(), Qt::UTC);
    EXPECT_GE(time, before);
    EXPECT_LE(time, QDateTime::currentDateTimeUtc());
}

TEST(QtClockTest, afterCallsOnceOnTheMainThreadAndNotBeforeItsTime)
{
    QtClock clock;
    int calls = 0;
    const auto due = clock.monotonic() + 20ms;
    bool early = false;
    QThread *where = nullptr;
    const auto timer = clock.after(20ms, [&] {
        ++calls;
        early = clock.monotonic() < due - 1ms;
        where = QThread::currentThread();
    });
    EXPECT_TRUE(timer->isActive());
    EXPECT_EQ(calls, 0);
    ASSERT_TRUE(comesTrue([&] { return calls > 0; }));
    EXPECT_FALSE(early);
    EXPECT_EQ(where, QThread::currentThread());
    EXPECT_FALSE(timer->isActive());
    // A timer that is set later and due later: by its time a second call would have come.
    bool later = false;
    const auto second = clock.after(40ms, [&] { later = true; });
    ASSERT_TRUE(comesTrue([&] { return later; }));
    EXPECT_EQ(calls, 1);
}

TEST(QtClockTest, droppedHandleCancels)
{
    QtClock clock;
    bool called = false;
    auto timer = clock.after(5ms, [&] { called = true; });
    auto repeating = clock.every(5ms, [&] { called = true; });
    timer.reset();
    repeating.reset();
    bool later = false;
    clock.later(30ms, [&] { later = true; });
    ASSERT_TRUE(comesTrue([&] { return later; }));
    EXPECT_FALSE(called);
}

TEST(QtClockTest, everyCallsAgainAndAgain)
{
    QtClock clock;
    int calls = 0;
    const auto timer = clock.every(1ms, [&] { ++calls; });
    EXPECT_TRUE(comesTrue([&] { return calls >= 5; }));
    EXPECT_TRUE(timer->isActive());
}

TEST(QtClockTest, actionMayDropItsOwnHandle)
{
    QtClock clock;
    int calls = 0;
    const auto text = std::make_shared<QString>(QStringLiteral("still here"));
    QString seen;
    std::unique_ptr<Timer> timer;
    timer = clock.every(1ms, [&, text] {
        timer.reset();
        ++calls;
        seen = *text;
    });
    EXPECT_TRUE(comesTrue([&] { return calls == 1; }));
    EXPECT_EQ(seen, QStringLiteral("still here"));
    bool later = false;
    clock.later(20ms, [&] { later = true; });
    ASSERT_TRUE(comesTrue([&] { return later; }));
    EXPECT_EQ(calls, 1);
}

TEST(QtClockTest, actionMaySetAnotherTimer)
{
    QtClock clock;
    bool done = false;
    std::unique_ptr<Timer> timer;
    timer = clock.after(1ms, [&] { timer = clock.after(1ms, [&] { done = true; }); });
    EXPECT_TRUE(comesTrue([&] { return done; }));
}

TEST(QtClockTest, laterNeedsNoHandle)
{
    QtClock clock;
    QStringList order;
    clock.later(30ms, [&] { order.append(QStringLiteral("second")); });
    clock.later(1ms, [&] { order.append(QStringLiteral("first")); });
    EXPECT_TRUE(comesTrue([&] { return order.size() == 2; }));
    EXPECT_EQ(order, (QStringList{QStringLiteral("first"), QStringLiteral("second")}));
}

TEST(QtClockTest, actionsOfAClockThatHasGoneAreDropped)
{
    auto first = std::make_unique<QtClock>();
    QtClock second;
    bool called = false;
    bool later = false;
    first->later(1ms, [&] { called = true; });
    first.reset();
    second.later(20ms, [&] { later = true; });
    ASSERT_TRUE(comesTrue([&] { return later; }));
    EXPECT_FALSE(called);
}
