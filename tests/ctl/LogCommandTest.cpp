#include "ctl/Ctl.h"

#include <QDir>
#include <QFile>
#include <QThread>

#include <csignal>

namespace quillnest
{

namespace
{

class LogCommandTest : public Ctl
{
protected:
    struct EndOfProcess {
        void operator()(QProcess *process) const
        {
            process->kill();
            process->waitForFinished();
            delete process;
        }
    };
    using Following = std::unique_ptr<QProcess, EndOfProcess>;

    Following follow(const QStringList &options = {}) const
    {
        return Following(start(QStringList{QStringLiteral("log"), QStringLiteral("-f")} + options).release());
    }

    void append(const QByteArray &text) const { write(logFile(), text, QIODevice::Append); }

    /// Reads on until all that was printed is `text`.
    ::testing::AssertionResult prints(QProcess &process, const QByteArray &text)
    {
        auto &printed = m_printed[&process];
        const bool good = comesTrue([&process, &printed, &text] {
            printed += process.readAllStandardOutput();
            return printed == text || !text.startsWith(printed);
        });
        if (good && printed == text)
            return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure() << "it printed: " << printed.constData();
    }

    static int ended(QProcess &process)
    {
        EXPECT_TRUE(comesTrue([&process] { return process.state() == QProcess::NotRunning; }));
        return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    }

