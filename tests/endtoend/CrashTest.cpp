#include "endtoend/EndToEnd.h"

namespace quillnest::driver
{

using CrashTest = EndToEnd;

TEST_F(CrashTest, aKilledProgramLeavesADeviceThatTheNextStartAdoptsAndCleans)
{
    program.start();
    openTide();
    program.kill();
    ASSERT_TRUE(program.isDeviceRunning());

    program.start();
    program.waitForState(QStringLiteral("the device to be adopted"), 30, [](const QJsonObject &state) {
        return state.value(QStringLiteral("androidState")).toString() == QStringLiteral("ready");
    });
    waitFor(QStringLiteral("the old session to be gone"), 20, [this] {
        return program.device().value(QStringLiteral("sessions")).toArray().isEmpty();
    });
    // The session may end by itself, ahead of the cleaning.
    waitFor(QStringLiteral("the old app to be stopped"), 20, [this] {
        const auto stopped = program.device().value(QStringLiteral("forceStopped")).toObject();
        return stopped.value(QStringLiteral("app.quillnest.samples.tide")).toInt() >= 1;
    });
    EXPECT_EQ(program.log().count(QStringLiteral("starting emulator")), 1) << "the second start must not boot again";

    program.post(QStringLiteral("open:Tide"));
    program.waitForPicture(60);
    EXPECT_EQ(program.quit(), 0);
    waitFor(QStringLiteral("the device to stop"), 20, [this] { return !program.isDeviceRunning(); });
}

TEST_F(CrashTest, theLibrarySurvivesAKill)
{
    program.start();
    program.addApps(
        {ProgramUnderTest::sample(QStringLiteral("tide")), ProgramUnderTest::sample(QStringLiteral("ember"))});
    program.kill();
    program.start();
    EXPECT_EQ(program.state().value(QStringLiteral("apps")).toArray().size(), 2);
}

TEST_F(CrashTest, aDeviceThatDiesTakesTheWindowWithItAndTheNextClickBootsAgain)
{
    program.start();
    openTide();
    program.endDevice();
    waitForNoWindow();
    waitForStatus(QStringLiteral("Android stopped, and Tide with it. Open Tide again to restart it."));
    EXPECT_EQ(text(program.state(), "androidState"), QStringLiteral("sleeping"));
    ASSERT_FALSE(program.isDeviceRunning());

    program.post(QStringLiteral("open:Tide"));
    program.waitForPicture(60);
    EXPECT_EQ(program.log().count(QStringLiteral("starting emulator")), 2);
}

} // namespace quillnest::driver
