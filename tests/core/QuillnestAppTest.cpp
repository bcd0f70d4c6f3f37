#include "core/QuillnestApp.h"

#include "LaunchFixture.h"
#include "core/LoginItem.h"
#include "runtime/DeviceTweaks.h"
#include "windows/AndroidPlayerView.h"

#include <QAbstractButton>
#include <QApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace quillnest;
using namespace std::chrono_literals;

namespace
{

class FakeDiagnostics : public DiagnosticsPort
{
public:
    bool serve(std::function<QByteArray()> given) override
    {
        report = std::move(given);
        return true;
    }
    std::optional<QByteArray> ask() override { return std::nullopt; }

    std::function<QByteArray()> report;
};

/// The whole application on scripted ground. The library is filled by the fixture's own store, as an earlier run would
/// have left it.
class QuillnestAppTest : public LaunchFixture
{
protected:
    QuillnestAppTest() { fakes.platform.diagnostics = diagnostics; }

    ~QuillnestAppTest() override { app.reset(); }

    void start(const QStringList &arguments = {})
    {
        fakes.processes->forget();
        app = std::make_unique<QuillnestApp>(fakes.platform);
        app->start(
            QStringList{QStringLiteral("quillnest")} + arguments,
            {.makePanel = [] { return new QWidget; },
             .paintPanel = [] { return QImage(20, 10, QImage::Format_RGB32); },
             .paintGlyph = [] { return QImage(8, 8, QImage::Format_RGB32); },
             .quit = [this] { ++quits; }});
    }

    /// As another start would.
    void knock(const QStringList &arguments, const QString &folder = QStringLiteral("/")) const
    {
        Q_EMIT fakes.door->knocked(QStringList{QStringLiteral("quillnest")} + arguments, folder);
    }

    int quits = 0;

    qsizetype count(const char *text) const { return fakes.processes->count(QLatin1String(text)); }

    std::shared_ptr<FakeDiagnostics> diagnostics = std::make_shared<FakeDiagnostics>();
    std::unique_ptr<QuillnestApp> app;
};

} // namespace

TEST_F(QuillnestAppTest, aChangeOfMicrophoneAndCameraStopsTheDeviceForTheNextStartToHaveThem)
{
    deviceIsUp();
    start();
    fakes.settle();
    fakes.processes->forget();
    fakes.settings->setValue(QStringLiteral("QuillnestMicCamera"), true);
    fakes.settle();
    EXPECT_EQ(count("emu kill"), 1);
    EXPECT_TRUE(hasLogged(QStringLiteral("stopping Android runtime (microphone/camera setting changed)")));
    const auto config = *paths.avdHome + QLatin1Char('/') + paths.avdName + QStringLiteral(".avd/config.ini");
    EXPECT_TRUE(fakes.readFile(config).value_or(QByteArray()).contains("hw.audioInput=yes"));
    QFile::remove(paths.systemImage());
    fakes.settings->setValue(QStringLiteral("QuillnestMicCamera"), false);
    fakes.settle();
    EXPECT_EQ(count("emu kill"), 1) << "nothing is there to be stopped";
}

TEST_F(QuillnestAppTest, aLaunchThatWaitedForTheCleaningIsNotPutToSleep)
{
    deviceIsUp();
    const auto moon = addApp(QStringLiteral("Moon"));
    start();
    app->store().launch(moon);
    fakes.runUntil([&] { return app->windows().session(moon.id) != nullptr; });
    EXPECT_FALSE(logLines().join(u'\n').contains(QStringLiteral("idle: Android stops")));
}

