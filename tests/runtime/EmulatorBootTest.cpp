#include "RuntimeFixture.h"

#include "runtime/AndroidRuntimeCLI.h"
#include "runtime/AndroidRuntimeError.h"

using namespace quillnest;
using namespace std::chrono_literals;

namespace
{
class EmulatorBootTest : public RuntimeFixture
{
protected:
    void boot() { runToEnd(fakes, cli->ensureRuntime()); }
    qsizetype launches() const { return fakes.processes->count(QStringLiteral("emulator/emulator @")); }
    qsizetype kills() const { return fakes.processes->count(QStringLiteral("emu kill")); }
    qsizetype tweaks() const { return fakes.processes->count(QStringLiteral("media_session volume --stream 3")); }
    void deviceIsUp()
    {
        device.listed = true;
        device.booted = true;
    }
    std::optional<AndroidRuntimeError::Case> failure()
    {
        try {
            boot();
        } catch (const AndroidRuntimeError &error) {
            return error.errorCase();
        }
        return std::nullopt;
    }

    std::optional<AndroidRuntimeCLI> cli{std::in_place, fakes.platform, log};
};
} // namespace

TEST_F(EmulatorBootTest, aReadyDeviceIsTakenOverWithoutTweaks)
{
    deviceIsUp();
    boot();
    EXPECT_EQ(launches(), 0);
    EXPECT_EQ(kills(), 0);
    EXPECT_EQ(tweaks(), 0);
    EXPECT_EQ(fakes.processes->calls().size(), 4U);
}

TEST_F(EmulatorBootTest, aDeviceOfUnknownApiCountsAsTheWantedOne)
{
    deviceIsUp();
    device.api = "";
    boot();
    EXPECT_EQ(kills(), 0);
}

TEST_F(EmulatorBootTest, anotherApiStopsAllAppsKillsStartsAndTweaks)
{
    deviceIsUp();
    device.api = "33";
    boot();
    const auto lines = fakes.processes->lines();
    const auto stop = lines.indexOf(lines.filter(QStringLiteral("am force-stop")).at(0));
    const auto kill = lines.indexOf(lines.filter(QStringLiteral("emu kill")).at(0));
    EXPECT_LT(stop, kill);
    EXPECT_EQ(launches(), 1);
    EXPECT_EQ(tweaks(), 1);
    EXPECT_TRUE(
        logLines().contains(QStringLiteral("android version change: running API 33, wanted API 35 - restarting")));
}

TEST_F(EmulatorBootTest, aSickDeviceIsKilledAndStartedAnewWithoutStoppingApps)
{
    deviceIsUp();
    device.healthy = false;
    boot();
    const auto lines = fakes.processes->lines();
    EXPECT_EQ(kills(), 1);
    EXPECT_EQ(launches(), 1);
    EXPECT_EQ(tweaks(), 1);
    const auto stop = lines.indexOf(lines.filter(QStringLiteral("am force-stop")).at(0));
    EXPECT_GT(stop, lines.indexOf(lines.filter(QStringLiteral("emulator/emulator")).at(0)));
    EXPECT_TRUE(logLines().contains(QStringLiteral("android unhealthy (package service missing) - restarting it")));
}

TEST_F(EmulatorBootTest, aSickDeviceThatIsWellAtTheSecondLookStays)
{
    deviceIsUp();
    int looks = 0;
    fakes.processes->on(QStringLiteral("service check package"), [&looks](const ChildCommand &) {
        return ScriptedProcesses::Answer{++looks == 1 ? "not found" : "found"};
    });
    boot();
    EXPECT_EQ(looks, 2);
    EXPECT_EQ(kills(), 0);
}

TEST_F(EmulatorBootTest, aSickDeviceWhoseKillFailsButIsGoneIsStartedAnew)
{
    deviceIsUp();
    device.healthy = false;
    fakes.processes->on(QStringLiteral("emu kill"), [this](const ChildCommand &) {
        device = {};
        return ScriptedProcesses::Answer{"error: could not connect", 1};
    });
    boot();
    EXPECT_EQ(launches(), 1);
}

