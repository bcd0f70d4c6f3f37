#include "LaunchFixture.h"

using namespace quillnest;
using namespace std::chrono_literals;

namespace
{

class AndroidLaunchTest : public LaunchFixture
{
protected:
    QString status() const { return store->statusMessage(); }
    qsizetype emulators() const { return fakes.processes->count(QStringLiteral("emulator/emulator @")); }
    qsizetype looks() const { return fakes.processes->count(QStringLiteral("sys.boot_completed")); }
    void waitForFailure()
    {
        fakes.runUntil([this] { return status().startsWith(QStringLiteral("Android launch failed")); });
    }
};

} // namespace

TEST_F(AndroidLaunchTest, aClickStartsAndroidInstallsTheAppAndOpensItsWindow)
{
    const auto app = addApp(QStringLiteral("Moon"));
    EXPECT_EQ(store->androidState(), State::sleeping);
    store->launch(app);
    EXPECT_EQ(status(), QStringLiteral("Starting Moon…"));
    EXPECT_EQ(store->launchingAppID(), app.id);
    EXPECT_EQ(store->androidState(), State::starting);
    EXPECT_TRUE(hasLogged(QStringLiteral("open requested app=Moon")));

    fakes.runUntil([&] { return registry->session(app.id) != nullptr; });
    EXPECT_EQ(registry->session(app.id)->package(), QStringLiteral("org.example.moon"));
    EXPECT_EQ(status(), QStringLiteral("Opened Moon"));
    EXPECT_EQ(store->launchingAppID(), std::nullopt);
    EXPECT_EQ(store->androidState(), State::ready);
    EXPECT_EQ(store->runningAppIDs(), QSet<QUuid>{app.id});
    EXPECT_EQ(emulators(), 1);
    EXPECT_EQ(logLines().filter(QStringLiteral("native window started app=Moon sinceOpen=")).size(), 1);
}

TEST_F(AndroidLaunchTest, theTimeSinceTheClickIsLoggedWithTwoDecimals)
{
    device.looksUntilBooted = 6;
    open(addApp(QStringLiteral("Moon")));
    const auto lines = logLines().filter(QStringLiteral("native window started"));
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(lines[0].contains(QRegularExpression(QStringLiteral("sinceOpen=[1-9]\\d*\\.\\d\\ds$"))))
        << lines[0].toStdString();
}

TEST_F(AndroidLaunchTest, aLaunchOnAReadyDeviceDoesNotShowStarting)
{
    deviceIsUp();
    makeStore();
    ASSERT_EQ(store->androidState(), State::ready);
    store->launch(addApp(QStringLiteral("Moon")));
    EXPECT_EQ(store->androidState(), State::ready);
}

TEST_F(AndroidLaunchTest, anAppThatIsOpenIsBroughtForward)
{
    deviceIsUp();
    registry->homePanel().makeContent = [] { return new QWidget; };
    const auto moon = addApp(QStringLiteral("Moon"));
    const auto star = addApp(QStringLiteral("Star"));
    auto &session = open(moon);
    session.hide();
    registry->setUnread(moon.id, true);
    registry->showMenuBarPopup(QPoint(10, 40));
    // Another launch is under way, and its mark is not this click's.
    cleanDevice();
    store->launch(star);
    store->launch(moon);
    EXPECT_TRUE(session.panel().isVisible());
    EXPECT_TRUE(store->unreadAppIDs().isEmpty());
    EXPECT_EQ(registry->menuBarPopupFrame(), std::nullopt);
    EXPECT_EQ(status(), QStringLiteral("Moon is open"));
    EXPECT_EQ(store->launchingAppID(), star.id);
    EXPECT_EQ(registry->sessions().size(), 1U);
}