TEST_F(QuillnestAppTest, quittingWhileTheCleaningWaitsTouchesNothingMore)
{
    deviceIsUp();
    start();
    // The device is looked at; a setting that changes meanwhile is on its way to it when the cleaning's turn comes.
    app->device().add(
        {.stage = DeviceTweaks::Stage::network,
         .apply = [](const AndroidCommands &) {},
         .settings = {QStringLiteral("Some.setting")}});
    fakes.settings->setValue(QStringLiteral("Some.setting"), true);
    fakes.executor->drainMain();
    while (count("shell pkill -f") == 0 && fakes.executor->runOneInBackground()) { }
    fakes.executor->drainMain();
    app.reset();
    const auto lines = logLines().size();
    fakes.settle();
    EXPECT_EQ(logLines().size(), lines);
    EXPECT_FALSE(logLines().join(u'\n').contains(QStringLiteral("cleaning the device failed")));
}

TEST_F(QuillnestAppTest, aDeviceThatAnEarlierRunLeftIsCleanedAndSleepsWhenNobodyUsesIt)
{
    deviceIsUp();
    start();
    fakes.settle();
    const auto lines = fakes.processes->lines();
    const auto first = [&lines](const char *text) { return lines.indexOf(lines.filter(QLatin1String(text)).value(0)); };
    EXPECT_EQ(count("shell pkill -f com.genymobile.scrcpy.Server"), 1);
    EXPECT_LT(first("shell pkill -f"), first("am force-stop"));
    EXPECT_LT(first("am force-stop"), first("media_session volume"));
    EXPECT_TRUE(hasLogged(QStringLiteral("idle: Android stops in 5.0 min unless an app is opened")));
    EXPECT_EQ(app->store().androidState(), State::ready);
}

TEST_F(QuillnestAppTest, aCleaningThatFailsHoldsUpNoLaunch)
{
    deviceIsUp();
    const auto moon = addApp(QStringLiteral("Moon"));
    fakes.processes->on(QStringLiteral("shell pkill -f"), [](const ChildCommand &) -> ScriptedProcesses::Answer {
        throw std::runtime_error("no memory");
    });
    start();
    app->store().launch(moon);
    fakes.runUntil([&] { return app->windows().session(moon.id) != nullptr; });
    EXPECT_TRUE(hasLogged(QStringLiteral("cleaning the device failed error=no memory")));
}

TEST_F(QuillnestAppTest, androidIsStartedAsSoonAsItsDownloadIsComplete)
{
    const auto image = AndroidRuntimePaths::managed(fakes.platform, 35).systemImage();
    QFile::remove(image);
    start();
    fakes.settle();
    app->store().refreshAndroidState();
    EXPECT_EQ(app->store().androidState(), State::notSetUp);
    install(35);
    app->provisioner().prepare();
    fakes.settle();
    EXPECT_TRUE(hasLogged(QStringLiteral("warm-up: starting Android in the background")));
}

TEST_F(QuillnestAppTest, withoutADeviceThereIsNothingToCleanButTheIdleTimeRuns)
{
    start();
    fakes.settle();
    EXPECT_EQ(count("shell pkill"), 0);
    EXPECT_EQ(count("media_session volume"), 0);
    EXPECT_TRUE(hasLogged(QStringLiteral("idle: Android stops in 5.0 min unless an app is opened")));
}

TEST_F(QuillnestAppTest, serversThatAnEarlierRunLeftOnThisSideAreEnded)
{
    start();
    EXPECT_EQ(count("/usr/bin/pkill"), 1);
    EXPECT_EQ(count("-s emulator-5556 shell .*com\\.genymobile\\.scrcpy\\.Server"), 1);
}

TEST_F(QuillnestAppTest, aMissingProgramDoesNotStopTheStart)
{
    fakes.processes->on(
        QStringLiteral("/usr/bin/pkill"), ScriptedProcesses::Answer{{}, -1, QStringLiteral("no such file")});
    start();
    fakes.settle();
    EXPECT_TRUE(diagnostics->report);
}

TEST_F(QuillnestAppTest, aLaunchDuringTheCleaningComesAfterIt)
{
    deviceIsUp();
    const auto moon = addApp(QStringLiteral("Moon"));
    start();
    app->store().launch(moon);
    fakes.runUntil([&] { return app->windows().session(moon.id) != nullptr; });
    const auto lines = fakes.processes->lines();
    const auto first = [&lines](const char *text) { return lines.indexOf(lines.filter(QLatin1String(text)).value(0)); };
    EXPECT_GE(first("media_session volume"), 0);
    EXPECT_LT(first("media_session volume"), first(" install "));
}

