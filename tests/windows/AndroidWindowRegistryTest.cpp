#include "windows/AndroidWindowRegistry.h"

#include "runtime/AndroidBridgeError.h"
#include "windows/WindowFixture.h"

#include <QCursor>
#include <QDialog>
#include <QSignalSpy>

#include <atomic>
#include <limits>
#include <thread>

using namespace quillnest;
using namespace std::chrono_literals;

namespace
{

class AndroidWindowRegistryTest : public WindowFixture
{
protected:
    void setMinutes(const QVariant &value)
    {
        fakes.settings->setValue(QStringLiteral("QuillnestIdleShutdownMinutes"), value);
    }
    void closeAndWait(AndroidWindowSession &session)
    {
        const auto before = ends.size();
        session.close(QStringLiteral("test"));
        EXPECT_TRUE(waitFor([&] { return ends.size() == before + 1; }));
    }
    qsizetype kills() const { return fakes.processes->count(QStringLiteral("emu kill")); }
    qsizetype processEnds() const { return fakes.processes->count(QStringLiteral("pkill")); }
    qsizetype forcedEnds() const { return fakes.processes->count(QStringLiteral("pkill -KILL")); }
    qsizetype idleLines() const { return logLines().filter(QStringLiteral("idle:")).size(); }
};

} // namespace

TEST_F(AndroidWindowRegistryTest, aSecondOpenRaisesTheWindowAndStartsNoClient)
{
    auto &session = open();
    session.hide();
    registry->setUnread(appID, true);
    int secondEnds = 0;
    auto &again = registry->open(
        appID, package, QStringLiteral("Example"), [&secondEnds](const AndroidWindowRegistry::End &) { ++secondEnds; });
    EXPECT_EQ(&again, &session);
    EXPECT_TRUE(session.panel().isVisible());
    EXPECT_TRUE(registry->unreadAppIDs().isEmpty());
    EXPECT_EQ(video->renderers.size(), 1U);
    EXPECT_EQ(logLines().filter(QStringLiteral("native window open")).size(), 1);
    // The first caller's callback stays, this one's is dropped.
    closeAndWait(session);
    EXPECT_EQ(ends.size(), 1U);
    EXPECT_EQ(secondEnds, 0);
}

TEST_F(AndroidWindowRegistryTest, openAnnouncesTheWindowAndLogsTheServer)
{
    QSignalSpy changed(notifications.get(), &ChangeNotifications::sessionsChanged);
    auto &session = open();
    EXPECT_EQ(changed.count(), 1);
    EXPECT_EQ(registry->session(appID), &session);
    EXPECT_EQ(registry->firstSession(), &session);
    EXPECT_EQ(registry->session(otherID), nullptr);
    EXPECT_TRUE(hasLogged(
        QStringLiteral("native window open package=org.example.app server=")
        + fakes.path(QStringLiteral("dev/share/scrcpy/scrcpy-server"))));
    closeAndWait(session);
    EXPECT_EQ(changed.count(), 2);
    EXPECT_EQ(registry->firstSession(), nullptr);
}

TEST_F(AndroidWindowRegistryTest, withoutAServerOpenThrowsAndLeavesEverythingAsItWas)
{
    QFile::remove(fakes.path(QStringLiteral("dev/bin/scrcpy")));
    registry->scheduleIdleShutdown();
    QSignalSpy changed(notifications.get(), &ChangeNotifications::sessionsChanged);
    EXPECT_THROW(registry->open(appID, package, QStringLiteral("Example"), {}), AndroidBridgeError);
    EXPECT_TRUE(registry->sessions().empty());
    EXPECT_EQ(changed.count(), 0);
    // The idle time goes on.
    pass(5min);
    EXPECT_EQ(kills(), 1);
}

TEST_F(AndroidWindowRegistryTest, anAppWhoseWindowIsClosingGetsANewOneThatTheOldOnesEndLeavesAlone)
{
    auto &first = open();
    first.close(QStringLiteral("test"));
    auto &second = open();
    ASSERT_NE(&second, &first);
    EXPECT_TRUE(second.isVisible());
    EXPECT_FALSE(first.isVisible()) << "the dying window isn't raised";
    EXPECT_EQ(registry->session(appID), &second);
    EXPECT_EQ(registry->sessions().size(), 1U);
    // Both openers are told of their own window's end.
    ASSERT_TRUE(waitFor([this] { return ends.size() == 1; }));
    EXPECT_EQ(registry->session(appID), &second);
    EXPECT_FALSE(second.isClosing());
    EXPECT_EQ(idleLines(), 0) << "a window is open";
    closeAndWait(second);
    EXPECT_EQ(registry->session(appID), nullptr);
    EXPECT_EQ(idleLines(), 1);
}

