#include "runtime/DeviceTweaks.h"

#include "RuntimeFixture.h"
#include "runtime/AndroidRuntimeError.h"

using namespace quillnest;

namespace
{
const auto key = QStringLiteral("QuillnestAdBlock");
const auto otherKey = QStringLiteral("QuillnestMicCamera");

class DeviceTweaksTest : public RuntimeFixture
{
protected:
    DeviceTweaksTest()
    {
        device.listed = true;
        device.booted = true;
    }

    /// A tweak that notes its name when it is applied.
    DeviceTweaks::Id add(DeviceTweaks::Stage stage, const QString &name, const QStringList &settings = {})
    {
        return tweaks->add(
            {.stage = stage,
             .apply = [this, name](const AndroidCommands &) { applied.append(name); },
             .settings = settings});
    }

    QStringList takeApplied() { return std::exchange(applied, {}); }

    using Stage = DeviceTweaks::Stage;
    QStringList applied;
    std::shared_ptr<const AndroidCommands> commands = std::make_shared<const AndroidCommands>(fakes.platform, log);
    std::unique_ptr<DeviceTweaks> tweaks = std::make_unique<DeviceTweaks>(commands);
};
} // namespace

TEST_F(DeviceTweaksTest, aDeviceThatHasBecomeReadyGetsAllStageByStageWhateverTheOrderOfAdding)
{
    add(Stage::network, QStringLiteral("network"));
    add(Stage::apps, QStringLiteral("apps"));
    add(Stage::sound, QStringLiteral("sound"));
    add(Stage::appearance, QStringLiteral("appearance"));
    add(Stage::apps, QStringLiteral("more apps"));
    runToEnd(fakes, tweaks->applyAll());
    EXPECT_EQ(
        applied,
        (QStringList{
            QStringLiteral("apps"), QStringLiteral("more apps"), QStringLiteral("appearance"), QStringLiteral("sound"),
            QStringLiteral("network")}));
    EXPECT_TRUE(fakes.processes->calls().empty()) << "nobody asks again whether it is booted";
}

TEST_F(DeviceTweaksTest, aChangeOfASettingAppliesWhatFollowsItOnceAndNothingElse)
{
    add(Stage::network, QStringLiteral("blocker"), {key});
    add(Stage::sound, QStringLiteral("sound"));
    fakes.settings->setValue(key, false);
    fakes.settle();
    EXPECT_EQ(takeApplied(), QStringList{QStringLiteral("blocker")});
    fakes.settings->setValue(otherKey, true);
    fakes.settle();
    EXPECT_EQ(takeApplied(), QStringList());
    fakes.settings->remove(key);
    fakes.settle();
    EXPECT_EQ(takeApplied(), QStringList{QStringLiteral("blocker")});
}

TEST_F(DeviceTweaksTest, aChangeWithoutADeviceCostsOneCommandAndIsMadeGoodWhenItIsReady)
{
    device = {};
    add(Stage::network, QStringLiteral("blocker"), {key});
    fakes.settings->setValue(key, false);
    fakes.settle();
    EXPECT_EQ(takeApplied(), QStringList());
    EXPECT_EQ(fakes.processes->calls().size(), 1U);
    runToEnd(fakes, tweaks->applyAll());
    EXPECT_EQ(takeApplied(), QStringList{QStringLiteral("blocker")});
}

TEST_F(DeviceTweaksTest, requestsThatComeTogetherAreOne)
{
    const auto id = add(Stage::network, QStringLiteral("blocker"), {key});
    fakes.settings->setValue(key, false);
    fakes.settings->setValue(key, true);
    tweaks->apply(id);
    fakes.settle();
    EXPECT_EQ(takeApplied(), QStringList{QStringLiteral("blocker")});
}

TEST_F(DeviceTweaksTest, aChangeWhileTheDeviceIsBroughtInLineComesAfterIt)
{
    bool seen = true;
    tweaks->add(
        {.stage = Stage::network,
         .apply =
             [this, &seen](const AndroidCommands &) {
                 seen = fakes.settings->value(key).toBool();
                 // As if the user switched it back while adb is at it.
                 if (!seen)
                     fakes.settings->setValue(key, true);
             },
         .settings = {key}});
    fakes.settings->setValue(key, false);
    fakes.settle();
    EXPECT_TRUE(seen) << "the newest choice is the last that reaches the device";
    EXPECT_EQ(fakes.processes->count(QStringLiteral("boot_completed")), 2);
}

TEST_F(DeviceTweaksTest, oneThatFailsIsLoggedAndHoldsUpNobody)
{
    tweaks->add({.stage = Stage::apps, .apply = [](const AndroidCommands &) { throw std::runtime_error("no luck"); }});
    runToEnd(fakes, tweaks->applyAll());
    EXPECT_EQ(logLines(), QStringList{QStringLiteral("device tweaks failed error=no luck")});
    runToEnd(fakes, tweaks->applyAll());
}

TEST_F(DeviceTweaksTest, whatARunningDeviceCanNotTakeOverIsToldOfEachChange)
{
    int changes = 0;
    tweaks->whenChanged({otherKey}, [&changes] { ++changes; });
    fakes.settings->setValue(otherKey, true);
    fakes.settings->setValue(key, true);
    fakes.settings->setValue(otherKey, false);
    EXPECT_EQ(changes, 2);
    EXPECT_TRUE(fakes.processes->calls().empty());
}

TEST_F(DeviceTweaksTest, whoWaitsIsToldWhenItGoes)
{
    auto waiting = tweaks->applyAll();
    tweaks.reset();
    EXPECT_THROW(runToEnd(fakes, std::move(waiting)), AndroidRuntimeCancelled);
}
