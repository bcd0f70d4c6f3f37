#include "features/darkmode/DarkMode.h"

#include "features/darkmode/AndroidDarkMode.h"
#include "features/darkmode/DarkModeSettings.h"
#include "runtime/DeviceTweaks.h"
#include "runtime/RuntimeFixture.h"
#include "windows/AppSession.h"
#include "windows/SessionEvents.h"

using namespace quillnest;
using namespace std::chrono_literals;

namespace
{
class DarkModeTest : public RuntimeFixture
{
protected:
    DarkModeTest()
    {
        device.listed = true;
        device.booted = true;
    }

    qsizetype nights(const char *answer = "") const
    {
        return fakes.processes->count(QStringLiteral("uimode night ") + QLatin1String(answer));
    }

    std::shared_ptr<const AndroidCommands> android = std::make_shared<const AndroidCommands>(fakes.platform, log);
    DeviceTweaks tweaks{android};
    SessionEvents windows;
    std::optional<DarkMode> darkMode{std::in_place, tweaks, android, windows};
};
} // namespace

TEST_F(DarkModeTest, nightFollowsTheHost)
{
    AndroidDarkMode::apply(*android);
    EXPECT_EQ(nights("no"), 1);
    fakes.appearance->setDark(true);
    AndroidDarkMode::apply(*android);
    EXPECT_EQ(nights("yes"), 1);
    EXPECT_EQ(logLines().last(), QStringLiteral("dark mode: android night=yes"));
}

TEST_F(DarkModeTest, aHostWithoutAppearanceIsLight)
{
    fakes.platform.appearance = nullptr;
    EXPECT_FALSE(AndroidDarkMode::macIsDark(fakes.platform));
}

TEST_F(DarkModeTest, aChangeOfAppearanceReachesABootedDeviceAfterAMoment)
{
    fakes.appearance->setDark(true);
    fakes.clock->advance(399ms);
    fakes.settle();
    EXPECT_TRUE(fakes.processes->calls().empty());
    fakes.clock->advance(1ms);
    fakes.settle();
    EXPECT_EQ(nights("yes"), 1);
}

TEST_F(DarkModeTest, aChangeOfAppearanceWithoutADeviceCostsOneCommand)
{
    device = {};
    fakes.appearance->setDark(true);
    fakes.clock->advance(1s);
    fakes.settle();
    EXPECT_EQ(fakes.processes->calls().size(), 1U);
}

TEST_F(DarkModeTest, withTheSettingOffAChangeOfAppearanceHasNoEffect)
{
    DarkModeSettings::sync.set(*fakes.settings, false);
    fakes.settle();
    fakes.appearance->setDark(true);
    fakes.clock->advance(1s);
    fakes.settle();
    EXPECT_EQ(nights(), 0);
    EXPECT_TRUE(logLines().isEmpty());
}

TEST_F(DarkModeTest, theSettingSwitchedOnReachesTheDeviceAtOnceWhoeverSwitchesIt)
{
    fakes.settings->setValue(QStringLiteral("QuillnestSyncDarkMode"), false);
    fakes.settle();
    fakes.appearance->setDark(true);
    fakes.settings->setValue(QStringLiteral("QuillnestSyncDarkMode"), true);
    fakes.settle();
    EXPECT_EQ(nights("yes"), 1);
}

TEST_F(DarkModeTest, anAppThatIsOpenedFindsItsAppearance)
{
    Q_EMIT windows.opened(nullptr);
    fakes.settle();
    EXPECT_EQ(nights("no"), 1);
}

TEST_F(DarkModeTest, nothingIsObservedOnceItHasGone)
{
    fakes.appearance->setDark(true);
    darkMode.reset();
    fakes.clock->advance(1s);
    fakes.appearance->setDark(false);
    fakes.clock->advance(1s);
    Q_EMIT windows.opened(nullptr);
    fakes.settle();
    EXPECT_TRUE(fakes.processes->calls().empty());
}

TEST_F(DarkModeTest, aDeviceThatHasBecomeReadyIsBroughtInLineBetweenItsAppsAndItsSound)
{
    std::vector<qsizetype> seen;
    for (const auto stage : {DeviceTweaks::Stage::sound, DeviceTweaks::Stage::apps})
        tweaks.add({.stage = stage, .apply = [&](const AndroidCommands &) { seen.push_back(nights()); }});
    runToEnd(fakes, tweaks.applyAll());
    EXPECT_EQ(seen, (std::vector<qsizetype>{0, 1}));
}
