#include "core/QuillnestApp.h"

#include "LaunchFixture.h"

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

    ~QuillnestAppTest() override
    {
        for (const auto &[id, session] : app ? app->windows().sessions() : none)
            clients.push_back(session->client().weak_from_this());
        app.reset();
    }

    void start(const QStringList &arguments = {})
    {
        fakes.processes->forget();
        app = std::make_unique<QuillnestApp>(fakes.platform);
        app->start(QStringList{QStringLiteral("quillnest")} + arguments, [] { return new QWidget; });
    }

    qsizetype count(const char *text) const { return fakes.processes->count(QLatin1String(text)); }

    const AndroidWindowRegistry::Sessions none;
    std::shared_ptr<FakeDiagnostics> diagnostics = std::make_shared<FakeDiagnostics>();
    std::unique_ptr<QuillnestApp> app;
};

} // namespace

TEST_F(QuillnestAppTest, aDeviceThatAnEarlierRunLeftIsCleanedAndSleepsWhenNobodyUsesIt)
{
    deviceIsUp();
    start();
    fakes.settle();
    const auto lines = fakes.processes->lines();
    const auto first = [&lines](const char *text) { return lines.indexOf(lines.filter(QLatin1String(text)).value(0)); };
    EXPECT_EQ(count("shell pkill -f com.genymobile.scrcpy.Server"), 1);
    EXPECT_LT(first("shell pkill -f"), first("am force-stop"));
    EXPECT_LT(first("am force-stop"), first("uimode"));
    EXPECT_LT(first("uimode"), first("media_session volume"));
    EXPECT_LT(first("media_session volume"), first("private_dns_mode"));
    EXPECT_TRUE(hasLogged(QStringLiteral("idle: Android stops in 5.0 min unless an app is opened")));
    EXPECT_EQ(app->store().androidState(), State::ready);
}

TEST_F(QuillnestAppTest, withoutADeviceThereIsNothingToCleanButTheIdleTimeRuns)
{
    start();
    fakes.settle();
    EXPECT_EQ(count("shell pkill"), 0);
    EXPECT_EQ(count("private_dns"), 0);
    EXPECT_TRUE(hasLogged(QStringLiteral("idle: Android stops in 5.0 min unless an app is opened")));
}

TEST_F(QuillnestAppTest, serversThatAnEarlierRunLeftOnThisSideAreEnded)
{
    start();
    EXPECT_TRUE(fakes.processes->lines().contains(QStringLiteral("/usr/bin/pkill -f com.genymobile.scrcpy.Server")));
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
    EXPECT_LT(
        lines.indexOf(lines.filter(QStringLiteral("private_dns_mode")).value(0)),
        lines.indexOf(lines.filter(QStringLiteral(" install ")).value(0)));
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
    fakes.commands->post(QStringLiteral("theme:glass"));
    EXPECT_TRUE(hasLogged(QStringLiteral("command theme:glass")));
    EXPECT_EQ(fakes.settings->value(QStringLiteral("QuillnestTheme")), QStringLiteral("glass"));
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
