#include "platform/posix/PosixChildProcesses.h"

#include "platform/Conditions.h"
#include "platform/Semaphore.h"

#include <QTemporaryDir>

#include <fcntl.h>
#include <sys/wait.h>

#include <atomic>
#include <csignal>
#include <mutex>
#include <thread>

#include <gtest/gtest.h>

using namespace quillnest;

namespace
{
ChildCommand shell(const QString &script, const QStringList &arguments = {})
{
    return {
        .program = QStringLiteral("/bin/sh"),
        .arguments = QStringList{QStringLiteral("-c"), script, QStringLiteral("sh")} + arguments};
}

/// Collects what a started child reports.
struct Report {
    Semaphore ended;
    QByteArray output;
    int status = -1;
    int exits = 0;
    bool outputAfterExit = false;
    std::mutex lock;

    ChildProcesses::Handlers handlers()
    {
        return {
            [this](const QByteArray &chunk) {
                const std::scoped_lock guard(lock);
                EXPECT_FALSE(chunk.isEmpty());
                outputAfterExit = outputAfterExit || exits > 0;
                output += chunk;
            },
            [this](int value) {
                {
                    const std::scoped_lock guard(lock);
                    status = value;
                    ++exits;
                }
                ended.release();
            }};
    }
    bool waitForEnd() { return ended.tryAcquire(1); }
    QByteArray soFar()
    {
        const std::scoped_lock guard(lock);
        return output;
    }
};

bool isGone(qint64 pid)
{
    return ::kill(static_cast<pid_t>(pid), 0) != 0;
}

/// What this process holds, and a look whether it holds no more later.
class Before
{
public:
    void expectAgain() const
    {
        EXPECT_TRUE(comesTrueWithoutMain([this] { return ownThreads() <= m_threads; })) << ownThreads() << " threads";
        EXPECT_LE(openStreams(), m_streams);
        EXPECT_TRUE(comesTrueWithoutMain([this] { return descriptors() <= m_descriptors; }))
            << descriptors() << " descriptors, " << m_descriptors << " before";
        EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a child was not reaped";
        EXPECT_EQ(errno, ECHILD);
    }

private:
    static qsizetype descriptors()
    {
        const QDir folder(QStringLiteral("/proc/self/fd"));
        return folder.entryList(QDir::Files | QDir::System | QDir::NoDotAndDotDot).size();
    }

    const int m_streams = openStreams();
    const int m_threads = ownThreads();
    const qsizetype m_descriptors = descriptors();
};

class PosixChildProcessesTest : public ::testing::Test
{
protected:
    PosixChildProcesses processes;
};
} // namespace

TEST_F(PosixChildProcessesTest, outputIsCapturedAndErrorsAreNot)
{
    const auto result = processes.run(shell(QStringLiteral("echo out; echo err >&2; echo more")));
    EXPECT_EQ(result.output, "out\nmore\n");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.launchError, std::nullopt);
}

TEST_F(PosixChildProcessesTest, mergedErrorsStandWhereTheyWereWritten)
{
    auto command = shell(QStringLiteral("echo one; echo two >&2; echo three"));
    command.errors = ChildCommand::Errors::merged;
    EXPECT_EQ(processes.run(command).output, "one\ntwo\nthree\n");
}

TEST_F(PosixChildProcessesTest, outputThatNobodyWantsIsDropped)
{
    auto command = shell(QStringLiteral("echo out; exit 3"));
    command.output = ChildCommand::Output::null;
    const auto result = processes.run(command);
    EXPECT_EQ(result.output, QByteArray());
    EXPECT_EQ(result.status, 3);
}

TEST_F(PosixChildProcessesTest, muchOutputIsWhole)
{
    const auto result = processes.run(shell(QStringLiteral("head -c 3000000 /dev/zero; printf end")));
    EXPECT_EQ(result.output.size(), 3000003);
    EXPECT_TRUE(result.output.endsWith("end"));
}