TEST_F(AndroidLaunchTest, anAppWhoseWindowIsClosingIsOpenedAnewOnceThatHasEnded)
{
    deviceIsUp();
    const auto app = addApp(QStringLiteral("Moon"));
    open(app);
    registry->session(app.id)->close(QStringLiteral("test"));
    fakes.processes->forget();
    store->launch(app);
    EXPECT_EQ(status(), QStringLiteral("Starting Moon…"));
    EXPECT_EQ(store->launchingAppID(), app.id);
    ASSERT_TRUE(waitFor([&] {
        const auto *session = registry->session(app.id);
        return session && !session->isClosing();
    }));
    const auto lines = fakes.processes->lines();
    const auto first = [&lines](const char *text) { return lines.indexOf(lines.filter(QLatin1String(text)).value(0)); };
    EXPECT_GE(first("am force-stop"), 0);
    EXPECT_LT(first("am force-stop"), first("pm path")) << "the end of the old window would take the new one along";
}

TEST_F(AndroidLaunchTest, anyLaunchStopsTheCountToTheShutdown)
{
    deviceIsUp();
    const auto moon = addApp(QStringLiteral("Moon"));
    open(moon);
    registry->scheduleIdleShutdown();
    store->launch(moon);
    EXPECT_TRUE(hasLogged(QStringLiteral("idle: shutdown cancelled (app opened)")));
}

TEST_F(AndroidLaunchTest, oneAppAtATimeClosesTheOthersAtOnceEvenIfTheLaunchThenFails)
{
    deviceIsUp();
    fakes.settings->setValue(QStringLiteral("QuillnestSingleApp"), true);
    const auto moon = addApp(QStringLiteral("Moon"));
    const auto star = addApp(QStringLiteral("Star"));
    auto &session = open(moon);
    QFile::remove(star.sourcePath);
    store->launch(star);
    EXPECT_TRUE(session.isClosing());
    waitForFailure();
    EXPECT_TRUE(waitFor([this] { return registry->sessions().empty(); }));
}

TEST_F(AndroidLaunchTest, withSeveralAppsAllowedTheOthersStay)
{
    deviceIsUp();
    const auto moon = addApp(QStringLiteral("Moon"));
    const auto star = addApp(QStringLiteral("Star"));
    open(moon);
    open(star);
    EXPECT_EQ(store->runningAppIDs(), (QSet<QUuid>{moon.id, star.id}));
    EXPECT_FALSE(registry->session(moon.id)->isClosing());
}

TEST_F(AndroidLaunchTest, theFirstOfTwoLaunchesDoesNotTakeTheSecondsMark)
{
    const auto moon = addApp(QStringLiteral("Moon"));
    const auto star = addApp(QStringLiteral("Star"));
    std::vector<std::optional<QUuid>> marks;
    QObject::connect(store.get(), &AppLibraryStore::runningAppsChanged, store.get(), [&] {
        if (registry->session(moon.id) && !registry->session(star.id))
            marks.push_back(store->launchingAppID());
    });
    store->launch(moon);
    store->launch(star);
    EXPECT_EQ(store->launchingAppID(), star.id);
    fakes.runUntil([&] { return registry->sessions().size() == 2; });
    fakes.settle();
    ASSERT_FALSE(marks.empty());
    for (const auto &mark : marks)
        EXPECT_EQ(mark, star.id);
    EXPECT_EQ(store->launchingAppID(), std::nullopt);
    EXPECT_EQ(emulators(), 1);
}

TEST_F(AndroidLaunchTest, aFileThatHasVanishedFailsTheLaunchAndTheEntryStays)
{
    deviceIsUp();
    const auto app = addApp(QStringLiteral("Moon"));
    QFile::remove(app.sourcePath);
    store->launch(app);
    waitForFailure();
    EXPECT_TRUE(status().contains(QStringLiteral("failed to stat"))) << status().toStdString();
    EXPECT_EQ(store->launchingAppID(), std::nullopt);
    EXPECT_EQ(store->apps().size(), 1U);
    EXPECT_TRUE(status().startsWith(QStringLiteral("Android launch failed: The app's file is gone. ")));
    const auto description = status().mid(QStringLiteral("Android launch failed: ").size());
    EXPECT_EQ(store->launchFailure(app.id), description);
    EXPECT_TRUE(hasLogged(QStringLiteral("open failed app=Moon error=%1").arg(description)));
    // With a complete runtime the failed start stays on show.
    fakes.settle();
    EXPECT_EQ(store->androidState(), State::starting);
    // A new click starts from the top.
    fakes.writeFile(QStringLiteral("Apps/Moon.apk"), "content");
    open(app);
    EXPECT_EQ(status(), QStringLiteral("Opened Moon"));
    fakes.settle();
    EXPECT_FALSE(store->launchFailure(app.id));
}