TEST_F(QuillnestAppTest, openAppOpensTheFirstEntryThatMatchesAfterHalfASecond)
{
    const auto moon = addApp(QStringLiteral("Moon"));
    start({QStringLiteral("--open-app"), QStringLiteral("apps/MOON")});
    fakes.settle();
    fakes.clock->advance(499ms);
    EXPECT_EQ(app->store().launchingAppID(), std::nullopt);
    fakes.clock->advance(1ms);
    EXPECT_EQ(app->store().launchingAppID(), moon.id);
}

TEST_F(QuillnestAppTest, openAppWithoutAMatchOnlyLogsAndWithoutAValueDoesNothing)
{
    addApp(QStringLiteral("Moon"));
    start({QStringLiteral("--open-app"), QStringLiteral("Sun")});
    fakes.clock->advance(1s);
    EXPECT_TRUE(hasLogged(QStringLiteral("open-app: no library entry matches Sun")));
    EXPECT_EQ(app->store().launchingAppID(), std::nullopt);
    start({QStringLiteral("--open-app")});
    fakes.clock->advance(1s);
    EXPECT_EQ(app->store().launchingAppID(), std::nullopt);
    EXPECT_EQ(logLines().filter(QStringLiteral("open-app:")).size(), 1);
}

TEST_F(QuillnestAppTest, aPackageOnTheCommandLineIsInstalledPastTheLibrary)
{
    deviceIsUp();
    const auto path = putPackage(QStringLiteral("Apps/Moon.apk"), "org.example.moon", "Moon");
    ::testing::internal::CaptureStdout();
    start({QStringLiteral("--launch-apk"), path});
    fakes.settle();
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Quillnest installed and launched org.example.moon\n");
    EXPECT_TRUE(app->store().apps().empty());
    // What an earlier run left is cleaned first: it would take the app along.
    const auto lines = fakes.processes->lines();
    const auto places = [&lines](const char *text) {
        const auto found = lines.filter(QLatin1String(text));
        return std::pair(lines.indexOf(found.value(0)), lines.lastIndexOf(found.value(found.size() - 1)));
    };
    EXPECT_GT(places(" install ").first, places("am force-stop").second);
    EXPECT_GT(places("pm list packages").first, places("shell pkill -f").second);
}

TEST_F(QuillnestAppTest, aPackageThatCannotBeInstalledIsToldOnStandardError)
{
    deviceIsUp();
    ::testing::internal::CaptureStderr();
    start({QStringLiteral("--launch-apk"), fakes.path(QStringLiteral("nothing.apk"))});
    fakes.settle();
    const auto text = ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(text.rfind("Quillnest APK launch failed: ", 0), 0U) << text;
    EXPECT_EQ(text.back(), '\n');
}

TEST_F(QuillnestAppTest, launchApkWithoutAPathInstallsNothing)
{
    deviceIsUp();
    start({QStringLiteral("--launch-apk")});
    fakes.settle();
    EXPECT_EQ(count(" install "), 0);
}

TEST_F(QuillnestAppTest, commandsOfTheChannelAreCarriedOut)
{
    start();
    const auto path = putPackage(QStringLiteral("Apps/Moon.apk"), "org.example.moon", "Moon");
    fakes.commands->post(QStringLiteral("add:") + path);
    fakes.settle();
    EXPECT_TRUE(hasLogged(QStringLiteral("command add:") + path));
    EXPECT_EQ(app->store().apps().size(), 1U);
}

TEST_F(QuillnestAppTest, withoutAChannelTheProgramStartsAllTheSame)
{
    fakes.commands->reachable = false;
    start();
    fakes.settle();
    EXPECT_TRUE(hasLogged(QStringLiteral("command channel unavailable")));
}

