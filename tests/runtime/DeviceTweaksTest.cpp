#include "RuntimeFixture.h"

#include "runtime/AndroidAdBlock.h"
#include "runtime/AndroidDarkMode.h"
#include "runtime/AndroidVolume.h"

using namespace quillnest;
using namespace std::chrono_literals;

namespace
{
class DeviceTweaksTest : public RuntimeFixture
{
protected:
    /// What the device's shell was told, one line for each command.
    QStringList shell() const
    {
        QStringList lines;
        for (const auto &call : fakes.processes->calls())
            lines.append(call.arguments.mid(3).join(QLatin1Char('|')));
        return lines;
    }

    std::shared_ptr<const AndroidCommands> commands = std::make_shared<const AndroidCommands>(fakes.platform, log);
};
} // namespace

TEST_F(DeviceTweaksTest, theAdBlockerIsOnWithTheDefaultHostUnlessTold)
{
    AndroidAdBlock::apply(*commands);
    EXPECT_EQ(
        shell(),
        (QStringList{
            QStringLiteral("settings put global private_dns_mode hostname"),
            QStringLiteral("settings put global private_dns_specifier dns.adguard-dns.com")}));
    EXPECT_EQ(logLines(), QStringList{QStringLiteral("ad blocker: on (dns.adguard-dns.com)")});
}

TEST_F(DeviceTweaksTest, theAdBlockerOffDeletesTheHostAndIsOpportunistic)
{
    fakes.settings->setValue(QStringLiteral("QuillnestAdBlock"), false);
    AndroidAdBlock::apply(*commands);
    EXPECT_EQ(
        shell(),
        (QStringList{
            QStringLiteral("settings put global private_dns_mode opportunistic"),
            QStringLiteral("settings delete global private_dns_specifier")}));
    EXPECT_EQ(logLines(), QStringList{QStringLiteral("ad blocker: off")});
}

TEST_F(DeviceTweaksTest, aHostWithASpaceIsPassedAsItStandsInOneText)
{
    fakes.settings->setValue(QStringLiteral("QuillnestAdBlockHost"), QStringLiteral("two words"));
    AndroidAdBlock::apply(*commands);
    EXPECT_EQ(shell().at(1), QStringLiteral("settings put global private_dns_specifier two words"));
}

TEST_F(DeviceTweaksTest, nightFollowsTheHost)
{
    AndroidDarkMode::apply(*commands);
    fakes.appearance->setDark(true);
    AndroidDarkMode::apply(*commands);
    EXPECT_EQ(shell(), (QStringList{QStringLiteral("cmd|uimode|night|no"), QStringLiteral("cmd|uimode|night|yes")}));
    EXPECT_EQ(logLines().last(), QStringLiteral("dark mode: android night=yes"));
}

TEST_F(DeviceTweaksTest, aHostWithoutAppearanceIsLight)
{
    fakes.platform.appearance = nullptr;
    EXPECT_FALSE(AndroidDarkMode::macIsDark(fakes.platform));
}

TEST_F(DeviceTweaksTest, aChangeOfAppearanceReachesABootedDeviceAfterAMoment)
{
    device.listed = true;
    device.booted = true;
    AndroidDarkMode::startObserving(commands);
    fakes.appearance->setDark(true);
    fakes.clock->advance(399ms);
    fakes.settle();
    EXPECT_TRUE(fakes.processes->calls().empty());
    fakes.clock->advance(1ms);
    fakes.settle();
    EXPECT_EQ(fakes.processes->count(QStringLiteral("uimode night yes")), 1);
}

TEST_F(DeviceTweaksTest, aChangeOfAppearanceWithoutADeviceCostsOneCommand)
{
    AndroidDarkMode::startObserving(commands);
    fakes.appearance->setDark(true);
    fakes.clock->advance(1s);
    fakes.settle();
    EXPECT_EQ(fakes.processes->calls().size(), 1U);
}

TEST_F(DeviceTweaksTest, withTheSettingOffAChangeOfAppearanceHasNoEffect)
{
    device.listed = true;
    device.booted = true;
    fakes.settings->setValue(QStringLiteral("QuillnestSyncDarkMode"), false);
    AndroidDarkMode::startObserving(commands);
    fakes.appearance->setDark(true);
    fakes.clock->advance(1s);
    fakes.settle();
    EXPECT_EQ(fakes.processes->count(QStringLiteral("uimode")), 0);
    EXPECT_TRUE(logLines().isEmpty());
}

TEST_F(DeviceTweaksTest, nothingIsObservedOnceTheCommandsHaveGone)
{
    AndroidDarkMode::startObserving(commands);
    fakes.appearance->setDark(true);
    commands.reset();
    fakes.clock->advance(1s);
    fakes.appearance->setDark(false);
    fakes.clock->advance(1s);
    fakes.settle();
    EXPECT_TRUE(fakes.processes->calls().empty());
}

TEST_F(DeviceTweaksTest, bothStreamsAreTurnedToTheTopOfTheirRange)
{
    fakes.processes->on(QStringLiteral("--stream 3 --get"), QByteArray("[V] volume is 5 in range [0..25]\n"));
    fakes.processes->on(QStringLiteral("--stream 5 --get"), QByteArray("[V] volume is 5 in range [0..7]\n"));
    AndroidVolume::maximize(*commands);
    EXPECT_EQ(
        shell(),
        (QStringList{
            QStringLiteral("cmd media_session volume --stream 3 --get"), QStringLiteral("cmd audio set-volume 3 25"),
            QStringLiteral("cmd media_session volume --stream 5 --get"), QStringLiteral("cmd audio set-volume 5 7")}));
    EXPECT_EQ(
        logLines(),
        (QStringList{QStringLiteral("volume: stream 3 set to 25"), QStringLiteral("volume: stream 5 set to 7")}));
}

TEST_F(DeviceTweaksTest, anOutputWithoutARangeLeavesThatStreamAlone)
{
    fakes.processes->on(QStringLiteral("--stream 3 --get"), QByteArray(150, 'x'));
    fakes.processes->on(QStringLiteral("--stream 5 --get"), QByteArray("range [0..7]"));
    AndroidVolume::maximize(*commands);
    EXPECT_EQ(fakes.processes->count(QStringLiteral("set-volume 3")), 0);
    EXPECT_EQ(fakes.processes->count(QStringLiteral("set-volume 5 7")), 1);
    EXPECT_EQ(logLines().first(), QStringLiteral("volume: could not read stream 3: ") + QString(100, QLatin1Char('x')));
}

TEST_F(DeviceTweaksTest, aRangeThatIsNoNumberIsLeftAlone)
{
    fakes.processes->on(QStringLiteral("--get"), QByteArray("[0..99999999999999999999]"));
    AndroidVolume::maximize(*commands);
    EXPECT_EQ(fakes.processes->count(QStringLiteral("set-volume")), 0);
}