TEST_F(EmulatorBootTest, aDeviceOnItsWayUpIsWaitedForAndTweaked)
{
    device.listed = true;
    device.looksUntilBooted = 20;
    boot();
    EXPECT_EQ(launches(), 0);
    EXPECT_EQ(tweaks(), 1);
}

TEST_F(EmulatorBootTest, withNoDeviceOneIsStartedWaitedForAndTweakedInOrder)
{
    const auto begin = fakes.clock->monotonic();
    device.looksUntilBooted = 6;
    boot();
    EXPECT_EQ(launches(), 1);
    EXPECT_EQ(fakes.clock->monotonic() - begin, 5s);
    const auto lines = fakes.processes->lines();
    const auto first = [&lines](const char *text) { return lines.indexOf(lines.filter(QLatin1String(text)).value(0)); };
    EXPECT_LT(first("emulator/emulator"), first("am force-stop"));
    EXPECT_LT(first("am force-stop"), first("media_session volume --stream 3"));
    EXPECT_LT(first("media_session volume --stream 5"), first("dumpsys connectivity"));
    EXPECT_TRUE(logLines().contains(QStringLiteral("android network validated")));
}

TEST_F(EmulatorBootTest, theEmulatorGetsItsArgumentsEnvironmentAndNoStreams)
{
    boot();
    const auto command = fakes.processes->children().at(0)->command();
    EXPECT_EQ(command.program, paths.emulator());
    EXPECT_EQ(
        command.arguments.join(QLatin1Char(' ')),
        QStringLiteral("@Quillnest -port 5556 -no-window -no-boot-anim -gpu host -memory 2048 -no-snapshot"));
    EXPECT_EQ(command.environment.at(QStringLiteral("ANDROID_SDK_ROOT")), paths.sdkRoot);
    EXPECT_EQ(command.environment.at(QStringLiteral("ANDROID_HOME")), paths.sdkRoot);
    EXPECT_EQ(command.environment.at(QStringLiteral("ANDROID_AVD_HOME")), *paths.avdHome);
    EXPECT_EQ(command.input, ChildCommand::Input::null);
    EXPECT_EQ(command.output, ChildCommand::Output::null);
    EXPECT_EQ(command.errors, ChildCommand::Errors::null);
    EXPECT_TRUE(
        logLines().contains(QStringLiteral("starting emulator avd=Quillnest managed=true sdk=%1").arg(paths.sdkRoot)));
}

TEST_F(EmulatorBootTest, theHardwareFollowsTheSettingsBeforeEachStart)
{
    fakes.settings->setValue(QStringLiteral("QuillnestMicCamera"), true);
    boot();
    EXPECT_TRUE(
        fakes.readFile(*paths.avdHome + QStringLiteral("/Quillnest.avd/config.ini"))->contains("hw.audioInput=yes\n"));
}

TEST_F(EmulatorBootTest, twoCallersShareOneEmulatorAndBothGetTheTimeout)
{
    device.looksUntilBooted = 1000000;
    int timeouts = 0;
    const auto wait = [](AndroidRuntimeCLI *runtime, int *count) -> Task<> {
        try {
            co_await runtime->ensureRuntime();
        } catch (const AndroidRuntimeError &error) {
            if (error.errorCase() == AndroidRuntimeError::Case::bootTimeout)
                ++*count;
        }
    };
    const auto begin = fakes.clock->monotonic();
    wait(&*cli, &timeouts);
    wait(&*cli, &timeouts);
    fakes.runUntil([&timeouts] { return timeouts == 2; });
    EXPECT_EQ(launches(), 1);
    EXPECT_EQ(fakes.clock->monotonic() - begin, 240s);
    // Two looks at the device before the start and one in each round: those of a single boot.
    EXPECT_EQ(fakes.processes->count(QStringLiteral("sys.boot_completed")), 2 + 240);
    EXPECT_TRUE(fakes.processes->children().at(0)->isRunning());
    EXPECT_EQ(tweaks(), 0);

    // The next caller begins a boot of its own, finds the device listed and waits again.
    device.looksUntilBooted = 2;
    boot();
    EXPECT_EQ(launches(), 1);
}