    QByteArray switches(const QProcess &process) const
    {
        QByteArray result;
        for (const auto &line : content(QStringLiteral("/proc/%1/status").arg(process.processId())).split('\n')) {
            if (line.contains("voluntary_ctxt_switches"))
                result += line + '\n';
        }
        return result;
    }

private:
    std::map<QProcess *, QByteArray> m_printed;
};

TEST_F(LogCommandTest, printsTheLogAndEnds)
{
    append("one\ntwo\n");
    const auto result = run({QStringLiteral("log")});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "one\ntwo\n");
}

TEST_F(LogCommandTest, aMissingLogIsAFailureThatTellsWhereItWouldBe)
{
    const auto result = run({QStringLiteral("log")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "quillnestctl: no log at " + logFile().toUtf8() + '\n');
}

TEST_F(LogCommandTest, printsTheLastLines)
{
    append("one\ntwo\n\nfour\n");
    const auto last
        = [this](const QStringList &options) { return run(QStringList{QStringLiteral("log")} + options).output; };
    EXPECT_EQ(last({QStringLiteral("-n"), QStringLiteral("0")}), "");
    EXPECT_EQ(last({QStringLiteral("-n"), QStringLiteral("1")}), "four\n");
    EXPECT_EQ(last({QStringLiteral("-n2")}), "\nfour\n");
    EXPECT_EQ(last({QStringLiteral("--lines"), QStringLiteral("3")}), "two\n\nfour\n");
    EXPECT_EQ(last({QStringLiteral("--lines=4")}), "one\ntwo\n\nfour\n");
    EXPECT_EQ(last({QStringLiteral("-n"), QStringLiteral("99")}), "one\ntwo\n\nfour\n");
    append("no end");
    EXPECT_EQ(last({QStringLiteral("-n"), QStringLiteral("2")}), "four\nno end");
}

TEST_F(LogCommandTest, findsTheLastLinesOfALargeLog)
{
    QByteArray text;
    for (int i = 0; i < 20'000; ++i)
        text += QByteArray::number(i) + " a line of the log\n";
    append(text);
    const auto result = run({QStringLiteral("log"), QStringLiteral("-n"), QStringLiteral("15000")});
    EXPECT_EQ(result.output.count('\n'), 15'000);
    EXPECT_TRUE(result.output.startsWith("5000 a line"));
    EXPECT_TRUE(text.endsWith(result.output));
    EXPECT_EQ(run({QStringLiteral("log")}).output, text);
}

TEST_F(LogCommandTest, followsWhatIsAdded)
{
    append("one\ntwo\n");
    const auto log = follow();
    EXPECT_TRUE(prints(*log, "one\ntwo\n"));
    append("three\n");
    EXPECT_TRUE(prints(*log, "one\ntwo\nthree\n"));
    append("fo");
    append("ur\n");
    EXPECT_TRUE(prints(*log, "one\ntwo\nthree\nfour\n"));
}

TEST_F(LogCommandTest, beginsWithTheLastLinesAndFollowsAll)
{
    append("one\ntwo\n");
    const auto log = follow({QStringLiteral("-n"), QStringLiteral("1")});
    EXPECT_TRUE(prints(*log, "two\n"));
    append("three\nfour\n");
    EXPECT_TRUE(prints(*log, "two\nthree\nfour\n"));
}

TEST_F(LogCommandTest, waitsForALogThatIsNotThereYet)
{
    const auto log = follow({QStringLiteral("-n"), QStringLiteral("0")});
    // Whenever it looks: before the folders, between them, or after.
    for (const auto &folder : {"state", "state/Quillnest", "state/Quillnest/Logs"}) {
        QThread::msleep(30);
        QDir().mkpath(path(QLatin1String(folder)));
    }
    QThread::msleep(30);
    append("one\n");
    append("two\n");
    // It may have begun when something was there already, of which it was to print nothing.
    append("three\n");
    auto printed = QByteArray();
    EXPECT_TRUE(comesTrue([&log, &printed] {
        printed += log->readAllStandardOutput();
        return printed.endsWith("three\n");
    }));
    EXPECT_EQ(log->state(), QProcess::Running);
}

TEST_F(LogCommandTest, beginsAnewWhenTheLogIsCutShort)
{
    append("a long line that goes away\n");
    const auto log = follow();
    EXPECT_TRUE(prints(*log, "a long line that goes away\n"));
    write(logFile(), "new\n", QIODevice::WriteOnly | QIODevice::Truncate);
    EXPECT_TRUE(prints(*log, "a long line that goes away\nnew\n"));
    append("more\n");
    EXPECT_TRUE(prints(*log, "a long line that goes away\nnew\nmore\n"));
}

TEST_F(LogCommandTest, goesOverToTheFileThatReplacesTheLog)
{
    append("old\n");
    const auto log = follow();
    EXPECT_TRUE(prints(*log, "old\n"));
    // Whoever wrote the old one still has it open.
    QFile old(logFile());
    ASSERT_TRUE(old.open(QIODevice::Append));
    // As long as the old one or longer: its size doesn't tell.
    const auto fresh = logFile() + QStringLiteral(".new");
    write(fresh, "a fresh file\n");
    ASSERT_EQ(::rename(QFile::encodeName(fresh).constData(), QFile::encodeName(logFile()).constData()), 0);
    EXPECT_TRUE(prints(*log, "old\na fresh file\n"));
    append("more\n");
    EXPECT_TRUE(prints(*log, "old\na fresh file\nmore\n"));
}

TEST_F(LogCommandTest, waitsForALogThatWasRemovedWithItsFolder)
{
    append("old\n");
    const auto log = follow();
    EXPECT_TRUE(prints(*log, "old\n"));
    ASSERT_TRUE(QDir(path(QStringLiteral("state"))).removeRecursively());
    append("new\n");
    EXPECT_TRUE(prints(*log, "old\nnew\n"));
    append("more\n");
    EXPECT_TRUE(prints(*log, "old\nnew\nmore\n"));
}

TEST_F(LogCommandTest, controlCEndsItWithoutAFailure)
{
    append("one\n");
    const auto log = follow();
    EXPECT_TRUE(prints(*log, "one\n"));
    ::kill(static_cast<pid_t>(log->processId()), SIGINT);
    EXPECT_EQ(ended(*log), 0);
    EXPECT_EQ(log->readAllStandardError(), "");
}

TEST_F(LogCommandTest, endsWithItsReaderThoughNothingIsWritten)
{
    append("one\n");
    const auto piped = runProgram(
        QStringLiteral("/bin/bash"),
        {QStringLiteral("-c"), QStringLiteral("\"$0\" log -f | head -n 1; echo ${PIPESTATUS[0]}"),
         QStringLiteral(QUILLNESTCTL)});
    EXPECT_EQ(piped.output, "one\n0\n");
    EXPECT_EQ(piped.errors, "");
}

TEST_F(LogCommandTest, aFullDiskEndsItWithAFailure)
{
    append("one\n");
    const auto full = runProgram(
        QStringLiteral("/bin/sh"),
        {QStringLiteral("-c"), QStringLiteral("\"$0\" log -f >/dev/full"), QStringLiteral(QUILLNESTCTL)});
    EXPECT_EQ(full.status, 1);
    EXPECT_TRUE(full.errors.startsWith("quillnestctl: can't write: ")) << full.errors.constData();
}

TEST_F(LogCommandTest, doesNotRunWhileNothingIsWritten)
{
    append("one\n");
    const auto log = follow();
    EXPECT_TRUE(prints(*log, "one\n"));
    // It has printed; soon it waits.
    QByteArray before;
    EXPECT_TRUE(comesTrue([this, &log, &before] {
        const auto now = switches(*log);
        QThread::msleep(50);
        before = switches(*log);
        return before == now;
    }));
    QThread::sleep(1);
    EXPECT_EQ(switches(*log), before);
}

} // namespace

TEST_F(LogCommandTest, aTerminalIsShownWhatItWouldObeyAndAFileGetsItAsItIs)
{
    write(logFile(), "2026 \033]0;title\007 \302\23331m \342\200\256 end\n");
    const auto plain = run({QStringLiteral("log")});
    EXPECT_EQ(plain.output, content(logFile()));
    // What script prints is what the terminal of its own was sent.
    const auto shown = runProgram(
        QStringLiteral("script"),
        {QStringLiteral("-qec"), QStringLiteral("'%1' log").arg(QStringLiteral(QUILLNESTCTL)),
         QStringLiteral("/dev/null")});
    EXPECT_EQ(shown.output, "2026 \\u001b]0;title\\u0007 \\u009b31m \\u202e end\r\n") << shown.errors.constData();
}

TEST_F(LogCommandTest, aComplaintIsForThePersonAtTheTerminalToo)
{
    const auto wrong = QStringLiteral("a\033[31mb");
    EXPECT_TRUE(run({wrong}).errors.contains(wrong.toUtf8()));
    const auto shown = runProgram(
        QStringLiteral("script"),
        {QStringLiteral("-qec"), QStringLiteral("'%1' '%2'").arg(QStringLiteral(QUILLNESTCTL), wrong),
         QStringLiteral("/dev/null")});
    EXPECT_TRUE(shown.output.contains("unknown command \"a\\u001b[31mb\"")) << shown.output.constData();
}

} // namespace quillnest