TEST_F(AndroidWindowRegistryTest, theEndOfAnAppsWindowCanBeAwaited)
{
    bool isOver = false;
    const auto wait = [](AndroidWindowRegistry &windows, QUuid app, bool &over) -> Task<> {
        auto waiting = windows.untilEnded(app);
        co_await waiting;
        over = true;
    };
    wait(*registry, appID, isOver);
    EXPECT_TRUE(isOver) << "there is no window";
    auto &session = open();
    isOver = false;
    wait(*registry, appID, isOver);
    EXPECT_TRUE(isOver) << "there is one, and it stays";

    isOver = false;
    session.close(QStringLiteral("test"));
    wait(*registry, appID, isOver);
    EXPECT_FALSE(isOver);
    bool otherIsOver = false;
    wait(*registry, otherID, otherIsOver);
    EXPECT_TRUE(otherIsOver);
    ASSERT_TRUE(waitFor([&isOver] { return isOver; }));
    EXPECT_EQ(ends.size(), 1U);
    EXPECT_EQ(forceStops(), 1) << "the device has been told";
}

TEST_F(AndroidWindowRegistryTest, anAppIsNotOverBeforeTheDeviceHasBeenToldToStopIt)
{
    auto &session = open();
    bool isOver = false;
    const auto wait = [](AndroidWindowRegistry &windows, QUuid app, bool &over) -> Task<> {
        auto waiting = windows.untilEnded(app);
        co_await waiting;
        over = true;
    };
    session.close(QStringLiteral("test"));
    wait(*registry, appID, isOver);
    // The stream's end alone: the main thread has its turns, and the background none.
    for (int turn = 0; turn < 2000 && ends.empty(); ++turn) {
        std::this_thread::sleep_for(1ms);
        fakes.executor->drainMain();
    }
    ASSERT_EQ(ends.size(), 1U);
    EXPECT_EQ(forceStops(), 0);
    EXPECT_FALSE(isOver);
    fakes.settle();
    EXPECT_EQ(forceStops(), 1);
    EXPECT_TRUE(isOver);
}

TEST_F(AndroidWindowRegistryTest, whoeverWaitsForAnEndIsNotLeftWaitingByTheEndOfAll)
{
    auto &session = open();
    bool isOver = false;
    const auto wait = [](AndroidWindowRegistry &windows, QUuid app, bool &over) -> Task<> {
        auto waiting = windows.untilEnded(app);
        co_await waiting;
        over = true;
    };
    session.close(QStringLiteral("test"));
    wait(*registry, appID, isOver);
    EXPECT_FALSE(isOver);
    registry.reset();
    EXPECT_TRUE(isOver);
}

TEST_F(AndroidWindowRegistryTest, noThreadOfAStreamOutlivesTheRegistry)
{
    std::atomic_bool hasBegun = false;
    std::atomic_bool hasEnded = false;
    fakes.processes->on(QStringLiteral(" push "), [&](const ChildCommand &) {
        hasBegun = true;
        // An adb that takes a while to notice that nobody needs it any more.
        std::this_thread::sleep_for(300ms);
        hasEnded = true;
        return ScriptedProcesses::Answer{"interrupted", 1};
    });
    open();
    ASSERT_TRUE(waitFor([&hasBegun] { return hasBegun.load(); }));
    registry.reset();
    EXPECT_TRUE(hasEnded);
}