TEST_F(EmulatorBootTest, aCallerAfterTheBootBeginsANewOne)
{
    boot();
    fakes.processes->forget();
    boot();
    EXPECT_EQ(fakes.processes->calls().size(), 4U);
}

TEST_F(EmulatorBootTest, aDeviceThatDoesNotGoIsNotKilledAgain)
{
    deviceIsUp();
    device.api = "33";
    device.obeysKill = false;
    const auto begin = fakes.clock->monotonic();
    boot();
    EXPECT_EQ(kills(), 1);
    EXPECT_EQ(launches(), 0);
    EXPECT_EQ(fakes.clock->monotonic() - begin, 30s);
}

TEST_F(EmulatorBootTest, anotherSerialWithTheSamePrefixCountsAsTheDevice)
{
    device.listed = false;
    device.looksUntilBooted = 1;
    fakes.processes->on(
        QStringLiteral("adb devices"), QByteArray("List of devices attached\nemulator-55567\tdevice\n"));
    EXPECT_TRUE(cli->commands()->deviceIsListed());
    EXPECT_EQ(failure(), AndroidRuntimeError::Case::bootTimeout);
    EXPECT_EQ(launches(), 0);
}

TEST_F(EmulatorBootTest, theListHasToBeginWithTheSerial)
{
    fakes.processes->on(
        QStringLiteral("adb devices"), QByteArray("List\n x emulator-5556\tdevice\nemulator-5554 device\n"));
    EXPECT_FALSE(cli->commands()->deviceIsListed());
}

TEST_F(EmulatorBootTest, anAdbThatFailsForAMomentStartsNoSecondEmulator)
{
    device.listed = true;
    device.looksUntilBooted = 1000000;
    int looks = 0;
    // Three failures, as often as a device has to be missing to be given up, and it goes on with the boot.
    fakes.processes->on(QStringLiteral("adb devices"), [this, &looks](const ChildCommand &) {
        const bool fails = ++looks > 5 && looks < 9;
        if (looks == 9)
            device.looksUntilBooted = 1;
        return fails ? ScriptedProcesses::Answer{"error: protocol fault\n", 1}
                     : ScriptedProcesses::Answer{"emulator-5556\toffline\n"};
    });
    boot();
    EXPECT_GE(looks, 9);
    EXPECT_EQ(launches(), 0);
}

TEST_F(EmulatorBootTest, anAdbThatFailsForGoodIsToldInItsOwnWords)
{
    fakes.processes->on(QStringLiteral("adb"), ScriptedProcesses::Answer{"adb: no permissions\n", 1});
    EXPECT_EQ(failure(), AndroidRuntimeError::Case::commandFailed);
    EXPECT_EQ(launches(), 0);
}

TEST_F(EmulatorBootTest, somebodyElsesDeviceIsLeftAloneAndThePortSaidToBeTaken)
{
    deviceIsUp();
    device.avd = "Pixel_7";
    device.api = "33";
    device.healthy = false;
    const auto begin = fakes.clock->monotonic();
    EXPECT_EQ(failure(), AndroidRuntimeError::Case::portTaken);
    device.booted = false;
    device.looksUntilBooted = 1000000;
    EXPECT_EQ(failure(), AndroidRuntimeError::Case::portTaken);
    EXPECT_LT(fakes.clock->monotonic() - begin, 5s) << "nobody waits for it to boot";
    EXPECT_EQ(launches() + kills() + tweaks(), 0);
    EXPECT_EQ(fakes.processes->count(QStringLiteral("am force-stop")), 0);
}