TEST_F(QuillnestAppTest, aWindowThatGetsTheKeyboardWarmsAndroidUp)
{
    start();
    fakes.settle();
    app->windowDidBecomeKey();
    fakes.settle();
    EXPECT_EQ(app->store().androidState(), State::starting);
}

TEST_F(QuillnestAppTest, theEndClosesAllWindowsAndWaitsUntilTheDeviceHasBeenTold)
{
    deviceIsUp();
    const auto moon = addApp(QStringLiteral("Moon"));
    start();
    app->store().launch(moon);
    fakes.runUntil([&] { return app->windows().session(moon.id) != nullptr; });
    app->terminate();
    EXPECT_TRUE(app->windows().session(moon.id)->isClosing());
    EXPECT_EQ(count("emu kill"), 1);
    EXPECT_TRUE(hasLogged(QStringLiteral("stopping Android runtime (Quillnest quit)")));
    app->terminate();
    EXPECT_EQ(count("emu kill"), 1);
}

TEST_F(QuillnestAppTest, anEmulatorThatHasJustBeenStartedIsEndedWithTheProgram)
{
    device.looksUntilBooted = 1000000;
    start();
    app->store().prewarmAndroid();
    fakes.settle();
    const auto children = fakes.processes->children();
    const auto emulator = std::find_if(children.begin(), children.end(), [](const auto &child) {
        return child->command().program.endsWith(QLatin1String("/emulator"));
    });
    ASSERT_NE(emulator, children.end());
    EXPECT_EQ((*emulator)->terminations(), 0);
    app->terminate();
    EXPECT_EQ((*emulator)->terminations(), 1);
}

TEST_F(QuillnestAppTest, theDeviceMayStayForTheNextStartWhichStopsItsApps)
{
    deviceIsUp();
    fakes.settings->setValue(QStringLiteral("QuillnestStopAndroidOnQuit"), false);
    start();
    fakes.settle();
    app->terminate();
    EXPECT_EQ(count("emu kill"), 0);
    start();
    fakes.settle();
    EXPECT_EQ(count("am force-stop"), 1);
}

TEST_F(QuillnestAppTest, theReportTellsOfTheLibraryAndTheWindows)
{
    deviceIsUp();
    const auto moon = addApp(QStringLiteral("Moon"));
    start();
    app->store().launch(moon);
    fakes.runUntil([&] { return app->windows().session(moon.id) != nullptr; });
    const auto report = QJsonDocument::fromJson(diagnostics->report()).object();
    EXPECT_EQ(report.value(QStringLiteral("androidState")), QStringLiteral("ready"));
    EXPECT_EQ(report.value(QStringLiteral("statusMessage")), QStringLiteral("Opened Moon"));
    const auto apps = report.value(QStringLiteral("apps")).toArray();
    ASSERT_EQ(apps.size(), 1);
    EXPECT_EQ(apps[0].toObject().value(QStringLiteral("id")), uuidText(moon.id));
    const auto windows = report.value(QStringLiteral("windows")).toArray();
    ASSERT_EQ(windows.size(), 1);
    EXPECT_EQ(windows[0].toObject().value(QStringLiteral("package")), QStringLiteral("org.example.moon"));
    EXPECT_EQ(windows[0].toObject().value(QStringLiteral("visible")), true);
}

// Another start, whose arguments come through the door.

TEST_F(QuillnestAppTest, anotherStartWithoutAWordShowsThePanel)
{
    start();
    ASSERT_FALSE(app->windows().menuBarPopupFrame());
    knock({});
    EXPECT_TRUE(app->windows().menuBarPopupFrame());
    EXPECT_TRUE(hasLogged(QStringLiteral("another start asks: ")));
}

TEST_F(QuillnestAppTest, anotherStartOpensTheAppThatItNames)
{
    deviceIsUp();
    const auto moon = addApp(QStringLiteral("Moon"));
    start();
    knock({QStringLiteral("--open-app"), QStringLiteral("moon")});
    fakes.runUntil([&] { return app->windows().session(moon.id) != nullptr; });
    EXPECT_FALSE(app->windows().menuBarPopupFrame());
}