TEST_F(AndroidLaunchTest, aFailedLaunchWithAnIncompleteRuntimeShowsThatItIsNotSetUp)
{
    const auto app = addApp(QStringLiteral("Moon"));
    QFile::remove(paths.adb());
    store->launch(app);
    waitForFailure();
    EXPECT_EQ(store->androidState(), State::notSetUp);
}

TEST_F(AndroidLaunchTest, aDeviceThatNeverBootsFailsTheLaunch)
{
    device.looksUntilBooted = 1000000;
    store->launch(addApp(QStringLiteral("Moon")));
    waitForFailure();
    EXPECT_EQ(registry->sessions().size(), 0U);
    EXPECT_EQ(store->launchingAppID(), std::nullopt);
}

TEST_F(AndroidLaunchTest, aWindowThatCannotBeOpenedFailsTheLaunch)
{
    deviceIsUp();
    QFile::remove(fakes.path(QStringLiteral("dev/bin/scrcpy")));
    store->launch(addApp(QStringLiteral("Moon")));
    waitForFailure();
    EXPECT_TRUE(status().contains(QStringLiteral("scrcpy"))) << status().toStdString();
    EXPECT_TRUE(store->runningAppIDs().isEmpty());
}

TEST_F(AndroidLaunchTest, theUserIsToldHowAWindowEnded)
{
    deviceIsUp();
    const auto moon = addApp(QStringLiteral("Moon"));
    open(moon).close(QStringLiteral("test"));
    EXPECT_TRUE(waitFor([this] { return status() == QStringLiteral("Closed Moon"); }));
    EXPECT_TRUE(store->runningAppIDs().isEmpty());
    fakes.processes->on(QStringLiteral(" push "), ScriptedProcesses::Answer{"no room", 1});
    store->launch(moon);
    fakes.runUntil([this] { return logLines().filter(QStringLiteral("native window started")).size() == 2; });
    EXPECT_TRUE(waitFor([this] { return status().startsWith(QStringLiteral("Moon stopped: ")); }));
    EXPECT_TRUE(status().contains(QStringLiteral("no room")));
}

TEST_F(AndroidLaunchTest, anAppThatEndsByItselfIsClosedAndTheDeviceStaysReady)
{
    deviceIsUp();
    const auto moon = addApp(QStringLiteral("Moon"));
    loopback.connect(open(moon));
    loopback.hangUp();
    EXPECT_TRUE(waitFor([this] { return status() == QStringLiteral("Closed Moon"); }));
    EXPECT_EQ(store->androidState(), State::ready);
}

TEST_F(AndroidLaunchTest, aDeviceThatDiesIsSaidToHaveStopped)
{
    deviceIsUp();
    const auto moon = addApp(QStringLiteral("Moon"));
    loopback.connect(open(moon));
    device = {};
    loopback.hangUp();
    EXPECT_TRUE(waitFor([this] {
        return status() == QStringLiteral("Android stopped, and Moon with it. Open Moon again to restart it.");
    })) << status().toStdString();
    EXPECT_EQ(store->androidState(), State::sleeping);
}

TEST_F(AndroidLaunchTest, aLaunchWaitsWhileTheDeviceIsBeingCleaned)
{
    deviceIsUp();
    const auto app = addApp(QStringLiteral("Moon"));
    cleanDevice();
    fakes.processes->forget();
    store->launch(app);
    for (int i = 0; i < 100; ++i) {
        fakes.clock->advance(20ms);
        fakes.settle();
    }
    EXPECT_TRUE(fakes.processes->calls().empty());
    EXPECT_EQ(store->launchingAppID(), app.id);
    deviceCleaned.finish();
    fakes.runUntil([&] { return registry->session(app.id) != nullptr; });
}