TEST_F(EmulatorBootTest, everyAVDOfThisProgramIsItsOwn)
{
    deviceIsUp();
    for (const auto *name : {"Quillnest", "Quillnest-33", "Quillnest_Android35"}) {
        device.avd = name;
        EXPECT_EQ(cli->commands()->whoseDevice(), AndroidCommands::Whose::ours) << name;
    }
    for (const auto *name : {"Quillnest-29", "quillnest", "Quill", ""}) {
        device.avd = name;
        EXPECT_NE(cli->commands()->whoseDevice(), AndroidCommands::Whose::ours) << name;
    }
    // A console that refuses us doesn't tell.
    fakes.processes->on(QStringLiteral("emu avd name"), QByteArray("Quillnest\r\nKO: not authenticated\r\n"));
    EXPECT_EQ(cli->commands()->whoseDevice(), AndroidCommands::Whose::nobodys);
}

TEST_F(EmulatorBootTest, aDeviceThatDoesNotSayItsNameYetIsWaitedFor)
{
    device.listed = true;
    device.looksUntilBooted = 20;
    fakes.processes->on(QStringLiteral("emu avd name"), [this](const ChildCommand &) {
        return device.booted ? ScriptedProcesses::Answer{"Quillnest\r\nOK\r\n"}
                             : ScriptedProcesses::Answer{"error: could not connect", 1};
    });
    boot();
    EXPECT_EQ(launches(), 0);
}

TEST_F(EmulatorBootTest, aPortOfAnotherUserIsTaken)
{
    for (const auto port : {std::uint16_t(5556), std::uint16_t(5557)}) {
        deviceIsUp();
        fakes.sockets->listeners = {{port, SocketOwner::another}};
        EXPECT_EQ(failure(), AndroidRuntimeError::Case::portTaken) << port;
    }
    EXPECT_EQ(launches() + kills(), 0);
    fakes.sockets->listeners = {{5556, SocketOwner::trusted}, {5557, SocketOwner::trusted}};
    boot();
}

TEST_F(EmulatorBootTest, anotherUsersAdbServerIsNotAskedAnything)
{
    fakes.sockets->listeners = {{5037, SocketOwner::another}};
    EXPECT_EQ(failure(), AndroidRuntimeError::Case::serverOfAnother);
    EXPECT_EQ(cli->commands()->runADB({QStringLiteral("shell")}), QString());
    cli->commands()->stopDevice();
    cli->commands()->stopDeviceAtOnce();
    EXPECT_EQ(fakes.processes->count(QStringLiteral("adb")), 0);
}

TEST_F(EmulatorBootTest, healthIsFoundAndNotNotFound)
{
    const auto healthy = [this](const ScriptedProcesses::Answer &answer) {
        fakes.processes->on(QStringLiteral("service check package"), answer);
        return cli->commands()->androidIsHealthy();
    };
    EXPECT_TRUE(healthy({"Service package: found"}));
    EXPECT_FALSE(healthy({"Service package: not found"}));
    EXPECT_FALSE(healthy({""}));
    EXPECT_FALSE(healthy({"found", 1}));
}

TEST_F(EmulatorBootTest, bootedIsExactlyOne)
{
    device.listed = true;
    const auto booted = [this](const ScriptedProcesses::Answer &answer) {
        fakes.processes->on(QStringLiteral("getprop sys.boot_completed"), answer);
        return cli->commands()->deviceIsBooted();
    };
    EXPECT_TRUE(booted({" 1\r\n"}));
    EXPECT_FALSE(booted({"11"}));
    EXPECT_FALSE(booted({""}));
    EXPECT_FALSE(booted({"1", 1}));
}

