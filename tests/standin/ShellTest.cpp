#include "support/StandinDevice.h"

#include <QImage>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using test::eventually;
using test::Outcome;
using test::StandinDevice;

namespace
{

class Shell : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(device.boot()); }

    StandinDevice device;
};

} // namespace

TEST_F(Shell, PipesLoopsAndExitCodesAreTheRealThing)
{
    EXPECT_EQ(device.shell(u"echo quill | sed s/q/Q/"_s).out, "Quill\n");
    EXPECT_EQ(device.shell(u"exit 7"_s).status, 7);
    EXPECT_EQ(device.shell(u"for i in 1 2 3; do echo $i; done | wc -l"_s).out.trimmed(), "3");
    EXPECT_EQ(device.shell(u"nosuchcommand"_s).status, 127);
}

TEST_F(Shell, OutputAndErrorsKeepApart)
{
    const Outcome outcome = device.shell(u"echo out; echo problem >&2; exit 3"_s);
    EXPECT_EQ(outcome.out, "out\n");
    EXPECT_EQ(outcome.error, "problem\n");
    EXPECT_EQ(outcome.status, 3);
}

TEST_F(Shell, StandardInputReachesTheCommandWithItsEnd)
{
    const QByteArray text(300000, 'q');
    EXPECT_EQ(device.adb({u"shell"_s, u"wc -c"_s}, text).out.trimmed(), "300000");
}

TEST_F(Shell, ExecOutBringsBinaryOutputUnchanged)
{
    EXPECT_EQ(device.adb({u"exec-out"_s, u"printf 'a\\r\\n\\0b'"_s}).out, QByteArray("a\r\n\0b", 5));
}

TEST_F(Shell, TheTreeIsTheDevicesOwnAndHasItsPlaces)
{
    EXPECT_EQ(device.shell(u"ls -d /data/local/tmp /data/app /sdcard/Download"_s).status, 0);
    EXPECT_NE(device.shell(u"ls /usr"_s).status, 0);
    EXPECT_EQ(device.shell(u"readlink /sdcard"_s).out.trimmed(), "/storage/emulated/0");
    EXPECT_EQ(device.shell(u"echo gone > /dev/null; cat /dev/null"_s).out, "");
    EXPECT_EQ(device.shell(u"su 0 sh -c 'id -u'"_s).out.trimmed(), "0");
}

TEST_F(Shell, SettingsAndPropertiesAnswerAsTheyWereSet)
{
    EXPECT_EQ(device.shell(u"settings get secure nothing"_s).out.trimmed(), "null");
    device.shell(u"settings put secure some_key 'a value'"_s);
    EXPECT_EQ(device.shell(u"settings get secure some_key"_s).out.trimmed(), "a value");
    EXPECT_TRUE(device.shell(u"settings list secure"_s).out.contains("some_key=a value\n"));
    device.shell(u"settings delete secure some_key"_s);
    EXPECT_EQ(device.shell(u"settings get secure some_key"_s).out.trimmed(), "null");
    device.shell(u"setprop debug.word yes"_s);
    EXPECT_EQ(device.shell(u"getprop debug.word"_s).out.trimmed(), "yes");
}

TEST_F(Shell, TweaksOfVolumeAndNightModeTakeEffect)
{
    EXPECT_TRUE(
        device.shell(u"cmd media_session volume --stream 3 --get"_s).out.contains("volume is 5 in range [0..15]"));
    EXPECT_EQ(device.shell(u"cmd audio set-volume 3 15"_s).status, 0);
    EXPECT_TRUE(device.shell(u"cmd media_session volume --stream 3 --get"_s).out.contains("volume is 15 in range"));
    EXPECT_TRUE(device.shell(u"cmd uimode night yes"_s).out.contains("Night mode: yes"));
    EXPECT_TRUE(device.state()[u"nightMode"].toBool());
    EXPECT_TRUE(device.shell(u"dumpsys connectivity"_s).out.contains("VALIDATED"));
}

TEST_F(Shell, ACommandEndsWhenItsAdbIsKilled)
{
    QProcess adb;
    adb.setProcessEnvironment(device.environment);
    adb.start(
        device.adbProgram(),
        {u"-s"_s, device.serial(), u"shell"_s,
         u"while true; do date +%s%N > /data/local/tmp/beat; sleep 0.02; done"_s});
    const auto beat = [&] { return device.shell(u"cat /data/local/tmp/beat"_s).out; };
    ASSERT_TRUE(eventually([&] { return !beat().trimmed().isEmpty(); }));
    adb.kill();
    adb.waitForFinished();
    EXPECT_TRUE(eventually([&] {
        const QByteArray before = beat();
        for (int look = 0; look < 40; ++look) { // each look takes an adb its time, together several beats
            if (beat() != before)
                return false;
        }
        return true;
    }));
}

TEST_F(Shell, ScreencapGivesAPicture)
{
    const QImage picture = QImage::fromData(device.adb({u"exec-out"_s, u"screencap -p"_s}).out, "PNG");
    EXPECT_EQ(picture.size(), QSize(1080, 2400));
}