TEST_F(AndroidLaunchTest, anAppOfAnotherPlatformTouchesNothing)
{
    add({fakes.writeFile(QStringLiteral("Apps/Sun.ipa"), "")});
    fakes.processes->forget();
    store->launch(store->apps().at(0));
    fakes.settle();
    EXPECT_EQ(store->launchingAppID(), std::nullopt);
    EXPECT_TRUE(fakes.processes->calls().empty());
}

TEST_F(AndroidLaunchTest, aRequestFromOutsideOpensTheApp)
{
    deviceIsUp();
    const auto app = addApp(QStringLiteral("Moon"));
    Q_EMIT notifications->openAppRequest(uuidText(app.id));
    EXPECT_EQ(store->launchingAppID(), app.id);
}

TEST_F(AndroidLaunchTest, aStoreMayGoDuringALaunch)
{
    store->launch(addApp(QStringLiteral("Moon")));
    fakes.settle();
    store.reset();
    while (fakes.clock->advanceToNext())
        fakes.settle();
    EXPECT_TRUE(registry->sessions().empty());
}

// The state on show.

TEST_F(AndroidLaunchTest, aRefreshNeverOverridesAStart)
{
    const auto app = addApp(QStringLiteral("Moon"));
    deviceIsUp();
    cleanDevice();
    // One that is under way when the launch begins, and one that comes after it.
    store->refreshAndroidState();
    store->launch(app);
    store->refreshAndroidState();
    fakes.settle();
    EXPECT_EQ(store->androidState(), State::starting);
}

TEST_F(AndroidLaunchTest, aRefreshTellsWhetherTheDeviceIsUp)
{
    deviceIsUp();
    store->refreshAndroidState();
    fakes.settle();
    EXPECT_EQ(store->androidState(), State::ready);
    device = {};
    store->refreshAndroidState();
    fakes.settle();
    EXPECT_EQ(store->androidState(), State::sleeping);
    QFile::remove(paths.systemImage());
    store->refreshAndroidState();
    EXPECT_EQ(store->androidState(), State::notSetUp);
}

TEST_F(AndroidLaunchTest, aRefreshOfAnIncompleteRuntimeOverridesEvenAStart)
{
    cleanDevice();
    store->launch(addApp(QStringLiteral("Moon")));
    ASSERT_EQ(store->androidState(), State::starting);
    QFile::remove(paths.systemImage());
    store->refreshAndroidState();
    EXPECT_EQ(store->androidState(), State::notSetUp);
}

// The warm-up.

TEST_F(AndroidLaunchTest, aWarmUpStartsAndroidAndLetsItSleepAgainWhenNobodyUsesIt)
{
    store->prewarmAndroid();
    fakes.settle();
    EXPECT_EQ(store->androidState(), State::starting);
    EXPECT_TRUE(hasLogged(QStringLiteral("warm-up: starting Android in the background")));
    fakes.runUntil([this] { return store->androidState() == State::ready; });
    EXPECT_EQ(emulators(), 1);
    EXPECT_EQ(status(), QStringLiteral("Ready"));
    const auto lines = logLines().filter(QStringLiteral("warm-up: Android ready after "));
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(lines[0].contains(QRegularExpression(QStringLiteral("after \\d+\\.\\ds$")))) << lines[0].toStdString();
    EXPECT_TRUE(hasLogged(QStringLiteral("idle: Android stops in 5.0 min unless an app is opened")));
    fakes.clock->advance(5min);
    fakes.settle();
    EXPECT_EQ(fakes.processes->count(QStringLiteral("emu kill")), 1);
    EXPECT_EQ(store->androidState(), State::sleeping);
}

