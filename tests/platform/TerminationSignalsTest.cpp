#include "platform/TerminationSignals.h"

#include "platform/Conditions.h"

#include <csignal>

#include <unistd.h>

#include <gtest/gtest.h>

using namespace quillnest;

namespace
{
/// Leaves the signals of this process as they were.
class TerminationSignalsTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        pipe = ::signal(SIGPIPE, SIG_DFL);
        ::pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    }
    void TearDown() override
    {
        ::signal(SIGPIPE, pipe);
        ::pthread_sigmask(SIG_SETMASK, &mask, nullptr);
    }

    sighandler_t pipe = nullptr;
    sigset_t mask{};
};
} // namespace

TEST_F(TerminationSignalsTest, signalsBecomeRequestsOnTheEventLoop)
{
    TerminationSignals::block();
    TerminationSignals signals;
    int requests = 0;
    QObject::connect(&signals, &TerminationSignals::requested, [&requests] { ++requests; });
    int expected = 0;
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        ::kill(::getpid(), signal);
        ++expected;
        EXPECT_TRUE(comesTrue([&] { return requests == expected; })) << signal;
    }
}

TEST_F(TerminationSignalsTest, threadsStartedLaterDoNotTakeTheSignals)
{
    TerminationSignals::block();
    TerminationSignals signals;
    int requests = 0;
    QObject::connect(&signals, &TerminationSignals::requested, [&requests] { ++requests; });
    std::atomic_bool done = false;
    std::thread other([&] {
        while (!done)
            std::this_thread::yield();
    });
    ::kill(::getpid(), SIGTERM);
    EXPECT_TRUE(comesTrue([&] { return requests == 1; }));
    done = true;
    other.join();
}

TEST_F(TerminationSignalsTest, writingToAClosedPipeFailsAndNothingElse)
{
    TerminationSignals::block();
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    ::close(ends[0]);
    EXPECT_EQ(::write(ends[1], "x", 1), -1);
    EXPECT_EQ(errno, EPIPE);
    ::close(ends[1]);
}
