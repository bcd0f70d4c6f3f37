#include "support/StandinDevice.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using test::eventually;
using test::Outcome;
using test::StandinDevice;

TEST(Boot, DeviceIsListedByAdbBeforeItHasBooted)
{
    StandinDevice device;
    device.environment.insert(u"QUILLNEST_STANDIN_BOOT_SECONDS"_s, u"3600"_s);
    device.adb({u"start-server"_s});
    device.start();
    ASSERT_TRUE(
        eventually([&] { return device.adb({u"devices"_s}).out.contains(device.serial().toUtf8() + "\tdevice"); }));
    EXPECT_EQ(device.shell(u"getprop sys.boot_completed"_s).out.trimmed(), "");
    EXPECT_EQ(device.shell(u"service check package"_s).out.trimmed(), "Service package: not found");
    EXPECT_NE(device.shell(u"pm list packages"_s).status, 0);

    ASSERT_EQ(device.control({u"set"_s, u"bootSeconds"_s, u"0"_s}).status, 0);
    EXPECT_EQ(device.shell(u"getprop sys.boot_completed"_s).out.trimmed(), "1");
    EXPECT_EQ(device.shell(u"service check package"_s).out.trimmed(), "Service package: found");
}

TEST(Boot, AnAdbServerThatStartsLaterFindsTheDevice)
{
    StandinDevice device;
    device.start();
    ASSERT_TRUE(eventually([&] { return device.state()[u"booted"].toBool(); }));
    device.adb({u"start-server"_s});
    EXPECT_TRUE(eventually([&] { return device.adb({u"devices"_s}).out.contains("\tdevice"); }));
    device.adb({u"kill-server"_s});
    device.adb({u"start-server"_s});
    EXPECT_TRUE(eventually([&] { return device.adb({u"devices"_s}).out.contains("\tdevice"); }));
}

TEST(Boot, ApiLevelFollowsFromTheSystemImageOfTheAvd)
{
    StandinDevice device;
    device.writeAvd(u"Test"_s, 35);
    ASSERT_TRUE(device.boot());
    EXPECT_EQ(device.shell(u"getprop ro.build.version.sdk"_s).out.trimmed(), "35");
    EXPECT_TRUE(device.shell(u"getprop"_s).out.contains("[ro.build.version.sdk]: [35]"));
    EXPECT_EQ(device.state()[u"api"].toInt(), 35);
}

TEST(Boot, MissingAvdAndMissingSystemImageEndTheEmulatorWithAMessage)
{
    StandinDevice device;
    const Outcome unknown = device.runEmulator(u"Nobody"_s, device.port());
    EXPECT_NE(unknown.status, 0);
    EXPECT_TRUE(unknown.error.contains("Unknown AVD name [Nobody]")) << unknown.error.constData();
    device.writeAvd(u"Old"_s, 19);
    const Outcome imageless = device.runEmulator(u"Old"_s, device.port());
    EXPECT_NE(imageless.status, 0);
    EXPECT_TRUE(imageless.error.contains("no system.img")) << imageless.error.constData();
}

TEST(Boot, ASecondEmulatorOnTheSameAvdOrPortEndsWithAnError)
{
    StandinDevice device;
    ASSERT_TRUE(device.boot());
    const Outcome sameAvd = device.runEmulator(u"Test"_s, device.port() + 200);
    EXPECT_EQ(sameAvd.status, 1);
    EXPECT_TRUE(sameAvd.error.contains("same AVD")) << sameAvd.error.constData();
    device.writeAvd(u"Other"_s, 35);
    const Outcome samePort = device.runEmulator(u"Other"_s, device.port());
    EXPECT_EQ(samePort.status, 1);
    EXPECT_TRUE(samePort.error.contains("in use")) << samePort.error.constData();
    EXPECT_EQ(device.shell(u"getprop sys.boot_completed"_s).out.trimmed(), "1");
}

TEST(Boot, EmuKillEndsTheProcessCleanly)
{
    StandinDevice device;
    ASSERT_TRUE(device.boot());
    EXPECT_EQ(device.adb({u"emu"_s, u"kill"_s}).status, 0);
    ASSERT_TRUE(device.waitForExit());
    EXPECT_EQ(device.emulator().exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(device.emulator().exitCode(), 0);
    EXPECT_TRUE(eventually([&] { return !device.adb({u"devices"_s}).out.contains(device.serial().toUtf8()); }));
}

TEST(Boot, PackagesSettingsAndFilesSurviveARestart)
{
    StandinDevice device;
    ASSERT_TRUE(device.boot());
    ASSERT_EQ(device.adb({u"install"_s, u"--no-streaming"_s, u"-r"_s, test::sampleApk("tide")}).status, 0);
    device.shell(u"settings put global private_dns_mode hostname; cmd uimode night yes; echo kept > /sdcard/note"_s);
    device.adb({u"emu"_s, u"kill"_s});
    ASSERT_TRUE(device.waitForExit());
    ASSERT_TRUE(device.boot());
    EXPECT_TRUE(device.shell(u"pm path app.quillnest.samples.tide"_s).out.startsWith("package:/data/app/"));
    EXPECT_EQ(device.shell(u"settings get global private_dns_mode"_s).out.trimmed(), "hostname");
    EXPECT_EQ(device.shell(u"cat /sdcard/note"_s).out.trimmed(), "kept");
    EXPECT_TRUE(device.state()[u"nightMode"].toBool());
}
