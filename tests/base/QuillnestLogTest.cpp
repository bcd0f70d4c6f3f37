#include "base/QuillnestLog.h"
#include "fakes/FakePlatform.h"

#include <gtest/gtest.h>

#include <thread>

using namespace quillnest;

namespace
{
class QuillnestLogTest : public ::testing::Test
{
protected:
    QuillnestLog open(bool truncate = false) const
    {
        return QuillnestLog(fakes.clock, fakes.platform.folders.logs, QStringLiteral("quillnest.log"), truncate);
    }
    QByteArray content() const { return fakes.readFile(QStringLiteral("Logs/Quillnest/quillnest.log")).value_or("?"); }

    FakePlatform fakes = fakePlatform();
};
} // namespace

TEST_F(QuillnestLogTest, aLineHasATimeInUtcWithMilliseconds)
{
    fakes.clock->setWallTime(QDateTime(QDate(2026, 11, 15), QTime(18, 33, 48, 123), Qt::OffsetFromUTC, 3600));
    open().write(QStringLiteral("hello = wörld"));
    EXPECT_EQ(content(), "2026-11-15T17:33:48.123Z hello = wörld\n");
}

TEST_F(QuillnestLogTest, everyNonEmptyLineOfAMessageIsALineWithTheSameTime)
{
    open().write(QStringLiteral("\none\n\ntwo\n"));
    EXPECT_EQ(content(), "2026-01-02T03:04:05.678Z one\n2026-01-02T03:04:05.678Z two\n");
}

TEST_F(QuillnestLogTest, aTrailingLineFeedMakesNoSecondLine)
{
    const auto log = std::make_unique<QuillnestLog>(
        fakes.clock, fakes.platform.folders.logs, QStringLiteral("quillnest.log"), false);
    log->write(QStringLiteral("one\n"));
    EXPECT_EQ(content().count('\n'), 1);
    log->write(QString());
    log->write(QStringLiteral("\n\n"));
    EXPECT_EQ(content().count('\n'), 1);
}

TEST_F(QuillnestLogTest, aFileIsGoneOnWithOrStartedAnew)
{
    open().write(QStringLiteral("one"));
    open().write(QStringLiteral("two"));
    EXPECT_EQ(open().tail(9), QStringLiteral("one\ntwo"));
    open(true);
    EXPECT_EQ(content(), QByteArray());
}

TEST_F(QuillnestLogTest, twoInstancesOfOneNameOverwriteNothing)
{
    auto first = open();
    auto second = open();
    first.write(QStringLiteral("a"));
    second.write(QStringLiteral("b"));
    first.write(QStringLiteral("c"));
    EXPECT_EQ(first.tail(9), QStringLiteral("a\nb\nc"));
}

TEST_F(QuillnestLogTest, theTailIsTheLastLinesInFileOrderWithoutTimes)
{
    auto log = open();
    log.write(QStringLiteral("one\ntwo words\nthree"));
    EXPECT_EQ(log.tail(6), QStringLiteral("one\ntwo words\nthree"));
    EXPECT_EQ(log.tail(2), QStringLiteral("two words\nthree"));
    EXPECT_EQ(log.tail(0), QString());
    EXPECT_DEATH(log.tail(-1), "negative count");
}

TEST_F(QuillnestLogTest, theTailKeepsLinesWithoutATextWhole)
{
    fakes.writeFile(QStringLiteral("Logs/Quillnest/quillnest.log"), "bare\n\ntime \ntime text with spaces\n");
    EXPECT_EQ(open().tail(9), QStringLiteral("bare\ntime \ntext with spaces"));
}

TEST_F(QuillnestLogTest, theTailOfAMissingFileIsEmpty)
{
    auto log = open();
    QFile::remove(log.path());
    EXPECT_EQ(log.tail(6), QString());
}

TEST_F(QuillnestLogTest, aLogThatCannotBeOpenedIsSilent)
{
    fakes.writeFile(QStringLiteral("Logs"), "in the way");
    auto log = open();
    log.write(QStringLiteral("lost"));
    EXPECT_EQ(log.tail(6), QString());
}

TEST_F(QuillnestLogTest, threadsDoNotMixTheirLines)
{
    auto log = open();
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&log] {
            for (int line = 0; line < 100; ++line)
                log.write(QStringLiteral("first half second half\nanother"));
        });
    }
    for (auto &thread : threads)
        thread.join();
    const auto lines = log.tail(1000).split(QLatin1Char('\n'));
    EXPECT_EQ(lines.size(), 800);
    for (qsizetype i = 0; i < lines.size(); ++i)
        EXPECT_EQ(lines[i], i % 2 == 0 ? QStringLiteral("first half second half") : QStringLiteral("another"));
}

TEST_F(QuillnestLogTest, whatATerminalWouldObeyBecomesBlank)
{
    open().write(QStringLiteral("a\tb\u001b[31mc\rd\u009be\u202Ef\u2028g\u007fh é 文"));
    EXPECT_EQ(content(), "2026-01-02T03:04:05.678Z a b [31mc d e f g h é 文\n");
}

TEST_F(QuillnestLogTest, theTailOfAFileThatIsNoTextIsEmpty)
{
    auto log = open();
    log.write(QStringLiteral("good"));
    QFile file(fakes.platform.folders.logs + QStringLiteral("/quillnest.log"));
    ASSERT_TRUE(file.open(QIODevice::Append));
    file.write("2026 \xFF\n");
    file.close();
    EXPECT_EQ(log.tail(5), QString());
}

TEST_F(QuillnestLogTest, nobodyElseMayReadIt)
{
    open().write(QStringLiteral("secret"));
    const auto permissions = QFile::permissions(fakes.platform.folders.logs + QStringLiteral("/quillnest.log"));
    EXPECT_FALSE(permissions & (QFileDevice::ReadGroup | QFileDevice::ReadOther));
}
