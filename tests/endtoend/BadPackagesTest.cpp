#include "endtoend/EndToEnd.h"

#include <QFile>

namespace quillnest::driver
{

class BadPackagesTest : public EndToEnd
{
protected:
    QString path(const QString &name) const { return desktop.home() + QLatin1Char('/') + name; }

    QString write(const QString &name, const QByteArray &bytes) const
    {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        return file.fileName();
    }

    static QByteArray sampleBytes()
    {
        QFile file(ProgramUnderTest::sample(QStringLiteral("tide")));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }

    /// Opens the entry and gives the failure that the user is told.
    QString failureOf(const QString &query)
    {
        program.post(QStringLiteral("open:") + query);
        QString status;
        waitFor(QStringLiteral("the launch of %1 to fail").arg(query), 60, [this, &status] {
            status = program.statusMessage();
            return status.startsWith(QStringLiteral("Android launch failed: "));
        });
        EXPECT_TRUE(windows(program.state()).isEmpty());
        EXPECT_TRUE(program.state().value(QStringLiteral("launchingAppID")).isNull());
        return status.sliced(QStringLiteral("Android launch failed: ").size());
    }

    /// After a failure everything else goes on as before.
    void expectGoodAppOpens()
    {
        openTide();
        EXPECT_EQ(
            program.window().value(QStringLiteral("package")).toString(), QStringLiteral("app.quillnest.samples.tide"));
    }
};

TEST_F(BadPackagesTest, aFileThatIsNoApkIsRefusedInAdbsWords)
{
    program.start();
    program.addApps({write(QStringLiteral("letter.apk"), "Dear reader, this is no package.")});
    EXPECT_TRUE(failureOf(QStringLiteral("letter")).contains(QStringLiteral("INSTALL_PARSE_FAILED")));
    expectGoodAppOpens();
}

TEST_F(BadPackagesTest, anApkCutInHalfIsRefused)
{
    const auto bytes = sampleBytes();
    program.start();
    program.addApps({write(QStringLiteral("half.apk"), bytes.first(bytes.size() / 2))});
    EXPECT_TRUE(failureOf(QStringLiteral("half")).contains(QStringLiteral("INSTALL_PARSE_FAILED")));
    expectGoodAppOpens();
}

TEST_F(BadPackagesTest, anEmptyApkIsRefused)
{
    program.start();
    program.addApps({write(QStringLiteral("nothing.apk"), {})});
    EXPECT_FALSE(failureOf(QStringLiteral("nothing")).isEmpty());
    expectGoodAppOpens();
}

TEST_F(BadPackagesTest, anApkThatHasVanishedIsRefusedAndStaysInTheLibrary)
{
    program.start();
    const auto file = write(QStringLiteral("vanishing.apk"), sampleBytes());
    program.addApps({file});
    QFile::remove(file);
    program.post(QStringLiteral("open:Tide"));
    QString status;
    waitFor(QStringLiteral("the launch to fail"), 60, [this, &status] {
        status = program.statusMessage();
        return status.startsWith(QStringLiteral("Android launch failed: "));
    });
    EXPECT_TRUE(status.contains(file)) << qPrintable(status);
    EXPECT_EQ(program.state().value(QStringLiteral("apps")).toArray().size(), 1);

    // The file is back: the next click finds it.
    write(QStringLiteral("vanishing.apk"), sampleBytes());
    program.post(QStringLiteral("open:Tide"));
    program.waitForPicture(60);
}

TEST_F(BadPackagesTest, aFileOfAnotherKindIsSkippedWithASentence)
{
    program.start();
    program.post(QStringLiteral("add:/somewhere/holiday.png"));
    waitForStatus(QStringLiteral("Skipped holiday.png: choose an APK or IPA"));
    EXPECT_TRUE(program.state().value(QStringLiteral("apps")).toArray().isEmpty());
}

} // namespace quillnest::driver
