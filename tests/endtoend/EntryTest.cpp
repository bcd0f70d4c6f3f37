#include "endtoend/EndToEnd.h"

#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QRegularExpression>

namespace quillnest::driver
{

namespace
{

/// What a program's own end gave.
struct Ended {
    int status = -1;
    QByteArray output;
    QByteArray errors;
    double seconds = 0;
};

} // namespace

/// The roads into the program that aren't its own windows: flags, the login item, a second instance.
class EntryTest : public EndToEnd
{
protected:
    Ended runToItsEnd(const QStringList &arguments, double seconds) const
    {
        QElapsedTimer timer;
        timer.start();
        const auto process = desktop.start(ProgramUnderTest::program(QStringLiteral("quillnest")), arguments);
        if (!process->waitForFinished(static_cast<int>(seconds * 1000)))
            throw DriverError(QStringLiteral("the program does not end"));
        return {
            process->exitCode(), process->readAllStandardOutput(), process->readAllStandardError(),
            static_cast<double>(timer.elapsed()) / 1000};
    }

    /// Frame and all, in pixels; empty when there is no such window.
    QRect windowFrame(const QString &name) const
    {
        const auto text = desktop.run(
            QStringLiteral("sh"),
            {QStringLiteral("-c"),
             QStringLiteral(
                 "id=$(xdotool search --onlyvisible --classname \"$1\" | head -n 1) && "
                 "parent=$(xwininfo -tree -id $id | sed -n 's/.*Parent window id: \\(0x[0-9a-f]*\\).*/\\1/p') "
                 "&& xwininfo -id $parent || true"),
             QStringLiteral("sh"), name});
        const auto number = [&text](const char *label) {
            const QRegularExpression line(QLatin1String(label) + QStringLiteral(":\\s*(-?\\d+)"));
            return line.match(QString::fromUtf8(text)).captured(1).toInt();
        };
        return {number("Absolute upper-left X"), number("Absolute upper-left Y"), number("Width"), number("Height")};
    }

    const QStringList arrange{QStringLiteral("--arrange"), QStringLiteral("org.example.quill-calc")};
};

TEST_F(EntryTest, anotherProgramsWindowIsArrangedAndTheProcessEnds)
{
    const auto other = desktop.start(
        QStringLiteral("xcalc"), {QStringLiteral("-name"), QStringLiteral("quill-calc")}, TestDesktop::Output::dropped);
    waitFor(QStringLiteral("the other window"), 10, [this] {
        return !windowFrame(QStringLiteral("quill-calc")).isEmpty();
    });
    const auto ended = runToItsEnd(arrange + QStringList{QStringLiteral("--width"), QStringLiteral("100")}, 30);
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.output, "Quillnest arranged org.example.quill-calc to 100x760\n");
    EXPECT_EQ(ended.errors, "");
    // The screen is 1200 by 900 points of two pixels.
    waitFor(QStringLiteral("the window to be compact"), 10, [this] {
        return windowFrame(QStringLiteral("quill-calc")) == QRect(2 * (1200 - 320 - 24), 2 * 70, 2 * 320, 2 * 760);
    });
    EXPECT_FALSE(program.isDeviceRunning());
    other->kill();
    other->waitForFinished(5000);
}

TEST_F(EntryTest, aProgramThatDoesNotRunIsToldAndTheProcessEndsAtOnce)
{
    const auto ended = runToItsEnd(arrange, 30);
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.output, "");
    EXPECT_EQ(ended.errors, "Quillnest arrange failed: The mobile app window is not running yet\n");
    EXPECT_LT(ended.seconds, 14);
}

TEST_F(EntryTest, withoutAWindowManagerThePermissionIsMissingAndTheProcessWaits15Seconds)
{
    desktop.endAll("openbox");
    const auto ended = runToItsEnd(arrange, 60);
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.errors, "Quillnest arrange failed: Accessibility permission is required for compact windows\n");
    EXPECT_GE(ended.seconds, 15);
}

TEST_F(EntryTest, theLoginItemIsSwitchedOnOnceAndStaysOffWhenTheUserRemovesIt)
{
    const auto entry = desktop.environment().value(QStringLiteral("XDG_CONFIG_HOME"))
        + QStringLiteral("/autostart/app.quillnest.Quillnest.desktop");
    program.start();
    waitForLog(QStringLiteral("open at login enabled=true status=1"));
    QFile file(entry);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_TRUE(file.readAll().contains(
        "\nExec=\"" + ProgramUnderTest::program(QStringLiteral("quillnest")).toUtf8() + "\"\n"));
    program.quit();
    QFile::remove(entry);
    program.start();
    waitForLog(QStringLiteral("open at login enabled=false status=0"));
    EXPECT_FALSE(QFile::exists(entry));
}

TEST_F(EntryTest, thePlayerWindowOpensWithItsFlag)
{
    program.start({QStringLiteral("--android-player")});
    waitFor(QStringLiteral("the player window"), 10, [this] {
        return desktop
                   .run(
                       QStringLiteral("sh"),
                       {QStringLiteral("-c"),
                        QStringLiteral("xdotool search --onlyvisible --name '^Quillnest Android$' || true")})
                   .count('\n')
            == 1;
    });
}

TEST_F(EntryTest, aCommandReachesAllRunningInstances)
{
    program.start();
    const auto second = desktop.start(ProgramUnderTest::program(QStringLiteral("quillnest")), {});
    // Both write one log.
    waitFor(QStringLiteral("the second instance"), 30, [this] {
        return program.log().count(QStringLiteral("open at login")) == 2;
    });
    waitFor(QStringLiteral("both to hear the command"), 10, [this] {
        program.post(QStringLiteral("nothing in particular"));
        return program.log().count(QStringLiteral("command nothing in particular")) >= 2;
    });
    program.kill();
    const auto before = program.log().count(QStringLiteral("command to one"));
    program.post(QStringLiteral("command to one"));
    waitForLog(QStringLiteral("command command to one"));
    EXPECT_EQ(program.log().count(QStringLiteral("command command to one")), before + 1);
    second->kill();
    second->waitForFinished(5000);
}

TEST_F(EntryTest, aSnapshotShowsThePanelAtTwicePixelsAndTheGlyph)
{
    program.start();
    program.addApps({ProgramUnderTest::sample(QStringLiteral("tide"))});
    program.post(QStringLiteral("snapshot-menu"));
    const auto folder = program.logFolder() + QStringLiteral("/snapshots/");
    waitFor(QStringLiteral("both pictures"), 10, [&folder] {
        return !QImage(folder + QStringLiteral("menu-panel.png")).isNull()
            && !QImage(folder + QStringLiteral("glyph.png")).isNull();
    });
    const QImage panel(folder + QStringLiteral("menu-panel.png"));
    EXPECT_EQ(panel.size(), QSize(780, 1520));
    // Dark, whatever the desktop is.
    EXPECT_LT(panel.pixelColor(390, 1300).lightness(), 80);
    EXPECT_EQ(QImage(folder + QStringLiteral("glyph.png")).size(), QSize(128, 128));
}

} // namespace quillnest::driver