TEST_F(PosixChildProcessesTest, outputIntoADescriptorThatStaysOpen)
{
    const QTemporaryDir folder;
    const auto path = folder.filePath(QStringLiteral("out"));
    const int descriptor = ::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_GE(descriptor, 0);
    auto command = shell(QStringLiteral("echo file; echo err >&2"));
    command.output = ChildCommand::Output::descriptor;
    command.descriptor = descriptor;
    EXPECT_EQ(processes.run(command).output, QByteArray());
    command.errors = ChildCommand::Errors::merged;
    processes.run(command);
    EXPECT_EQ(::write(descriptor, "mine", 4), 4);
    ::close(descriptor);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), "file\nfile\nerr\nmine");
}

TEST_F(PosixChildProcessesTest, exitStatusAndSignals)
{
    EXPECT_EQ(processes.run(shell(QStringLiteral("exit 42"))).status, 42);
    EXPECT_EQ(processes.run(shell(QStringLiteral("exit 255"))).status, 255);
    EXPECT_EQ(processes.run(shell(QStringLiteral("kill -KILL $$"))).status, 128 + SIGKILL);
    EXPECT_EQ(processes.run(shell(QStringLiteral("kill -TERM $$"))).status, 128 + SIGTERM);
}

TEST_F(PosixChildProcessesTest, missingProgram)
{
    const ChildCommand command{.program = QStringLiteral("/no/such/program"), .arguments = {}};
    const auto result = processes.run(command);
    ASSERT_TRUE(result.launchError);
    EXPECT_FALSE(result.launchError->isEmpty());
    EXPECT_EQ(result.status, -1);
    try {
        processes.start(command);
        FAIL() << "no LaunchError";
    } catch (const LaunchError &error) {
        EXPECT_EQ(error.description(), *result.launchError);
        EXPECT_EQ(QString::fromUtf8(error.what()), error.description());
    }
}

TEST_F(PosixChildProcessesTest, programThatMayNotBeRun)
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("plain")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    EXPECT_TRUE(processes.run({.program = file.fileName(), .arguments = {}}).launchError);
}

TEST_F(PosixChildProcessesTest, argumentsArriveAsTheyAre)
{
    const QStringList arguments{QStringLiteral("two words"),         QStringLiteral("it's \"quoted\""),
                                QStringLiteral("line\nbreak"),       QString(),
                                QStringLiteral("$HOME `id` \\ * ?"), QStringLiteral("größe \U0001F44D"),
                                QStringLiteral("--flag=a b")};
    const auto result = processes.run(shell(QStringLiteral("printf '%s|' \"$@\""), arguments));
    EXPECT_EQ(QString::fromUtf8(result.output), arguments.join(QLatin1Char('|')) + QLatin1Char('|'));
}

TEST_F(PosixChildProcessesTest, environmentIsOursWithItsChanges)
{
    ::setenv("QUILLNEST_TEST_KEPT", "kept", 1);
    ::setenv("QUILLNEST_TEST_CHANGED", "before", 1);
    auto command = shell(QStringLiteral(
        "echo \"$QUILLNEST_TEST_KEPT,$QUILLNEST_TEST_CHANGED,$QUILLNEST_TEST_NEW,${QUILLNEST_TEST_EMPTY-unset}\";"
        "env | grep -c QUILLNEST_TEST_CHANGED"));
    command.environment
        = {{QStringLiteral("QUILLNEST_TEST_CHANGED"), QStringLiteral("after=1")},
           {QStringLiteral("QUILLNEST_TEST_NEW"), QStringLiteral("new value")},
           {QStringLiteral("QUILLNEST_TEST_EMPTY"), QString()}};
    EXPECT_EQ(processes.run(command).output, "kept,after=1,new value,\n1\n");
    EXPECT_STREQ(::getenv("QUILLNEST_TEST_CHANGED"), "before");
    ::unsetenv("QUILLNEST_TEST_KEPT");
    ::unsetenv("QUILLNEST_TEST_CHANGED");
}

TEST_F(PosixChildProcessesTest, inputIsEmpty)
{
    EXPECT_EQ(processes.run(shell(QStringLiteral("cat; echo end"))).output, "end\n");
}