TEST_F(AndroidLaunchTest, aWarmUpOfABootedDeviceOnlyShowsItReady)
{
    deviceIsUp();
    store->prewarmAndroid();
    fakes.settle();
    EXPECT_EQ(store->androidState(), State::ready);
    EXPECT_EQ(logLines().filter(QStringLiteral("warm-up")).size(), 0);
    EXPECT_EQ(logLines().filter(QStringLiteral("idle:")).size(), 0);
    // The next one is free to run.
    device = {};
    store->prewarmAndroid();
    fakes.settle();
    EXPECT_EQ(store->androidState(), State::starting);
}

TEST_F(AndroidLaunchTest, oneWarmUpRunsAtATime)
{
    fakes.processes->forget();
    store->prewarmAndroid();
    store->prewarmAndroid();
    fakes.settle();
    store->prewarmAndroid();
    fakes.settle();
    EXPECT_EQ(logLines().filter(QStringLiteral("warm-up: starting")).size(), 1);
}

TEST_F(AndroidLaunchTest, aWarmUpThatIsSwitchedOffDoesNothingWhateverTheState)
{
    fakes.settings->setValue(QStringLiteral("QuillnestPrewarm"), false);
    fakes.processes->forget();
    store->prewarmAndroid();
    fakes.settle();
    deviceIsUp();
    store->prewarmAndroid();
    fakes.settle();
    EXPECT_TRUE(fakes.processes->calls().empty());
    EXPECT_EQ(store->androidState(), State::sleeping);
}

TEST_F(AndroidLaunchTest, thereIsNoWarmUpDuringALaunch)
{
    cleanDevice();
    store->launch(addApp(QStringLiteral("Moon")));
    fakes.processes->forget();
    store->prewarmAndroid();
    fakes.settle();
    EXPECT_TRUE(fakes.processes->calls().empty());
}

TEST_F(AndroidLaunchTest, thereIsNoWarmUpWithoutARuntimeOrWithAWindowOpen)
{
    deviceIsUp();
    open(addApp(QStringLiteral("Moon")));
    fakes.settle();
    const auto before = looks();
    store->prewarmAndroid();
    fakes.settle();
    EXPECT_EQ(looks(), before);
    registry->closeAll();
    EXPECT_TRUE(waitFor([this] { return registry->sessions().empty(); }));
    QFile::remove(paths.systemImage());
    store->prewarmAndroid();
    fakes.settle();
    EXPECT_EQ(looks(), before);
}

TEST_F(AndroidLaunchTest, aFailedWarmUpIsLoggedAndNotShown)
{
    device.looksUntilBooted = 1000000;
    store->prewarmAndroid();
    fakes.runUntil([this] { return !logLines().filter(QStringLiteral("warm-up failed: ")).isEmpty(); });
    fakes.settle();
    EXPECT_EQ(status(), QStringLiteral("Ready"));
    EXPECT_EQ(store->androidState(), State::starting);
    EXPECT_EQ(logLines().filter(QStringLiteral("idle:")).size(), 0);
    // Another one may be tried.
    store->prewarmAndroid();
    fakes.settle();
    EXPECT_EQ(logLines().filter(QStringLiteral("warm-up: starting")).size(), 2);
}

TEST_F(AndroidLaunchTest, aLaunchDuringAWarmUpSharesItsBootAndOpensTheWindow)
{
    device.looksUntilBooted = 4;
    const auto moon = addApp(QStringLiteral("Moon"));
    store->prewarmAndroid();
    fakes.runUntil([this] { return emulators() == 1; });
    store->launch(moon);
    EXPECT_EQ(store->androidState(), State::starting);
    fakes.runUntil([&] { return registry->session(moon.id) != nullptr; });
    fakes.settle();
    EXPECT_EQ(emulators(), 1);
    EXPECT_EQ(store->androidState(), State::ready);
    EXPECT_EQ(logLines().filter(QStringLiteral("warm-up: Android ready after")).size(), 1);
    // The warm-up has ended, so a later one may begin.
    registry->closeAll();
    ASSERT_TRUE(waitFor([this] { return registry->sessions().empty(); }));
    device = {};
    store->prewarmAndroid();
    fakes.settle();
    EXPECT_EQ(logLines().filter(QStringLiteral("warm-up: starting")).size(), 2);
}

