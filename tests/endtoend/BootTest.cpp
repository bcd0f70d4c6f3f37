#include "endtoend/EndToEnd.h"

namespace quillnest::driver
{

namespace
{
const auto startingEmulator = QStringLiteral("starting emulator");
/// Longer than any test waits.
constexpr double hardlyEver = 3600;
} // namespace

class BootTest : public EndToEnd
{
protected:
    void SetUp() override { program.noteAdbCalls(); }

    /// How the device starts next time.
    void bootTakes(double seconds) const { program.configureDevice({{QStringLiteral("bootSeconds"), seconds}}); }
    void nowBooted() const
    {
        program.deviceControl({QStringLiteral("set"), QStringLiteral("bootSeconds"), QStringLiteral("0")});
    }
    void fault(const char *name, const char *argument = "") const
    {
        program.deviceControl({QStringLiteral("fault"), QLatin1String(name), QLatin1String(argument)});
    }

    void startWithTide()
    {
        program.start();
        program.addApps({ProgramUnderTest::sample(QStringLiteral("tide"))});
    }

    /// A device that has booted, of an earlier run, and Tide in the library.
    void leaveBootedDevice()
    {
        set(QStringLiteral("QuillnestStopAndroidOnQuit"), false);
        program.start();
        openTide();
        ASSERT_EQ(program.quit(), 0);
        ASSERT_TRUE(program.device().value(QStringLiteral("booted")).toBool());
    }

    qsizetype boots() const { return program.log().count(startingEmulator); }

    void waitForListedDevice() const
    {
        waitFor(QStringLiteral("the device to be listed"), 30, [this] {
            return desktop.run(QStringLiteral("adb"), {QStringLiteral("devices")}).contains("emulator-5556\tdevice");
        });
    }

    /// The panel says that the app is being started and the device is not there yet.
    void expectStarting(const QString &app) const
    {
        const auto state = program.state();
        EXPECT_EQ(text(state, "androidState"), QStringLiteral("starting"));
        EXPECT_EQ(text(state, "statusMessage"), QStringLiteral("Starting %1…").arg(app));
        EXPECT_FALSE(state.value(QStringLiteral("launchingAppID")).isNull());
        EXPECT_TRUE(windows(state).isEmpty());
    }

    void expectOpen(const QString &app) const
    {
        program.waitForPicture(60);
        const auto state = program.state();
        EXPECT_EQ(text(state, "androidState"), QStringLiteral("ready"));
        EXPECT_EQ(text(state, "statusMessage"), QStringLiteral("Opened %1").arg(app));
        EXPECT_TRUE(state.value(QStringLiteral("launchingAppID")).isNull());
    }