TEST_F(EmulatorBootTest, aRunningEmulatorThatAdbDoesNotListIsNotStartedTwice)
{
    device.looksUntilBooted = 1000000;
    EXPECT_EQ(failure(), AndroidRuntimeError::Case::bootTimeout);
    device.listed = false;
    const auto begin = fakes.clock->monotonic();
    EXPECT_EQ(failure(), AndroidRuntimeError::Case::bootTimeout);
    EXPECT_EQ(launches(), 1);
    EXPECT_EQ(fakes.clock->monotonic() - begin, 15s + 240s);
}

TEST_F(EmulatorBootTest, anEmulatorThatEndedIsStartedAgain)
{
    device.looksUntilBooted = 1000000;
    EXPECT_EQ(failure(), AndroidRuntimeError::Case::bootTimeout);
    fakes.processes->children().at(0)->exit(1);
    device = {};
    boot();
    EXPECT_EQ(launches(), 2);
}

TEST_F(EmulatorBootTest, aDeviceThatIsLostInMidBootIsGivenUpSoon)
{
    device.looksUntilBooted = 1000000;
    const auto begin = fakes.clock->monotonic();
    fakes.clock->later(20s, [this] {
        device.listed = false;
        fakes.processes->children().at(0)->exit(137);
    });
    EXPECT_EQ(failure(), AndroidRuntimeError::Case::bootTimeout);
    EXPECT_LE(fakes.clock->monotonic() - begin, 20s + 16s);
    device = {};
    boot();
    EXPECT_EQ(launches(), 2);
}

TEST_F(EmulatorBootTest, aDeviceOfAnEarlierRunThatIsOnItsWayOutIsFollowedByOneOfOurs)
{
    device = {.listed = true, .looksUntilBooted = 1000000};
    const auto begin = fakes.clock->monotonic();
    fakes.clock->later(20s, [this] { device = {}; });
    boot();
    EXPECT_EQ(launches(), 1);
    EXPECT_EQ(tweaks(), 1);
    EXPECT_LE(fakes.clock->monotonic() - begin, 20s + 10s);
}

TEST_F(EmulatorBootTest, aDeviceThatIsUnlistedForAMomentIsWaitedFor)
{
    device = {.listed = true, .looksUntilBooted = 60};
    fakes.clock->later(20500ms, [this] { device.listed = false; });
    fakes.clock->later(22500ms, [this] { device.listed = true; });
    boot();
    EXPECT_EQ(launches(), 0);
}

TEST_F(EmulatorBootTest, momentsInWhichADeviceIsUnlistedDoNotAddUp)
{
    device = {.listed = true, .looksUntilBooted = 60};
    for (const auto begin : {20500ms, 30500ms}) {
        fakes.clock->later(begin, [this] { device.listed = false; });
        fakes.clock->later(begin + 2000ms, [this] { device.listed = true; });
    }
    boot();
    EXPECT_EQ(launches(), 0);
}

TEST_F(EmulatorBootTest, aDeviceWhoseLauncherHasEndedIsWaitedFor)
{
    device.looksUntilBooted = 100;
    fakes.processes->onStart(QStringLiteral("emulator/emulator"), [this](ScriptedChild &child) {
        child.exit(0);
        fakes.clock->later(10s, [this] { device.listed = true; });
    });
    boot();
    EXPECT_EQ(launches(), 1);
}

TEST_F(EmulatorBootTest, aDeviceThatIsStillListedAfterItsEmulatorDiedIsStartedAgain)
{
    boot();
    fakes.processes->children().at(0)->exit(137);
    device = {.listed = true, .looksUntilBooted = 1000000};
    // adb notices after two looks.
    int looks = 0;
    fakes.processes->on(QStringLiteral("adb devices"), [this, &looks](const ChildCommand &) {
        if (++looks == 3)
            device = {};
        return ScriptedProcesses::Answer{device.listed ? "emulator-5556\toffline\n" : "\n"};
    });
    const auto begin = fakes.clock->monotonic();
    boot();
    EXPECT_EQ(launches(), 2);
    EXPECT_LT(fakes.clock->monotonic() - begin, 10s);
}