TEST_F(AndroidWindowRegistryTest, whatHappensToWindowsIsToldToWhoeverCares)
{
    // The window that opens takes the keyboard, at which the others would hide.
    fakes.settings->setValue(QStringLiteral("QuillnestAutoHide"), false);
    QStringList told;
    const auto &events = registry->events();
    const auto note = [&told](const QString &what) {
        return [&told, what](const AppSession *session) {
            told.append(what + QLatin1Char(' ') + session->package().section(QLatin1Char('.'), -1));
        };
    };
    QObject::connect(&events, &SessionEvents::opened, &other, note(QStringLiteral("opened")));
    QObject::connect(&events, &SessionEvents::shown, &other, note(QStringLiteral("shown")));
    QObject::connect(&events, &SessionEvents::hidden, &other, note(QStringLiteral("hidden")));
    QObject::connect(
        &events, &SessionEvents::ended, &other,
        [&told](const AppSession *session, const std::optional<QString> &error) {
            told.append(
                QStringLiteral("ended %1 %2")
                    .arg(session->package().section(QLatin1Char('.'), -1), error.value_or(QStringLiteral("well"))));
        });
    auto &first = open();
    auto &second = open(otherID, otherPackage);
    // What fails later on is the third one, and not a push of these that comes late.
    ASSERT_TRUE(waitFor([this] { return device.servers() == 2; }));
    first.hide();
    first.hide();
    first.show();
    closeAndWait(second);
    fakes.processes->on(QStringLiteral(" push "), ScriptedProcesses::Answer{"no room", 1});
    open(QUuid::createUuid(), QStringLiteral("org.example.third"));
    ASSERT_TRUE(waitFor([this] { return ends.size() == 2; }));
    EXPECT_EQ(
        told.join(QLatin1Char(',')).toStdString(),
        "opened app,shown app,opened other,shown other,hidden app,shown app,hidden other,ended other well,"
        "opened third,shown third,hidden third,"
        "ended third Could not connect to Android: failed(\"push server: no room\")");
}

TEST_F(AndroidWindowRegistryTest, theLauncherGivesItsPlaceToTheWindowThatOpens)
{
    registry->homePanel().makeContent = [] { return new QWidget; };
    registry->showMenuBarPopup(QPoint(150, 160));
    auto &session = open();
    EXPECT_EQ(session.panel().geometry().topLeft(), QPoint(150, 160));
    EXPECT_EQ(registry->menuBarPopupFrame(), std::nullopt);
}

TEST_F(AndroidWindowRegistryTest, closeOthersLeavesTheOneThatIsWanted)
{
    auto &kept = open();
    auto &closed = open(otherID, otherPackage);
    registry->closeOthers(appID);
    fakes.settle();
    EXPECT_FALSE(kept.isClosing());
    EXPECT_EQ(forceStops(), 0);
    ASSERT_TRUE(waitFor([this] { return ends.size() == 1; }));
    EXPECT_EQ(registry->session(otherID), nullptr);
    (void)closed;
    // The window's own, and one for an app that comes back while its stream ends.
    EXPECT_EQ(forceStops(otherPackage), 2);
    EXPECT_TRUE(hasLogged(QStringLiteral("close package=org.example.other reason=another app opened")));
    EXPECT_TRUE(hasLogged(QStringLiteral("single-app mode: closed org.example.other")));
}

TEST_F(AndroidWindowRegistryTest, closeAllClosesAll)
{
    open();
    open(otherID, otherPackage);
    registry->closeAll();
    EXPECT_TRUE(waitFor([this] { return ends.size() == 2; }));
    EXPECT_TRUE(registry->sessions().empty());
    EXPECT_EQ(logLines().filter(QStringLiteral("reason=close all")).size(), 2);
}

TEST_F(AndroidWindowRegistryTest, singleAppModeIsOnUnlessItIsSwitchedOff)
{
    const auto key = QStringLiteral("QuillnestSingleApp");
    EXPECT_TRUE(registry->singleAppMode());
    fakes.settings->setValue(key, QStringLiteral("no"));
    EXPECT_TRUE(registry->singleAppMode());
    fakes.settings->setValue(key, false);
    EXPECT_FALSE(registry->singleAppMode());
    fakes.settings->remove(key);
    EXPECT_TRUE(registry->singleAppMode());
}

TEST_F(AndroidWindowRegistryTest, idleMinutesAreFiveUnlessANumberIsSet)
{
    EXPECT_EQ(registry->idleShutdownMinutes(), 5.0);
    setMinutes(QStringLiteral("7"));
    EXPECT_EQ(registry->idleShutdownMinutes(), 5.0);
    setMinutes(true);
    EXPECT_EQ(registry->idleShutdownMinutes(), 5.0);
    setMinutes(2.5);
    EXPECT_EQ(registry->idleShutdownMinutes(), 2.5);
    setMinutes(0.0);
    EXPECT_EQ(registry->idleShutdownMinutes(), 0.0);
}

