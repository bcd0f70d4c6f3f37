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

// A signal goes to whichever thread of the process takes it, and the threads of tests that ran before don't keep it
// from ending everything: these two run in a process of their own.

namespace
{
/// Whether each of the signals, sent to the whole process, becomes one request.
bool allSignalsBecomeRequests()
{
    TerminationSignals::block();
    TerminationSignals signals;
    int requests = 0;
    QObject::connect(&signals, &TerminationSignals::requested, [&requests] { ++requests; });
    int expected = 0;
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        ::kill(::getpid(), signal);
        ++expected;
        if (!comesTrue([&] { return requests == expected; }))
            return false;
    }
    return true;
}

bool signalPassesByAnotherThread()
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
    const bool came = comesTrue([&] { return requests == 1; });
    done = true;
    other.join();
    return came;
}
} // namespace

TEST_F(TerminationSignalsTest, signalsBecomeRequestsOnTheEventLoop)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(std::_Exit(allSignalsBecomeRequests() ? 0 : 1), ::testing::ExitedWithCode(0), "");
}

TEST_F(TerminationSignalsTest, threadsStartedLaterDoNotTakeTheSignals)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(std::_Exit(signalPassesByAnotherThread() ? 0 : 1), ::testing::ExitedWithCode(0), "");
}

TEST_F(TerminationSignalsTest, theEndOfTheObjectEndsItsThread)
{
    const int threads = ownThreads();
    TerminationSignals::block();
    {
        const TerminationSignals signals;
    }
    EXPECT_TRUE(comesTrueWithoutMain([&] { return ownThreads() <= threads; }));
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