TEST_F(PosixChildProcessesTest, childrenInheritNoOtherDescriptor)
{
    // As a library may open it; a shell has none of its own up there.
    constexpr int stray = 77;
    ASSERT_EQ(::dup2(STDERR_FILENO, stray), stray);
    const auto command = shell(QStringLiteral("[ -e /proc/$$/fd/77 ] && echo open || echo closed"));
    EXPECT_EQ(processes.run(command).output, "closed\n");
    Report report;
    processes.start(command, report.handlers());
    ASSERT_TRUE(report.waitForEnd());
    EXPECT_EQ(report.output, "closed\n");
    ::close(stray);
}

TEST_F(PosixChildProcessesTest, childrenStartWithTheUsualSignals)
{
    struct Restore {
        sighandler_t pipe = ::signal(SIGPIPE, SIG_IGN);
        sigset_t mask{};
        ~Restore()
        {
            ::signal(SIGPIPE, pipe);
            ::pthread_sigmask(SIG_SETMASK, &mask, nullptr);
        }
    } restore;
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &blocked, &restore.mask);
    const auto result = processes.run(shell(QStringLiteral("grep -E '^Sig(Blk|Ign)' /proc/$$/status | tr -d '\\t '")));
    QMap<QByteArray, quint64> sets;
    for (const auto &line : result.output.split('\n').mid(0, 2))
        sets[line.left(6)] = line.mid(7).toULongLong(nullptr, 16);
    ASSERT_EQ(sets.size(), 2);
    EXPECT_EQ(sets["SigBlk"] & (1ULL << (SIGTERM - 1)), 0U);
    EXPECT_EQ(sets["SigIgn"] & (1ULL << (SIGPIPE - 1)), 0U);
}

TEST_F(PosixChildProcessesTest, childrenAreOutOfReachOfTheTerminalsKeys)
{
    const auto result = processes.run(shell(QStringLiteral("cut -d' ' -f1,5,6 /proc/$$/stat")));
    const auto numbers = result.output.simplified().split(' ');
    ASSERT_EQ(numbers.size(), 3);
    EXPECT_EQ(numbers[1], numbers[0]) << "its own group";
    EXPECT_EQ(numbers[2], numbers[0]) << "its own session";
}

// Started children

TEST_F(PosixChildProcessesTest, startedChildReportsItsOutputAndThenItsEnd)
{
    Report report;
    auto command = shell(QStringLiteral("echo one; echo two >&2; head -c 300000 /dev/zero | tr '\\0' x; exit 9"));
    command.errors = ChildCommand::Errors::merged;
    const auto child = processes.start(command, report.handlers());
    EXPECT_GT(child->processId(), 0);
    ASSERT_TRUE(report.waitForEnd());
    EXPECT_EQ(report.output, "one\ntwo\n" + QByteArray(300000, 'x'));
    EXPECT_EQ(report.status, 9);
    EXPECT_EQ(report.exits, 1);
    EXPECT_FALSE(report.outputAfterExit);
    EXPECT_FALSE(child->isRunning());
}

TEST_F(PosixChildProcessesTest, outputArrivesWhileTheChildRuns)
{
    Report report;
    const QTemporaryDir folder;
    const auto gate = folder.filePath(QStringLiteral("gate"));
    const auto child = processes.start(
        shell(QStringLiteral("echo ready; while [ ! -e \"$1\" ]; do sleep 0.01; done; echo done"), {gate}),
        report.handlers());
    ASSERT_TRUE(comesTrueWithoutMain([&] { return report.soFar() == "ready\n"; }));
    EXPECT_TRUE(child->isRunning());
    QFile file(gate);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_TRUE(report.waitForEnd());
    EXPECT_EQ(report.output, "ready\ndone\n");
}

TEST_F(PosixChildProcessesTest, terminateEndsAChildAndDoesNothingLater)
{
    Report report;
    const auto child = processes.start(shell(QStringLiteral("exec sleep 1000")), report.handlers());
    EXPECT_TRUE(child->isRunning());
    child->terminate();
    ASSERT_TRUE(report.waitForEnd());
    EXPECT_EQ(report.status, 128 + SIGTERM);
    EXPECT_FALSE(child->isRunning());
    EXPECT_TRUE(isGone(child->processId())) << "not reaped";
    child->terminate();
}