TEST_F(QuillnestAppTest, anotherStartAddsItsFilesFromTheFolderItWasStartedIn)
{
    const auto path = putPackage(QStringLiteral("Apps/moon.apk"), "org.example.moon", "Moon");
    start();
    knock({QStringLiteral("moon.apk")}, QFileInfo(path).path());
    fakes.settle();
    ASSERT_EQ(app->store().apps().size(), 1U);
    EXPECT_EQ(app->store().apps()[0].sourcePath, path);
    EXPECT_TRUE(app->windows().menuBarPopupFrame());
}

TEST_F(QuillnestAppTest, filesAreAddedByTheFirstStartToo)
{
    const auto path = putPackage(QStringLiteral("Apps/moon.apk"), "org.example.moon", "Moon");
    start({path});
    fakes.settle();
    EXPECT_EQ(names(app->store().apps()), QStringList{QStringLiteral("Moon")});
}

TEST_F(QuillnestAppTest, anotherStartMayAskForThePlayerWindow)
{
    start();
    knock({QStringLiteral("--android-player")});
    fakes.clock->advance(250ms);
    EXPECT_NE(app->playerWindow(), nullptr);
    EXPECT_FALSE(app->windows().menuBarPopupFrame());
}

// The player window.

TEST_F(QuillnestAppTest, thePlayerWindowOpensAQuarterOfASecondAfterTheStart)
{
    start({QStringLiteral("--android-player")});
    fakes.clock->advance(249ms);
    EXPECT_EQ(app->playerWindow(), nullptr);
    fakes.clock->advance(1ms);
    const auto *window = app->playerWindow();
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(window->size(), QSize(430, 820));
    EXPECT_EQ(window->minimumSize(), QSize(360, 620));
    EXPECT_TRUE(window->windowFlags().testFlag(Qt::FramelessWindowHint));
    EXPECT_EQ(window->geometry().center(), fakes.screens->main()->visibleFrame.center());
    const auto *content = window->findChild<AndroidPlayerView *>();
    ASSERT_NE(content, nullptr);
    EXPECT_EQ(content->title(), QStringLiteral("Android App"));
    for (auto *button : content->findChildren<QAbstractButton *>()) {
        if (button->accessibleName() == QStringLiteral("Back to app library"))
            button->click();
    }
    EXPECT_FALSE(window->isVisible());
    EXPECT_TRUE(app->windows().menuBarPopupFrame());
}

TEST_F(QuillnestAppTest, bothFlagsTogetherOpenOnePlayerWindow)
{
    start({QStringLiteral("--android-player"), QStringLiteral("--launch-apk")});
    fakes.clock->advance(250ms);
    const auto *window = app->playerWindow();
    ASSERT_NE(window, nullptr);
    fakes.clock->advance(1s);
    EXPECT_EQ(app->playerWindow(), window);
    int players = 0;
    for (const auto *widget : QApplication::topLevelWidgets())
        players += widget->windowTitle() == QStringLiteral("Quillnest Android") ? 1 : 0;
    EXPECT_EQ(players, 1);
}

TEST_F(QuillnestAppTest, launchApkAsTheLastArgumentOpensThePlayerWindowAndInstallsNothing)
{
    deviceIsUp();
    start({QStringLiteral("--launch-apk")});
    fakes.clock->advance(1s);
    fakes.settle();
    EXPECT_NE(app->playerWindow(), nullptr);
    EXPECT_EQ(count(" install "), 0);
}

TEST_F(QuillnestAppTest, aFailedInstallLeavesTheProcessAndThePlayerWindow)
{
    deviceIsUp();
    ::testing::internal::CaptureStderr();
    start({QStringLiteral("--launch-apk"), fakes.path(QStringLiteral("nothing.apk"))});
    fakes.clock->advance(1s);
    fakes.settle();
    ::testing::internal::GetCapturedStderr();
    EXPECT_TRUE(app->playerWindow()->isVisible());
    EXPECT_EQ(quits, 0);
}