TEST_F(AndroidWindowRegistryTest, theLastWindowsEndStopsAndroidAfterTheIdleTime)
{
    QSignalSpy stopped(notifications.get(), &ChangeNotifications::runtimeChanged);
    auto &first = open();
    auto &second = open(otherID, otherPackage);
    closeAndWait(first);
    EXPECT_EQ(idleLines(), 0);
    closeAndWait(second);
    EXPECT_TRUE(hasLogged(QStringLiteral("idle: Android stops in 5.0 min unless an app is opened")));
    pass(5min - 10ms);
    EXPECT_EQ(stopped.count(), 0);
    EXPECT_EQ(kills(), 0);
    pass(10ms);
    EXPECT_EQ(stopped.count(), 1);
    EXPECT_EQ(kills(), 1);
    EXPECT_TRUE(hasLogged(QStringLiteral("stopping Android runtime (idle 5.0 min)")));
    const auto lines = fakes.processes->lines();
    EXPECT_LT(
        lines.indexOf(lines.filter(QStringLiteral("pm list packages -3")).value(0)),
        lines.indexOf(lines.filter(QStringLiteral("emu kill")).value(0)));
}

TEST_F(AndroidWindowRegistryTest, aBrokenNumberOfMinutesIsKeptToTheSecond)
{
    setMinutes(0.25);
    registry->scheduleIdleShutdown();
    EXPECT_TRUE(hasLogged(QStringLiteral("idle: Android stops in 0.25 min unless an app is opened")));
    pass(15s - 10ms);
    EXPECT_EQ(kills(), 0);
    pass(10ms);
    EXPECT_EQ(kills(), 1);
}

TEST_F(AndroidWindowRegistryTest, withNoIdleMinutesNothingIsLoggedAndNoTimerRuns)
{
    for (const double minutes : {0.0, -1.0}) {
        setMinutes(minutes);
        closeAndWait(open());
        EXPECT_EQ(idleLines(), 0);
        EXPECT_EQ(fakes.clock->pending(), 0U);
    }
}

TEST_F(AndroidWindowRegistryTest, aShutdownThatIsCancelledIsLoggedThoughItsTimerWasTakenBack)
{
    const auto cancelled = [this] { return logLines().filter(QStringLiteral("idle: shutdown cancelled")).size(); };
    registry->scheduleIdleShutdown();
    setMinutes(0.0);
    registry->scheduleIdleShutdown();
    registry->cancelIdleShutdown();
    EXPECT_EQ(cancelled(), 1);
    registry->cancelIdleShutdown();
    EXPECT_EQ(cancelled(), 1);
    // Nor does it matter that it has run out.
    setMinutes(1.0);
    registry->scheduleIdleShutdown();
    pass(2min);
    registry->cancelIdleShutdown();
    EXPECT_EQ(cancelled(), 2);
}

TEST_F(AndroidWindowRegistryTest, moreMinutesThanATimerCanCountAreManyAllTheSame)
{
    for (const double minutes : {71583.0, 1e18, std::numeric_limits<double>::infinity()}) {
        setMinutes(minutes);
        registry->scheduleIdleShutdown();
        fakes.clock->advance(24h);
        fakes.settle();
        EXPECT_EQ(kills(), 0) << minutes;
    }
}

TEST_F(AndroidWindowRegistryTest, aNewScheduleReplacesTheOldOne)
{
    registry->scheduleIdleShutdown();
    pass(4min);
    registry->scheduleIdleShutdown();
    pass(4min);
    EXPECT_EQ(kills(), 0);
    pass(1min);
    EXPECT_EQ(kills(), 1);
    setMinutes(0.0);
    registry->scheduleIdleShutdown();
    pass(30min);
    EXPECT_EQ(kills(), 1);
}

TEST_F(AndroidWindowRegistryTest, anAppThatIsOpenedInTimeCancelsTheShutdown)
{
    registry->scheduleIdleShutdown();
    pass(4min);
    open();
    EXPECT_TRUE(hasLogged(QStringLiteral("idle: shutdown cancelled (app opened)")));
    pass(30min);
    EXPECT_EQ(kills(), 0);
}