TEST_F(AndroidLaunchTest, aLaunchAndAWarmUpShareTheFailureOfTheirBoot)
{
    device.looksUntilBooted = 100000;
    store->prewarmAndroid();
    fakes.runUntil([this] { return emulators() == 1; });
    store->launch(addApp(QStringLiteral("Moon")));
    waitForFailure();
    fakes.settle();
    EXPECT_EQ(status(), QStringLiteral("Android launch failed: Quillnest Android did not finish starting"));
    EXPECT_TRUE(hasLogged(QStringLiteral("warm-up failed: Quillnest Android did not finish starting")));
    EXPECT_EQ(emulators(), 1);
    EXPECT_EQ(store->androidState(), State::starting) << "a failed start is left to the next event";
}

// Locked apps.

TEST_F(AndroidLaunchTest, aLockedAppWaitsForItsOwner)
{
    deviceIsUp();
    const auto moon = addApp(QStringLiteral("Moon_2"));
    fakes.settings->setValue(QStringLiteral("QuillnestSingleApp"), true);
    locks->locked = {moon.id};
    const auto before = status();
    store->launch(moon);
    fakes.settle();
    EXPECT_EQ(locks->asked, QStringList{QStringLiteral("open Moon")});
    EXPECT_EQ(store->launchingAppID(), std::nullopt);
    EXPECT_EQ(status(), before);
    EXPECT_EQ(logLines().filter(QStringLiteral("open requested")).size(), 0);

    locks->waiting();
    EXPECT_EQ(store->launchingAppID(), moon.id);
    fakes.runUntil([&] { return registry->session(moon.id) != nullptr; });
}

TEST_F(AndroidLaunchTest, aRefusedOwnerEndsTheLaunchWithoutAWord)
{
    deviceIsUp();
    const auto moon = addApp(QStringLiteral("Moon"));
    const auto star = addApp(QStringLiteral("Star"));
    locks->locked = {moon.id};
    open(star);
    const auto before = status();
    store->launch(moon);
    // Nobody ever goes on.
    locks->waiting = {};
    fakes.settle();
    EXPECT_EQ(status(), before);
    EXPECT_FALSE(registry->session(star.id)->isClosing());
    EXPECT_EQ(registry->session(moon.id), nullptr);
}

TEST_F(AndroidLaunchTest, anAppThatIsNotLockedNeverAsks)
{
    deviceIsUp();
    locks->locked = {QUuid::createUuid()};
    open(addApp(QStringLiteral("Moon")));
    EXPECT_TRUE(locks->asked.isEmpty());
}

TEST_F(AndroidLaunchTest, aStoreMayGoWhileTheOwnerIsAsked)
{
    const auto moon = addApp(QStringLiteral("Moon"));
    locks->locked = {moon.id};
    store->launch(moon);
    store.reset();
    locks->waiting();
    SUCCEED();
}

TEST_F(AndroidLaunchTest, aRunningAppIsClosedFromItsMenu)
{
    deviceIsUp();
    const auto moon = addApp(QStringLiteral("Moon"));
    open(moon);
    store->close(moon);
    EXPECT_TRUE(waitFor([this] { return registry->sessions().empty(); }));
    EXPECT_EQ(status(), QStringLiteral("Closed Moon"));
    store->close(moon);
}

TEST_F(AndroidLaunchTest, anOpenWindowIsClosedBeforeItsAppIsUninstalled)
{
    deviceIsUp();
    const auto moon = addApp(QStringLiteral("Moon"));
    auto &session = open(moon);
    fakes.alerts->button = 0;
    store->confirmUninstall(moon);
    EXPECT_TRUE(session.isClosing());
    EXPECT_TRUE(waitFor([this] { return store->apps().empty(); }));
    EXPECT_EQ(fakes.processes->count(QStringLiteral("uninstall org.example.moon")), 1);
}
