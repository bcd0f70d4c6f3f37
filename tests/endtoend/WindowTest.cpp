#include "endtoend/EndToEnd.h"

namespace quillnest::driver
{

using WindowTest = EndToEnd;

TEST_F(WindowTest, backOnTheFirstScreenClosesTheWindowAndShowsThePanelInItsPlace)
{
    program.start();
    openTide();
    const auto frame = rectangle(program.window().value(QStringLiteral("frame")).toObject());
    desktop.moveMouse(frame.center());
    desktop.key(QStringLiteral("Escape"));
    waitForNoWindow();
    waitForLog(QStringLiteral("back left app.quillnest.samples.tide: closing window, showing Quillnest home"));
    program.waitForState(QStringLiteral("the panel"), 10, [](const QJsonObject &state) {
        return !state.value(QStringLiteral("panel")).isNull();
    });
    EXPECT_EQ(rectangle(program.state().value(QStringLiteral("panel")).toObject()).topLeft(), frame.topLeft());
}

TEST_F(WindowTest, backOnADeeperScreenLeavesTheWindowOpen)
{
    program.start();
    openTide();
    program.deviceControl(
        {QStringLiteral("push-screen"), QString::number(program.window().value(QStringLiteral("displayID")).toInt())});
    program.post(QStringLiteral("back"));
    // The last of the four looks comes after 1.3 seconds.
    const auto looks = [this] {
        int count = 0;
        for (const auto &line : program.device().value(QStringLiteral("shellCommands")).toArray())
            count += line.toString() == QStringLiteral("$ dumpsys activity activities | grep ResumedActivity");
        return count;
    };
    waitFor(QStringLiteral("four looks"), 10, [&looks] { return looks() >= 4; });
    EXPECT_EQ(windows(program.state()).size(), 1);
    waitForMorePictures();
}

TEST_F(WindowTest, aHiddenWindowKeepsItsStreamAndComesBackWithAClick)
{
    program.start();
    openTide();
    program.post(QStringLiteral("hide"));
    program.waitForState(QStringLiteral("the window to hide"), 10, [](const QJsonObject &state) {
        return !windows(state).first()[QStringLiteral("visible")].toBool(true);
    });
    const int enqueued = program.window().value(QStringLiteral("framesEnqueued")).toInt();
    program.waitForState(QStringLiteral("the stream to go on"), 10, [enqueued](const QJsonObject &state) {
        return windows(state).first()[QStringLiteral("framesEnqueued")].toInt() > enqueued + 30;
    });
    program.post(QStringLiteral("open:Tide"));
    waitForStatus(QStringLiteral("Tide is open"));
    waitForMorePictures();
    EXPECT_EQ(program.log().count(QStringLiteral("native window open")), 1) << "no second stream";
}

TEST_F(WindowTest, inSingleAppModeAnotherAppClosesTheFirst)
{
    program.start();
    openTide();
    program.addApps({ProgramUnderTest::sample(QStringLiteral("ember"))});
    program.post(QStringLiteral("open:Ember"));
    waitForStatus(QStringLiteral("Opened Ember"));
    program.waitForState(QStringLiteral("one window, of the second app"), 20, [](const QJsonObject &state) {
        return windows(state).size() == 1
            && windows(state).first()[QStringLiteral("package")].toString()
            == QStringLiteral("app.quillnest.samples.ember");
    });
    EXPECT_TRUE(program.log().contains(QStringLiteral("single-app mode: closed app.quillnest.samples.tide")));
}

TEST_F(WindowTest, withoutSingleAppModeTwoAppsRunSideBySide)
{
    program.start();
    program.ctl(
        {QStringLiteral("settings"), QStringLiteral("set"), QStringLiteral("QuillnestSingleApp"),
         QStringLiteral("false")});
    program.ctl(
        {QStringLiteral("settings"), QStringLiteral("set"), QStringLiteral("QuillnestAutoHide"),
         QStringLiteral("false")});
    openTide();
    program.addApps({ProgramUnderTest::sample(QStringLiteral("lantern"))});
    program.post(QStringLiteral("open:Lantern"));
    program.waitForState(QStringLiteral("two windows with pictures"), 30, [](const QJsonObject &state) {
        const auto open = windows(state);
        return open.size() == 2 && open[0][QStringLiteral("framesShown")].toInt() > 10
            && open[1][QStringLiteral("framesShown")].toInt() > 10;
    });
    program.post(QStringLiteral("close-all"));
    waitForNoWindow();
}

TEST_F(WindowTest, theDeviceStopsWhenItHasBeenIdleLongEnough)
{
    program.start();
    openTide();
    program.ctl(
        {QStringLiteral("settings"), QStringLiteral("set"), QStringLiteral("QuillnestIdleShutdownMinutes"),
         QStringLiteral("0.02")});
    program.post(QStringLiteral("close-all"));
    waitForNoWindow();
    waitFor(QStringLiteral("the device to stop"), 20, [this] { return !program.isDeviceRunning(); });
    EXPECT_TRUE(program.log().contains(QStringLiteral("stopping Android runtime (idle 0.02 min)")));
    program.waitForState(QStringLiteral("the state to be sleeping"), 10, [](const QJsonObject &state) {
        return state.value(QStringLiteral("androidState")).toString() == QStringLiteral("sleeping");
    });
}

TEST_F(WindowTest, theCopyCommandBringsTheAppsTextToTheDesktop)
{
    program.start();
    openTide();
    desktop.type(QStringLiteral("carried over"));
    waitFor(QStringLiteral("the text to reach the device"), 10, [this] {
        const auto sessions = program.device().value(QStringLiteral("sessions")).toArray();
        return sessions.first()[QStringLiteral("text")].toString() == QStringLiteral("carried over");
    });
    program.post(QStringLiteral("copy"));
    waitFor(QStringLiteral("the clipboard to change"), 10, [this] {
        return desktop.clipboard() == QStringLiteral("carried over");
    });
}

TEST_F(WindowTest, theDeviceStaysAtQuitWhenTheSettingsSaySo)
{
    program.start();
    program.ctl(
        {QStringLiteral("settings"), QStringLiteral("set"), QStringLiteral("QuillnestStopAndroidOnQuit"),
         QStringLiteral("false")});
    openTide();
    EXPECT_EQ(program.quit(), 0);
    EXPECT_TRUE(program.isDeviceRunning());
}

TEST_F(WindowTest, anAppNamedOnTheCommandLineOpensHalfASecondAfterTheStart)
{
    program.start();
    program.addApps({ProgramUnderTest::sample(QStringLiteral("tide"))});
    EXPECT_EQ(program.quit(), 0);
    program.start({QStringLiteral("--open-app"), QStringLiteral("tide.apk")});
    program.waitForPicture(60);
}

} // namespace quillnest::driver