TEST_F(AndroidWindowRegistryTest, withNoTimerThereIsNothingToCancel)
{
    registry->cancelIdleShutdown();
    EXPECT_EQ(idleLines(), 0);
}

TEST_F(AndroidWindowRegistryTest, aTimerThatFiresWithAWindowOpenDoesNothing)
{
    QSignalSpy stopped(notifications.get(), &ChangeNotifications::runtimeChanged);
    open();
    registry->scheduleIdleShutdown();
    pass(6min);
    EXPECT_EQ(kills(), 0);
    EXPECT_EQ(stopped.count(), 0);
}

TEST_F(AndroidWindowRegistryTest, stoppingAndroidMayWaitUntilTheDeviceHasBeenTold)
{
    registry->stopAndroid(QStringLiteral("a reason"), false);
    EXPECT_EQ(kills(), 0);
    fakes.settle();
    EXPECT_EQ(kills(), 1);
    registry->stopAndroid(QStringLiteral("another"), true);
    EXPECT_EQ(kills(), 2);
    EXPECT_TRUE(hasLogged(QStringLiteral("stopping Android runtime (a reason)")));
    EXPECT_EQ(processEnds(), 0) << "a device that obeys needs no more";
}

TEST_F(AndroidWindowRegistryTest, onlyOurOwnDeviceIsToldToStop)
{
    for (const auto *name : {"Pixel_7\r\nOK\r\n", "", "KO: not authenticated\r\n"}) {
        fakes.processes->on(QStringLiteral("emu avd name"), QByteArray(name));
        registry->stopAndroid(QStringLiteral("a reason"), false);
        fakes.settle();
        registry->stopAndroid(QStringLiteral("another"), true);
    }
    EXPECT_EQ(kills(), 0);
    EXPECT_EQ(fakes.processes->count(QStringLiteral("force-stop")), 0);
    EXPECT_TRUE(hasLogged(QStringLiteral("the device on port 5556 is somebody else's and is left alone")));
    // One of ours that has no console yet is asked by its process.
    EXPECT_EQ(processEnds(), 3);
    EXPECT_EQ(forcedEnds(), 0);
}

TEST_F(AndroidWindowRegistryTest, aDeviceThatDoesNotAnswerIsEndedByItsProcessWhenNobodyCanWait)
{
    std::vector<std::optional<std::chrono::milliseconds>> limits;
    fakes.processes->on(QStringLiteral(" emu "), [&limits](const ChildCommand &command) {
        limits.push_back(command.limit);
        return ScriptedProcesses::Answer{.status = 137, .tookTooLong = true};
    });
    registry->stopAndroid(QStringLiteral("a reason"), true);
    EXPECT_EQ(forcedEnds(), 1);
    EXPECT_EQ(fakes.processes->count(QStringLiteral("-f -- @Quillnest.* -port 5556 ")), 1);
    // The same when it says its name and stands still then.
    fakes.processes->on(QStringLiteral("emu avd name"), QByteArray("Quillnest-33\r\nOK\r\n"));
    registry->stopAndroid(QStringLiteral("a reason"), true);
    EXPECT_EQ(forcedEnds(), 2);
    ASSERT_EQ(limits.size(), 2U);
    for (const auto &limit : limits)
        EXPECT_EQ(limit, std::chrono::milliseconds(2500));
}

TEST_F(AndroidWindowRegistryTest, unreadMarksAreAnnouncedOnlyWhenTheyChange)
{
    QSignalSpy changed(notifications.get(), &ChangeNotifications::unreadChanged);
    registry->setUnread(appID, false);
    EXPECT_EQ(changed.count(), 0);
    registry->setUnread(appID, true);
    registry->setUnread(appID, true);
    EXPECT_EQ(changed.count(), 1);
    EXPECT_TRUE(registry->unreadAppIDs().contains(appID));
    registry->setUnread(otherID, false);
    EXPECT_EQ(changed.count(), 1);
    registry->setUnread(appID, false);
    EXPECT_EQ(changed.count(), 2);
    EXPECT_TRUE(registry->unreadAppIDs().isEmpty());
}

