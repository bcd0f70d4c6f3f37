#include "features/adblock/AdBlock.h"

#include "base/CommandDispatcher.h"
#include "features/adblock/AdBlockSettings.h"
#include "features/adblock/AndroidAdBlock.h"
#include "runtime/DeviceTweaks.h"
#include "runtime/RuntimeFixture.h"

using namespace quillnest;

namespace
{
class AdBlockTest : public RuntimeFixture
{
protected:
    AdBlockTest()
    {
        device.listed = true;
        device.booted = true;
    }

    /// What the device was told about its private DNS, one line for each command.
    QStringList told() const
    {
        QStringList lines;
        for (const auto &call : fakes.processes->calls()) {
            if (call.arguments.last().contains(QStringLiteral("private_dns")))
                lines.append(call.arguments.last());
        }
        return lines;
    }

    void run(const QString &command)
    {
        fakes.processes->forget();
        commands.run(command);
        fakes.settle();
    }

    const QStringList on{
        QStringLiteral("settings put global private_dns_mode hostname"),
        QStringLiteral("settings put global private_dns_specifier dns.adguard-dns.com")};
    const QStringList off{
        QStringLiteral("settings put global private_dns_mode opportunistic"),
        QStringLiteral("settings delete global private_dns_specifier")};
    std::shared_ptr<const AndroidCommands> android = std::make_shared<const AndroidCommands>(fakes.platform, log);
    DeviceTweaks tweaks{android};
    CommandDispatcher commands{log};
    AdBlock adBlock{tweaks, *fakes.settings, commands};
};
} // namespace

TEST_F(AdBlockTest, isOnWithTheDefaultHostUnlessTold)
{
    AndroidAdBlock::apply(*android);
    EXPECT_EQ(told(), on);
    EXPECT_EQ(logLines(), QStringList{QStringLiteral("ad blocker: on (dns.adguard-dns.com)")});
}

TEST_F(AdBlockTest, offDeletesTheHostAndIsOpportunistic)
{
    AdBlockSettings::enabled.set(*fakes.settings, false);
    AndroidAdBlock::apply(*android);
    EXPECT_EQ(told(), off);
    EXPECT_EQ(logLines(), QStringList{QStringLiteral("ad blocker: off")});
}

TEST_F(AdBlockTest, aHostWithASpaceIsPassedAsItStandsInOneText)
{
    AdBlockSettings::host.set(*fakes.settings, QStringLiteral("two words"));
    AndroidAdBlock::apply(*android);
    EXPECT_EQ(told().at(1), QStringLiteral("settings put global private_dns_specifier two words"));
}

TEST_F(AdBlockTest, theCommandsSetItAndReachTheDeviceOnce)
{
    run(QStringLiteral("adblock-off"));
    EXPECT_FALSE(AdBlockSettings::enabled.value(*fakes.settings));
    EXPECT_EQ(told(), off);
    run(QStringLiteral("adblock-on"));
    EXPECT_TRUE(AdBlockSettings::enabled.value(*fakes.settings));
    EXPECT_EQ(told(), on);
}

TEST_F(AdBlockTest, aCommandThatChangesNoSettingReachesTheDeviceAllTheSame)
{
    run(QStringLiteral("adblock-on"));
    run(QStringLiteral("adblock-on"));
    EXPECT_EQ(told(), on);
}

TEST_F(AdBlockTest, withoutADeviceACommandOnlySetsIt)
{
    device = {};
    run(QStringLiteral("adblock-off"));
    EXPECT_FALSE(AdBlockSettings::enabled.value(*fakes.settings));
    EXPECT_EQ(told(), QStringList());
}

TEST_F(AdBlockTest, bothSettingsReachTheDeviceWhoeverChangesThem)
{
    fakes.settings->setValue(QStringLiteral("QuillnestAdBlockHost"), QStringLiteral("dns.example.org"));
    fakes.settle();
    EXPECT_EQ(told().value(1), QStringLiteral("settings put global private_dns_specifier dns.example.org"));
    fakes.processes->forget();
    fakes.settings->setValue(QStringLiteral("QuillnestAdBlock"), false);
    fakes.settle();
    EXPECT_EQ(told(), off);
}

TEST_F(AdBlockTest, aDeviceThatHasBecomeReadyIsBroughtInLineAfterItsSound)
{
    QStringList before{QStringLiteral("not run")};
    tweaks.add({.stage = DeviceTweaks::Stage::sound, .apply = [&](const AndroidCommands &) { before = told(); }});
    runToEnd(fakes, tweaks.applyAll());
    EXPECT_EQ(before, QStringList());
    EXPECT_EQ(told(), on);
}