TEST_F(PosixChildProcessesTest, whatIsRunToItsEndCanBeEndedByAnotherThread)
{
    std::thread other;
    const auto result = processes.runEndable(
        shell(QStringLiteral("echo begun; exec sleep 1000")),
        [&other](const std::shared_ptr<RunningChild> &child) { other = std::thread([child] { child->terminate(); }); });
    other.join();
    EXPECT_EQ(result.launchError, std::nullopt);
    EXPECT_EQ(result.status, 128 + SIGTERM);
}

TEST_F(PosixChildProcessesTest, terminateFromSeveralThreads)
{
    Report report;
    const auto child = processes.start(shell(QStringLiteral("exec sleep 1000")), report.handlers());
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([child] {
            while (child->isRunning())
                child->terminate();
        });
    }
    for (auto &thread : threads)
        thread.join();
    ASSERT_TRUE(report.waitForEnd());
    EXPECT_EQ(report.exits, 1);
}

TEST_F(PosixChildProcessesTest, droppedChildRunsOnAndIsReaped)
{
    Report report;
    const QTemporaryDir folder;
    const auto gate = folder.filePath(QStringLiteral("gate"));
    auto child = processes.start(
        shell(QStringLiteral("while [ ! -e \"$1\" ]; do sleep 0.01; done; exit 5"), {gate}), report.handlers());
    const auto pid = child->processId();
    child.reset();
    EXPECT_FALSE(isGone(pid));
    QFile file(gate);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_TRUE(report.waitForEnd());
    EXPECT_EQ(report.status, 5);
    EXPECT_TRUE(isGone(pid));
}

TEST_F(PosixChildProcessesTest, grandchildThatKeepsThePipeOpenDoesNotHoldUpTheEnd)
{
    Report report;
    const auto child = processes.start(shell(QStringLiteral("sleep 1000 & echo $!; exit 4")), report.handlers());
    ASSERT_TRUE(report.waitForEnd());
    EXPECT_EQ(report.status, 4);
    const auto grandchild = report.output.trimmed().toInt();
    ASSERT_GT(grandchild, 0);
    EXPECT_FALSE(isGone(grandchild));
    ::kill(grandchild, SIGKILL);
}

TEST_F(PosixChildProcessesTest, grandchildThatWritesOnAndOnDoesNotHoldUpTheEnd)
{
    Report report;
    // The grandchild's id comes by a file: its output drowns everything else.
    const QTemporaryDir folder;
    const auto path = folder.filePath(QStringLiteral("pid"));
    const auto child
        = processes.start(shell(QStringLiteral("yes & echo $! >\"$1\"; exit 6"), {path}), report.handlers());
    const bool ended = report.waitForEnd();
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    ::kill(file.readAll().trimmed().toInt(), SIGKILL);
    // The report must not go before its child.
    ASSERT_TRUE(ended || report.waitForEnd());
    EXPECT_TRUE(ended);
    EXPECT_EQ(report.status, 6);
}

TEST_F(PosixChildProcessesTest, startedChildWithoutOutput)
{
    Report report;
    auto command = shell(QStringLiteral("exit 8"));
    command.output = ChildCommand::Output::null;
    const auto child = processes.start(command, report.handlers());
    ASSERT_TRUE(report.waitForEnd());
    EXPECT_EQ(report.status, 8);
    EXPECT_TRUE(report.output.isEmpty());
}

TEST_F(PosixChildProcessesTest, hundredsOfChildrenLeaveNothingBehind)
{
    const Before before;
    Semaphore ended;
    constexpr int count = 150;
    for (int i = 0; i < count; ++i) {
        EXPECT_EQ(processes.run(shell(QStringLiteral("exit 0"))).status, 0);
        EXPECT_TRUE(processes.run({.program = QStringLiteral("/no/such/program"), .arguments = {}}).launchError);
        processes.start(shell(QStringLiteral("echo x")), {{}, [&ended](int) { ended.release(); }});
        EXPECT_THROW(
            processes.start(ChildCommand{.program = QStringLiteral("/no/such/program"), .arguments = {}}), LaunchError);
    }
    ASSERT_TRUE(ended.tryAcquire(count));
    before.expectAgain();
}