TEST_F(AndroidWindowRegistryTest, aSizeIsAppliedToAllWindowsAndToThoseToCome)
{
    auto &first = open();
    auto &second = open(otherID, otherPackage);
    registry->applySize(QuillnestLayout::presets[3]);
    EXPECT_EQ(first.panel().size(), QSize(380, 756));
    EXPECT_EQ(second.panel().size(), QSize(380, 756));
    EXPECT_EQ(QuillnestLayout::size(*fakes.settings), QSizeF(380, 756));
    EXPECT_EQ(open(QUuid::createUuid(), QStringLiteral("org.example.third")).panel().size(), QSize(380, 756));
}

// The launcher as a window.

TEST_F(AndroidWindowRegistryTest, withoutContentThereIsNoLauncherWindow)
{
    registry->showMenuBarPopup(std::nullopt);
    EXPECT_EQ(registry->menuBarPopupFrame(), std::nullopt);
    EXPECT_FALSE(hasLogged(QStringLiteral("home page shown")));
    registry->closeMenuBarPopup();
}

TEST_F(AndroidWindowRegistryTest, theLauncherStandsAtTheTopRightOrWhereItIsWanted)
{
    registry->homePanel().makeContent = [] { return new QWidget; };
    registry->showMenuBarPopup(std::nullopt);
    EXPECT_EQ(registry->menuBarPopupFrame(), QRect(1600 - 390 - 12, 36, 390, 760));
    registry->showMenuBarPopup(QPoint(50, 60));
    EXPECT_EQ(registry->menuBarPopupFrame(), QRect(50, 60, 390, 760));
    EXPECT_EQ(logLines().filter(QStringLiteral("home page shown")).size(), 2);
    QuillnestLayout::setSize(*fakes.settings, {420, 700});
    registry->showMenuBarPopup(std::nullopt);
    // As wide as the app windows, and never lower than it is by itself.
    EXPECT_EQ(registry->menuBarPopupFrame(), QRect(1600 - 420 - 12, 36, 420, 760));
    QuillnestLayout::setSize(*fakes.settings, {320, 456});
    registry->showMenuBarPopup(std::nullopt);
    EXPECT_EQ(registry->menuBarPopupFrame(), QRect(1600 - 390 - 12, 36, 390, 760));
    registry->closeMenuBarPopup();
    EXPECT_EQ(registry->menuBarPopupFrame(), std::nullopt);
}

TEST_F(AndroidWindowRegistryTest, theLaunchersContentIsMadeOnce)
{
    int made = 0;
    registry->homePanel().makeContent = [&made] {
        ++made;
        return new QWidget;
    };
    registry->showMenuBarPopup(std::nullopt);
    registry->closeMenuBarPopup();
    registry->showMenuBarPopup(std::nullopt);
    EXPECT_EQ(made, 1);
}

TEST_F(AndroidWindowRegistryTest, theLauncherGoesWhenItLosesTheKeyboardOrIsClosed)
{
    registry->homePanel().makeContent = [] { return new QWidget; };
    registry->showMenuBarPopup(QPoint(50, 60));
    auto *panel = registry->homePanel().panel();
    ASSERT_TRUE(giveKeyboard(fakes, *panel));
    takeKeyboard();
    EXPECT_TRUE(waitFor([panel] { return !panel->isVisible(); }));
    registry->showMenuBarPopup(QPoint(50, 60));
    panel->close();
    EXPECT_FALSE(panel->isVisible());
}

TEST_F(AndroidWindowRegistryTest, theLauncherFitsItsScreenAndStandsAboveAll)
{
    registry->homePanel().makeContent = [] { return new QWidget; };
    fakes.screens->screens = {{QRect(0, 0, 1280, 720), QRect(0, 0, 1280, 680), 1.0}};
    registry->showMenuBarPopup(std::nullopt);
    EXPECT_EQ(registry->menuBarPopupFrame(), QRect(1280 - 390 - 12, 0, 390, 680));
    registry->showMenuBarPopup(QPoint(1200, 600));
    EXPECT_EQ(registry->menuBarPopupFrame(), QRect(890, 0, 390, 680));
    EXPECT_TRUE(registry->homePanel().panel()->isFloating());
}