TEST_F(EmulatorBootTest, aKilledDeviceIsNoLongerWaitedForAsAProcess)
{
    boot();
    device.healthy = false;
    const auto begin = fakes.clock->monotonic();
    device.looksUntilBooted = 1;
    boot();
    // The first emulator's process is still there, but was dropped with its device.
    EXPECT_TRUE(fakes.processes->children().at(0)->isRunning());
    EXPECT_EQ(launches(), 2);
    EXPECT_EQ(fakes.clock->monotonic() - begin, 0s);
    EXPECT_EQ(fakes.processes->children().at(0)->terminations(), 0);
}

TEST_F(EmulatorBootTest, aMissingEmulatorHasItsOwnName)
{
    QFile::remove(paths.emulator());
    fakes.settings->setValue(QStringLiteral("QuillnestAndroidAPI"), 33);
    try {
        boot();
        FAIL();
    } catch (const AndroidRuntimeError &error) {
        EXPECT_EQ(error.description(), QStringLiteral("Android tool missing: Android Emulator"));
    }
}

TEST_F(EmulatorBootTest, aFailedLaunchIsThrownAndLeavesTheSlotEmpty)
{
    fakes.processes->onStart(
        QStringLiteral("emulator/emulator"), [](ScriptedChild &) { throw LaunchError(QStringLiteral("no memory")); });
    EXPECT_THROW(boot(), LaunchError);
    fakes.processes->onStart(QStringLiteral("emulator/emulator"), [this](ScriptedChild &) { device.listed = true; });
    boot();
    EXPECT_EQ(launches(), 2);
}

TEST_F(EmulatorBootTest, aDeviceWithoutANetworkIsStillAGoodDevice)
{
    device.validated = false;
    device.looksUntilBooted = 1;
    const auto begin = fakes.clock->monotonic();
    boot();
    EXPECT_EQ(fakes.clock->monotonic() - begin, 30s);
    EXPECT_EQ(fakes.processes->count(QStringLiteral("dumpsys connectivity")), 30);
    EXPECT_TRUE(logLines().contains(QStringLiteral("android network not validated after 30s")));
}

TEST_F(EmulatorBootTest, stoppedAppsAreCountedInTheLog)
{
    fakes.processes->on(QStringLiteral("am force-stop"), QByteArray("org.a.b\norg.c.d\n\n"));
    cli->commands()->stopAllApps();
    EXPECT_EQ(logLines(), QStringList{QStringLiteral("stopped 2 Android apps")});
    EXPECT_EQ(
        fakes.processes->calls().back().arguments.back(),
        QStringLiteral("for p in $(pm list packages -3 | sed 's/package://'); do am force-stop $p; echo $p; done"));
    fakes.processes->on(QStringLiteral("am force-stop"), QByteArray("\n"));
    cli->commands()->stopAllApps();
    EXPECT_EQ(logLines().size(), 1);
}

TEST_F(EmulatorBootTest, theFacadeMayGoWhileABootIsPending)
{
    device.looksUntilBooted = 1000000;
    bool cancelled = false;
    const auto wait = [](AndroidRuntimeCLI *runtime, bool *ended) -> Task<> {
        try {
            co_await runtime->ensureRuntime();
        } catch (const AndroidRuntimeCancelled &) {
            *ended = true;
        }
    };
    wait(&*cli, &cancelled);
    fakes.settle();
    fakes.clock->advance(10s);
    fakes.settle();
    cli.reset();
    const auto calls = fakes.processes->calls().size();
    fakes.runUntil([&cancelled] { return cancelled; });
    EXPECT_LE(fakes.processes->calls().size(), calls + 1);
    EXPECT_EQ(fakes.clock->pending(), 0U);
    EXPECT_TRUE(fakes.processes->children().at(0)->isRunning());
}
