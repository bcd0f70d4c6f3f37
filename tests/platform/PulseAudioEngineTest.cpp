#include "platform/linux/PulseAudioEngine.h"

#include "platform/Conditions.h"
#include "platform/posix/PosixChildProcesses.h"

#include <QLocalSocket>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quillnest;

namespace
{
AudioBuffer silence(std::size_t frames)
{
    return {std::vector<float>(frames), std::vector<float>(frames)};
}

/// An engine whose sound server doesn't exist, whatever the user runs.
class PulseAudioEngineTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        qputenv("HOME", folder.path().toUtf8());
        qputenv("XDG_CONFIG_HOME", folder.path().toUtf8());
        qputenv("XDG_RUNTIME_DIR", folder.path().toUtf8());
        qputenv("PULSE_SERVER", "unix:" + folder.filePath(QStringLiteral("nobody")).toUtf8());
        threads = ownThreads();
    }
    void TearDown() override
    {
        engine.reset();
        EXPECT_TRUE(comesTrueWithoutMain([this] { return ownThreads() <= threads; })) << "the engine left a thread";
    }

    const QTemporaryDir folder;
    int threads = 0;
    std::unique_ptr<PulseAudioEngine> engine = std::make_unique<PulseAudioEngine>();
};
} // namespace

TEST_F(PulseAudioEngineTest, withoutAServerBuffersCompleteUnheard)
{
    ASSERT_TRUE(engine->start());
    std::atomic_int completed = 0;
    for (int i = 0; i < 10; ++i)
        engine->schedule(silence(480), [&completed] { ++completed; });
    engine->play();
    EXPECT_TRUE(comesTrueWithoutMain([&] { return completed == 10; }));
    EXPECT_EQ(engine->framesPlayed(), 0U);
    engine->stop();
    EXPECT_EQ(completed, 10) << "each of them once";
}

TEST_F(PulseAudioEngineTest, startAndStop)
{
    EXPECT_TRUE(engine->start());
    EXPECT_TRUE(engine->start()) << "a second start changes nothing";
    engine->play();
    engine->pause();
    engine->stop();
    engine->stop();
    EXPECT_FALSE(engine->start()) << "stopped for good";
}

TEST_F(PulseAudioEngineTest, everythingElseBeforeStartAndAfterStop)
{
    for (int round = 0; round < 2; ++round) {
        engine->play();
        engine->schedule(silence(10), [] {});
        engine->pause();
        EXPECT_EQ(engine->framesPlayed(), 0U);
        engine->start();
        engine->stop();
    }
}

TEST_F(PulseAudioEngineTest, stopBeforeStart)
{
    engine->stop();
    EXPECT_FALSE(engine->start());
}

TEST_F(PulseAudioEngineTest, droppedEngineStopsByItself)
{
    ASSERT_TRUE(engine->start());
    engine->schedule(silence(10), [] {});
    engine.reset();
}

TEST_F(PulseAudioEngineTest, stopWhileOtherThreadsUseTheEngine)
{
    for (int round = 0; round < 20; ++round) {
        auto subject = std::make_shared<PulseAudioEngine>();
        std::atomic_bool done = false;
        std::thread player([&] {
            subject->start();
            while (!done) {
                subject->schedule(silence(48), [] {});
                subject->play();
                subject->pause();
            }
        });
        std::thread looker([&] {
            while (!done)
                subject->framesPlayed();
        });
        for (int i = 0; i < round * 20; ++i)
            std::this_thread::yield();
        subject->stop();
        done = true;
        player.join();
        looker.join();
    }
}