TEST_F(AndroidWindowRegistryTest, theLauncherStaysWhileItsOwnDialogHasTheKeyboardAndComesBackAfterIt)
{
    registry->homePanel().makeContent = [] { return new QWidget; };
    registry->showMenuBarPopup(QPoint(50, 60));
    auto *panel = registry->homePanel().panel();
    ASSERT_TRUE(giveKeyboard(fakes, *panel));
    {
        QDialog dialog;
        dialog.setWindowModality(Qt::ApplicationModal);
        dialog.show();
        ASSERT_TRUE(giveKeyboard(fakes, dialog));
        pass(1s);
    }
    pass(100ms);
    EXPECT_TRUE(panel->isVisible());
    EXPECT_TRUE(waitFor([panel] { return panel->isActiveWindow(); }));
    // From then on it goes as ever.
    takeKeyboard();
    EXPECT_TRUE(waitFor([panel] { return !panel->isVisible(); }));
}

TEST_F(AndroidWindowRegistryTest, theLauncherStaysWhileSomethingMayBeDraggedToIt)
{
    registry->homePanel().makeContent = [] { return new QWidget; };
    registry->showMenuBarPopup(QPoint(50, 60));
    auto *panel = registry->homePanel().panel();
    const auto dragTo = [&](QPoint point) {
        ASSERT_TRUE(giveKeyboard(fakes, *panel));
        fakes.screens->buttonDown = true;
        takeKeyboard();
        pass(2s);
        EXPECT_TRUE(panel->isVisible());
        QCursor::setPos(point);
        ASSERT_TRUE(waitFor([point] { return QCursor::pos() == point; }));
        fakes.screens->buttonDown = false;
        pass(100ms);
    };
    dragTo({100, 200});
    EXPECT_TRUE(waitFor([panel] { return panel->isActiveWindow(); })) << "what was dropped there is seen";
    dragTo({600, 500});
    EXPECT_FALSE(panel->isVisible());
    // A keyboard that goes elsewhere while the mouse happens to be here is no drag.
    registry->showMenuBarPopup(QPoint(50, 60));
    ASSERT_TRUE(giveKeyboard(fakes, *panel));
    QCursor::setPos(100, 200);
    takeKeyboard();
    EXPECT_TRUE(waitFor([panel] { return !panel->isVisible(); }));
}

TEST_F(AndroidWindowRegistryTest, aWindowDoesNotOpenJustOverAnother)
{
    registry->pendingAnchor = QRect(50, 60, 390, 760);
    const auto &first = open();
    registry->pendingAnchor = QRect(50, 60, 390, 760);
    const auto &second = open(otherID, QStringLiteral("org.example.other"));
    EXPECT_EQ(first.panel().frame().topLeft(), QPoint(50, 60));
    EXPECT_EQ(second.panel().frame().topLeft(), QPoint(74, 84));
}

TEST_F(AndroidWindowRegistryTest, whatPlaysIsAnnounced)
{
    int changes = 0;
    QObject::connect(notifications.get(), &ChangeNotifications::mediaChanged, [&changes] { ++changes; });
    const AndroidMedia song{QStringLiteral("Song"), QStringLiteral("Singer"), true};
    registry->setNowPlaying(song, appID);
    ASSERT_TRUE(registry->nowPlaying());
    EXPECT_EQ(registry->nowPlaying()->appID, appID);
    EXPECT_EQ(registry->nowPlaying()->media, song);
    // The same again is a report as well.
    registry->setNowPlaying(song, appID);
    EXPECT_EQ(changes, 2);
    registry->setNowPlaying(song, otherID);
    EXPECT_EQ(registry->nowPlaying()->appID, otherID);
    registry->setNowPlaying(std::nullopt, otherID);
    EXPECT_FALSE(registry->nowPlaying());
    EXPECT_EQ(changes, 4);
}

TEST_F(AndroidWindowRegistryTest, theSilenceOfAnAppThatIsNotTheCurrentOneLeavesWhatPlaysAlone)
{
    int changes = 0;
    registry->setNowPlaying(AndroidMedia{QStringLiteral("Song"), QString(), false}, appID);
    QObject::connect(notifications.get(), &ChangeNotifications::mediaChanged, [&changes] { ++changes; });
    registry->setNowPlaying(std::nullopt, otherID);
    EXPECT_EQ(registry->nowPlaying()->appID, appID);
    registry->setNowPlaying(std::nullopt, appID);
    registry->setNowPlaying(std::nullopt, appID);
    EXPECT_EQ(changes, 1);
}