TEST_F(PosixChildProcessesTest, tenThousandChildrenLeaveNothingBehind)
{
    const ChildCommand echo{.program = QStringLiteral("/bin/echo"), .arguments = {QStringLiteral("x")}};
    const Before before;
    Semaphore ended;
    constexpr int rounds = 100;
    constexpr int together = 50;
    for (int round = 0; round < rounds; ++round) {
        for (int i = 0; i < together; ++i)
            processes.start(echo, {{}, [&ended](int) { ended.release(); }});
        for (int i = 0; i < together; ++i)
            ASSERT_EQ(processes.run(echo).output, "x\n");
        ASSERT_TRUE(ended.tryAcquire(together));
    }
    before.expectAgain();
}

TEST_F(PosixChildProcessesTest, severalThreadsAtOnce)
{
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([this, thread] {
            for (int i = 0; i < 20; ++i) {
                const auto text = QStringLiteral("%1-%2").arg(thread).arg(i);
                EXPECT_EQ(processes.run(shell(QStringLiteral("printf %s \"$1\""), {text})).output, text.toUtf8());
            }
        });
    }
    for (auto &thread : threads)
        thread.join();
}

TEST_F(PosixChildProcessesTest, aChildThatLastsLongerThanItsLimitIsEnded)
{
    auto command = shell(QStringLiteral("trap '' TERM; echo said; while :; do sleep 0.1; done"));
    command.limit = std::chrono::milliseconds(200);
    const auto result = processes.run(command);
    EXPECT_TRUE(result.tookTooLong);
    EXPECT_EQ(result.output, "said\n");
    EXPECT_EQ(result.status, 128 + SIGKILL);

    command = shell(QStringLiteral("echo said"));
    command.limit = std::chrono::hours(1);
    EXPECT_FALSE(processes.run(command).tookTooLong);
}

TEST_F(PosixChildProcessesTest, atTheEndEveryRunIsEndedAndALaterOneToo)
{
    const auto endless = shell(QStringLiteral("while :; do sleep 0.1; done"));
    const auto staying = processes.start(endless);
    std::thread ending([&] { processes.endRunsWithin(std::chrono::milliseconds(100)); });
    EXPECT_TRUE(processes.run(endless).tookTooLong);
    // Nothing more begins.
    const QTemporaryDir folder;
    const auto touched = folder.filePath(QStringLiteral("touched"));
    EXPECT_TRUE(processes.run(shell(QStringLiteral("touch \"$1\""), {touched})).launchError);
    EXPECT_FALSE(QFile::exists(touched));
    ending.join();
    EXPECT_TRUE(staying->isRunning()) << "what was started goes on";
    staying->kill();
}

TEST_F(PosixChildProcessesTest, theEndWaitsForTheRunsAndEndsThem)
{
    processes.waitForRuns(); // at once, while nobody has asked for the end
    Semaphore begun;
    std::atomic_bool isOver = false;
    std::thread running([&] {
        const auto result = processes.runEndable(
            shell(QStringLiteral("while :; do sleep 0.1; done")),
            [&](const std::shared_ptr<RunningChild> &) { begun.release(); });
        isOver = result.tookTooLong;
    });
    ASSERT_TRUE(begun.tryAcquire(1));
    processes.endRunsWithin(std::chrono::milliseconds(50));
    processes.waitForRuns();
    running.join();
    EXPECT_TRUE(isOver);
}

TEST_F(PosixChildProcessesTest, afterTheLastRunTheEndLetsNoOtherBegin)
{
    processes.endRunsWithin(std::chrono::hours(1));
    EXPECT_FALSE(processes.run(shell(QStringLiteral("true"))).launchError);
    processes.waitForRuns();
    EXPECT_TRUE(processes.run(shell(QStringLiteral("true"))).launchError);
}

TEST_F(PosixChildProcessesTest, aGrandchildThatKeepsTheOutputOpenHoldsNoRunUp)
{
    const auto result = processes.run(shell(QStringLiteral("sleep 600 & echo $!")));
    const auto grandchild = result.output.trimmed().toInt();
    EXPECT_GT(grandchild, 0);
    ::kill(grandchild, SIGKILL);
}