    /// A look at the device doesn't override a start, so after one that failed the state stays what it was.
    void expectFailed(const QString &sentence, const char *androidState) const
    {
        waitForStatus(QStringLiteral("Android launch failed: ") + sentence);
        const auto state = program.state();
        EXPECT_EQ(text(state, "androidState"), QLatin1String(androidState));
        EXPECT_TRUE(state.value(QStringLiteral("launchingAppID")).isNull());
        EXPECT_TRUE(windows(state).isEmpty());
        EXPECT_TRUE(program.log().contains(QStringLiteral("open failed app=Tide error=") + sentence));
    }
};

TEST_F(BootTest, aSlowBootIsWaitedForAndThePanelSaysSoMeanwhile)
{
    bootTakes(hardlyEver);
    startWithTide();
    program.post(QStringLiteral("open:Tide"));
    waitForLog(startingEmulator);
    waitForLooks(5);
    expectStarting(QStringLiteral("Tide"));
    nowBooted();
    expectOpen(QStringLiteral("Tide"));
    EXPECT_EQ(boots(), 1);
    EXPECT_TRUE(program.log().contains(QStringLiteral("android network validated")));
}

TEST_F(BootTest, aDeviceThatNeverBootsIsGivenUpAndStaysAndTheNextClickWaitsForIt)
{
    program.configureDevice({{QStringLiteral("faults"), QJsonObject{{QStringLiteral("never-boots"), QString()}}}});
    startWithTide();
    program.post(QStringLiteral("open:Tide"));
    waitForLog(QStringLiteral("open failed app=Tide"), 330);
    expectFailed(QStringLiteral("Quillnest Android did not finish starting"), "starting");
    // One look in each second of four minutes, and a few before and after.
    EXPECT_GE(adbCommands(QStringLiteral("getprop sys.boot_completed")), 240);
    EXPECT_LT(adbCommands(QStringLiteral("getprop sys.boot_completed")), 280);
    EXPECT_TRUE(program.isDeviceRunning());

    program.post(QStringLiteral("open:Tide"));
    waitForLooks(3);
    expectStarting(QStringLiteral("Tide"));
    program.deviceControl({QStringLiteral("fault"), QStringLiteral("clear")});
    expectOpen(QStringLiteral("Tide"));
    EXPECT_EQ(boots(), 1);
}

TEST_F(BootTest, aDeviceWithoutItsPackageServiceIsStartedAnew)
{
    leaveBootedDevice();
    fault("sick-package-service");
    program.start();
    program.post(QStringLiteral("open:Tide"));
    expectOpen(QStringLiteral("Tide"));
    EXPECT_TRUE(program.log().contains(QStringLiteral("android unhealthy (package service missing) - restarting it")));
    EXPECT_EQ(boots(), 2);
    EXPECT_TRUE(program.device().value(QStringLiteral("faults")).toObject().isEmpty()) << "the old device";
}

TEST_F(BootTest, aDeviceOfAnotherVersionIsStoppedWithItsAppsAndTheRightOneStarted)
{
    leaveBootedDevice();
    fault("wrong-api", "30");
    program.start();
    program.post(QStringLiteral("open:Tide"));
    expectOpen(QStringLiteral("Tide"));
    EXPECT_TRUE(
        program.log().contains(QStringLiteral("android version change: running API 30, wanted API 35 - restarting")));
    EXPECT_EQ(boots(), 2);
    EXPECT_EQ(program.device().value(QStringLiteral("api")).toInt(), 35);
    EXPECT_TRUE(program.device().value(QStringLiteral("faults")).toObject().isEmpty()) << "the old device";

    // Between the question for the version and the kill.
    const auto commands = adbCommands();
    const auto kill = commands.indexOf(QStringLiteral("-s emulator-5556 emu kill"));
    const auto version
        = commands.lastIndexOf(QStringLiteral("-s emulator-5556 shell getprop ro.build.version.sdk"), kill);
    ASSERT_LT(version, kill);
    EXPECT_EQ(commands.mid(version, kill - version).filter(QStringLiteral("am force-stop $p")).size(), 1);
}

TEST_F(BootTest, aHealthyDeviceOfAnEarlierRunIsTakenOverAsItIs)
{
    leaveBootedDevice();
    const auto tweaks = [this] { return adbCommands(QStringLiteral("settings put global private_dns_mode")); };
    const auto before = tweaks();
    program.start();
    program.post(QStringLiteral("open:Tide"));
    expectOpen(QStringLiteral("Tide"));
    EXPECT_EQ(boots(), 1);
    EXPECT_EQ(tweaks(), before + 1) << "those of the cleaning at the start, and none by the boot";
    EXPECT_EQ(adbCommands(QStringLiteral("emu kill")), 0);
}

TEST_F(BootTest, aDeviceOnItsWayUpFromAnEarlierRunIsWaitedForAndNotStartedTwice)
{
    bootTakes(hardlyEver);
    startWithTide();
    program.post(QStringLiteral("open:Tide"));
    waitForListedDevice();
    program.kill();

    program.start();
    program.post(QStringLiteral("open:Tide"));
    waitForLooks(5);
    expectStarting(QStringLiteral("Tide"));
    nowBooted();
    expectOpen(QStringLiteral("Tide"));
    EXPECT_EQ(boots(), 1);
    EXPECT_EQ(adbCommands(QStringLiteral("settings put global private_dns_mode")), 1) << "a boot that was waited for";
}

TEST_F(BootTest, aDeviceOfAnEarlierRunThatIsOnItsWayOutIsFollowedByAFreshOne)
{
    bootTakes(hardlyEver);
    startWithTide();
    program.post(QStringLiteral("open:Tide"));
    waitForListedDevice();
    program.kill();

    program.start();
    program.post(QStringLiteral("open:Tide"));
    waitForLooks(5);
    bootTakes(0.5);
    program.endDevice();
    expectOpen(QStringLiteral("Tide"));
    EXPECT_EQ(boots(), 2);
}

TEST_F(BootTest, aDeviceThatDiesInMidBootIsGivenUpSoonAndTheNextClickBootsAgain)
{
    bootTakes(hardlyEver);
    startWithTide();
    program.post(QStringLiteral("open:Tide"));
    waitForLog(startingEmulator);
    waitForLooks(3);
    program.endDevice();
    waitForLog(QStringLiteral("open failed app=Tide"), 60);
    expectFailed(QStringLiteral("Quillnest Android did not finish starting"), "starting");

    bootTakes(0.5);
    program.post(QStringLiteral("open:Tide"));
    expectOpen(QStringLiteral("Tide"));
    EXPECT_EQ(boots(), 2);
}

TEST_F(BootTest, aSickDeviceThatCannotBeKilledIsToldInASentenceAndTriedAgainAtTheNextClick)
{
    leaveBootedDevice();
    fault("ignore-kill");
    fault("sick-package-service");
    program.start();
    program.waitForState(QStringLiteral("the device to be seen"), 20, [](const QJsonObject &state) {
        return text(state, "androidState") == QStringLiteral("ready");
    });
    program.post(QStringLiteral("open:Tide"));
    waitForLog(QStringLiteral("open failed app=Tide"), 90);
    expectFailed(QStringLiteral("cmd: Can't find service: package"), "ready");
    EXPECT_EQ(adbCommands(QStringLiteral("emu kill")), 1);
    EXPECT_EQ(boots(), 1);

    program.deviceControl({QStringLiteral("fault"), QStringLiteral("clear"), QStringLiteral("ignore-kill")});
    program.post(QStringLiteral("open:Tide"));
    expectOpen(QStringLiteral("Tide"));
    EXPECT_EQ(boots(), 2);
}

TEST_F(BootTest, aWarmUpAndTwoLaunchesShareOneBoot)
{
    bootTakes(hardlyEver);
    set(QStringLiteral("QuillnestSingleApp"), false);
    set(QStringLiteral("QuillnestAutoHide"), false);
    startWithTide();
    program.addApps({ProgramUnderTest::sample(QStringLiteral("ember"))});
    program.post(QStringLiteral("home"));
    waitForLog(QStringLiteral("warm-up: starting Android in the background"));
    waitForLog(startingEmulator);
    program.post(QStringLiteral("open:Tide"));
    program.post(QStringLiteral("open:Ember"));
    waitForLog(QStringLiteral("open requested app=Ember"));
    waitForLooks(5);
    expectStarting(QStringLiteral("Ember"));
    nowBooted();
    program.waitForState(QStringLiteral("two windows with pictures"), 60, [](const QJsonObject &state) {
        const auto open = windows(state);
        return open.size() == 2 && open[0][QStringLiteral("framesShown")].toInt() > 0
            && open[1][QStringLiteral("framesShown")].toInt() > 0;
    });
    EXPECT_EQ(text(program.state(), "androidState"), QStringLiteral("ready"));
    EXPECT_TRUE(program.state().value(QStringLiteral("launchingAppID")).isNull());
    EXPECT_TRUE(program.log().contains(QStringLiteral("warm-up: Android ready after ")));
    EXPECT_EQ(boots(), 1);
    EXPECT_EQ(adbCommands(QStringLiteral("settings put global private_dns_mode")), 1) << "the tweaks of one boot";
}

} // namespace quillnest::driver
