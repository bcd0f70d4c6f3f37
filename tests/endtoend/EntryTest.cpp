#include "endtoend/EndToEnd.h"

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QRegularExpression>

#include <algorithm>
#include <memory>
#include <vector>

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

TEST_F(EntryTest, helpAndVersionAreAnsweredWithoutADisplay)
{
    desktop.setVariable(QStringLiteral("DISPLAY"), QString());
    const auto help = runToItsEnd({QStringLiteral("--help")}, 10);
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(help.output.startsWith("Usage: quillnest [OPTION...] [FILE...]\n")) << help.output.toStdString();
    for (const auto *flag : {"--open-app", "--launch-apk", "--android-player", "--arrange", "--width", "--height"})
        EXPECT_TRUE(help.output.contains(flag)) << flag;
    const auto version = runToItsEnd({QStringLiteral("--version")}, 10);
    EXPECT_EQ(version.status, 0);
    EXPECT_TRUE(QRegularExpression(QStringLiteral("^quillnest \\d+\\.\\d+\\.\\d+\n$"))
                    .match(QString::fromUtf8(version.output))
                    .hasMatch())
        << version.output.toStdString();
}

TEST_F(EntryTest, aSecondStartHandsItsWishToTheFirstAndEnds)
{
    program.start();
    waitForLog(QStringLiteral("open at login"));
    program.post(QStringLiteral("open:nothing"));
    auto ended = runToItsEnd({}, 10);
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.output + ended.errors, "");
    program.waitForState(QStringLiteral("the panel"), 10, [](const QJsonObject &state) {
        return !state.value(QStringLiteral("panel")).isNull();
    });
    // Its files and its app are the first one's.
    ended = runToItsEnd({ProgramUnderTest::sample(QStringLiteral("tide"))}, 10);
    EXPECT_EQ(ended.status, 0);
    waitForStatus(QStringLiteral("Added tide.apk"));
    program.post(QStringLiteral("open:Tide"));
    program.waitForPicture(60);
    const int shown = program.window().value(QStringLiteral("framesShown")).toInt();
    ended = runToItsEnd({QStringLiteral("--open-app"), QStringLiteral("tide")}, 10);
    EXPECT_EQ(ended.status, 0);
    waitForLog(QStringLiteral("another start asks: --open-app tide"));
    waitForMorePictures();
    EXPECT_GT(program.window().value(QStringLiteral("framesShown")).toInt(), shown) << "the stream goes on";
    EXPECT_EQ(program.log().count(QStringLiteral("open at login")), 1);
}

TEST_F(EntryTest, aSecondStartBesideOneThatHangsSaysSoAndHarmsNothing)
{
    program.start();
    waitForLog(QStringLiteral("open at login"));
    desktop.run(QStringLiteral("kill"), {QStringLiteral("-STOP"), QString::number(program.processId())});
    const auto ended = runToItsEnd({}, 30);
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(
        ended.errors,
        "Quillnest is running but does not answer. Wait until it has finished, or end it, and try again.\n");
    desktop.run(QStringLiteral("kill"), {QStringLiteral("-CONT"), QString::number(program.processId())});
    program.post(QStringLiteral("add:/nothing.apk"));
    waitForLog(QStringLiteral("command add:/nothing.apk"));
    EXPECT_EQ(program.log().count(QStringLiteral("open at login")), 1);
}

TEST_F(EntryTest, whatIsWrittenIsForTheUserAlone)
{
    // As an earlier version left it.
    QDir().mkpath(program.logFolder());
    QFile::setPermissions(
        program.logFolder(), QFile::permissions(program.logFolder()) | QFileDevice::ReadOther | QFileDevice::ExeOther);
    program.start();
    program.addApps({ProgramUnderTest::sample(QStringLiteral("tide"))});
    program.post(QStringLiteral("theme:ios"));
    program.post(QStringLiteral("home"));
    const auto variable = [this](const char *name) { return desktop.environment().value(QLatin1String(name)); };
    const auto data = variable("XDG_DATA_HOME") + QStringLiteral("/Quillnest");
    waitFor(QStringLiteral("the icon's file"), 20, [&data] {
        return !QDir(data + QStringLiteral("/Icons")).entryList({QStringLiteral("*.png")}).isEmpty();
    });
    constexpr auto others = QFileDevice::ReadGroup | QFileDevice::WriteGroup | QFileDevice::ExeGroup
        | QFileDevice::ReadOther | QFileDevice::WriteOther | QFileDevice::ExeOther;
    const auto isClosed = [](const QString &path) { return !(QFile::permissions(path) & others); };
    EXPECT_TRUE(isClosed(data));
    EXPECT_TRUE(isClosed(program.logFolder()));
    int files = 0;
    for (const auto &folder :
         {data + QStringLiteral("/Icons"), program.logFolder(),
          variable("XDG_CONFIG_HOME") + QStringLiteral("/Quillnest")}) {
        QDirIterator found(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (found.hasNext()) {
            EXPECT_TRUE(isClosed(found.next())) << found.filePath().toStdString();
            ++files;
        }
    }
    EXPECT_GE(files, 3) << "icon, log and settings";
}

TEST_F(EntryTest, twoStartsInTheSameInstantLeaveOne)
{
    std::vector<std::unique_ptr<QProcess>> starts;
    for (int i = 0; i < 4; ++i)
        starts.push_back(desktop.start(ProgramUnderTest::program(QStringLiteral("quillnest")), {}));
    const auto running = [&starts] {
        return std::count_if(starts.begin(), starts.end(), [](const auto &process) {
            return !process->waitForFinished(0) && process->state() == QProcess::Running;
        });
    };
    waitFor(QStringLiteral("all but one to end"), 20, [&running] { return running() == 1; });
    waitForLog(QStringLiteral("another start asks: "));
    EXPECT_EQ(program.log().count(QStringLiteral("open at login")), 1);
    for (const auto &process : starts) {
        process->kill();
        process->waitForFinished(5000);
    }
}

TEST_F(EntryTest, aCommandReachesAllRunningInstances)
{
    program.start();
    // Another one of the same session has data of its own; the log is one.
    const auto data = QStringLiteral("XDG_DATA_HOME");
    const auto own = desktop.environment().value(data);
    desktop.setVariable(data, own + QStringLiteral("-2"));
    const auto second = desktop.start(ProgramUnderTest::program(QStringLiteral("quillnest")), {});
    desktop.setVariable(data, own);
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