TEST_F(QuillnestAppTest, aStartWithoutFlagsOpensNoPlayerWindow)
{
    start({QStringLiteral("--unknown"), QStringLiteral("--android-player=1")});
    fakes.clock->advance(1s);
    EXPECT_EQ(app->playerWindow(), nullptr);
}

// The login item.

TEST_F(QuillnestAppTest, theLoginItemIsSwitchedOnOnceAndThenLeftToTheUser)
{
    start();
    EXPECT_EQ(fakes.loginItems->requests, std::vector{true});
    EXPECT_TRUE(hasLogged(QStringLiteral("open at login enabled=true status=1")));
    EXPECT_EQ(fakes.settings->value(QStringLiteral("Quillnest.loginItemDefaulted")), QVariant(true));
    fakes.loginItems->current = LoginItems::Status::notRegistered;
    start();
    EXPECT_EQ(fakes.loginItems->requests.size(), 1U);
    EXPECT_TRUE(hasLogged(QStringLiteral("open at login enabled=false status=0")));
}

TEST_F(QuillnestAppTest, aLoginItemThatIsOnAlreadyIsNotSetAgain)
{
    fakes.loginItems->current = LoginItems::Status::enabled;
    start();
    EXPECT_TRUE(fakes.loginItems->requests.empty());
    EXPECT_EQ(fakes.settings->value(QStringLiteral("Quillnest.loginItemDefaulted")), QVariant(true));
}

TEST_F(QuillnestAppTest, aLoginItemThatTheDesktopRefusesIsNotTriedAgain)
{
    fakes.loginItems->failure = QStringLiteral("no room");
    start();
    EXPECT_TRUE(hasLogged(QStringLiteral("open at login enabled=false status=0")));
    start();
    EXPECT_EQ(fakes.loginItems->requests.size(), 1U);
}

TEST_F(QuillnestAppTest, theSentenceOfARefusedLoginItemNamesTheSystem)
{
    EXPECT_EQ(LoginItem::set(fakes.platform, true), std::nullopt);
    fakes.loginItems->failure = QStringLiteral("no room");
    EXPECT_EQ(LoginItem::set(fakes.platform, true), QStringLiteral("The desktop did not allow this: no room"));
    fakes.platform.profile.systemName = HostProfile::appleSilicon().systemName;
    EXPECT_EQ(LoginItem::set(fakes.platform, false), QStringLiteral("macOS did not allow this: no room"));
}

// Diagnostics.

TEST_F(QuillnestAppTest, withSnapshotsOnThePanelIsDrawnASecondAfterTheStart)
{
    const auto picture = fakes.path(QStringLiteral("Logs/Quillnest/snapshots/menu-panel.png"));
    start();
    fakes.clock->advance(2s);
    EXPECT_FALSE(QFile::exists(picture));
    fakes.settings->setValue(QStringLiteral("QuillnestSnapshots"), true);
    start();
    fakes.clock->advance(999ms);
    EXPECT_FALSE(QFile::exists(picture));
    fakes.clock->advance(1ms);
    EXPECT_EQ(QImage(picture).size(), QSize(20, 10));
}

TEST_F(QuillnestAppTest, settingsThatWereKeptAsideAreNamedInTheLog)
{
    Q_EMIT fakes.settings->setAside(QStringLiteral("/before"));
    start();
    Q_EMIT fakes.settings->setAside(QStringLiteral("/settings.json.damaged-1"));
    EXPECT_EQ(
        logLines().filter(QStringLiteral("settings unreadable")),
        QStringList{QStringLiteral("settings unreadable, kept aside as /settings.json.damaged-1")});
    fakes.settings->damaged = QStringLiteral("/settings.json.damaged-2");
    start();
    EXPECT_TRUE(hasLogged(QStringLiteral("settings unreadable, kept aside as /settings.json.damaged-2")));
}