namespace
{
/// A sound server of the test's own that plays into nothing.
class PulseAudioServerTest : public PulseAudioEngineTest
{
protected:
    void SetUp() override
    {
        PulseAudioEngineTest::SetUp();
        if (QStandardPaths::findExecutable(QStringLiteral("pulseaudio")).isEmpty())
            GTEST_SKIP() << "no sound server is installed";
        startServer();
    }
    void TearDown() override
    {
        engine.reset();
        endServer();
        PulseAudioEngineTest::TearDown();
    }
    void endServer()
    {
        if (!server)
            return;
        server->terminate();
        EXPECT_TRUE(comesTrueWithoutMain([this] { return !server->isRunning(); }));
        server.reset();
    }
    void startServer()
    {
        const auto socket = folder.filePath(QStringLiteral("socket"));
        QFile::remove(socket);
        qputenv("PULSE_SERVER", "unix:" + socket.toUtf8());
        ChildCommand command{
            .program = QStandardPaths::findExecutable(QStringLiteral("pulseaudio")),
            .arguments
            = {QStringLiteral("-n"), QStringLiteral("--daemonize=no"), QStringLiteral("--use-pid-file=no"),
               QStringLiteral("--exit-idle-time=-1"), QStringLiteral("--load=module-null-sink rate=48000"),
               QStringLiteral("--load=module-native-protocol-unix auth-anonymous=1 socket=") + socket}};
        command.output = ChildCommand::Output::null;
        // Not by Qt: its way to start a process leaves the thread sanitizer blind for the thread that did it.
        server = PosixChildProcesses().start(command, {});
        // The socket is there a moment before somebody listens.
        ASSERT_TRUE(comesTrue([&] {
            QLocalSocket probe;
            probe.connectToServer(socket);
            return probe.waitForConnected(1000);
        }));
    }
    void playOneSecond()
    {
        std::atomic_int completed = 0;
        for (int i = 0; i < 10; ++i)
            engine->schedule(silence(4800), [&completed] { ++completed; });
        engine->play();
        EXPECT_TRUE(comesTrueWithoutMain([&] { return completed == 10; }))
            << completed << " of 10 after " << engine->framesPlayed() << " frames";
    }

    std::shared_ptr<RunningChild> server;
};
} // namespace

TEST_F(PulseAudioServerTest, buffersCompleteOnceTheyWereHeard)
{
    ASSERT_TRUE(engine->start());
    playOneSecond();
    EXPECT_EQ(engine->framesPlayed(), 48000U);
}

TEST_F(PulseAudioServerTest, nothingIsHeardBeforePlay)
{
    ASSERT_TRUE(engine->start());
    std::atomic_bool completed = false;
    engine->schedule(silence(480), [&completed] { completed = true; });
    // Once the server plays the stream of another engine to its end, ours has had its time.
    PulseAudioEngine other;
    ASSERT_TRUE(other.start());
    std::atomic_bool otherCompleted = false;
    other.schedule(silence(4800), [&otherCompleted] { otherCompleted = true; });
    other.play();
    ASSERT_TRUE(comesTrueWithoutMain([&] { return otherCompleted.load(); }));
    EXPECT_FALSE(completed);
    engine->play();
    EXPECT_TRUE(comesTrueWithoutMain([&] { return completed.load(); }));
}

TEST_F(PulseAudioServerTest, serverThatGoesCostsSoundAndOneThatComesBackGivesIt)
{
    ASSERT_TRUE(engine->start());
    playOneSecond();
    const auto played = engine->framesPlayed();
    endServer();
    playOneSecond();
    ASSERT_NO_FATAL_FAILURE(startServer());
    // The connection is tried again with the packets that come, at most every two seconds.
    EXPECT_TRUE(comesTrueWithoutMain([&] {
        engine->schedule(silence(48), [] {});
        return engine->framesPlayed() > played;
    }));
    // Nothing that was scheduled while the connection came about is left behind.
    playOneSecond();
}

TEST_F(PulseAudioServerTest, stopWhilePlaying)
{
    ASSERT_TRUE(engine->start());
    std::atomic_int completed = 0;
    for (int i = 0; i < 100; ++i)
        engine->schedule(silence(48000), [&completed] { ++completed; });
    engine->play();
    ASSERT_TRUE(comesTrueWithoutMain([&] { return engine->framesPlayed() > 0 || completed > 0; }));
    engine->stop();
    EXPECT_LT(completed, 100) << "what is queued is discarded";
}
