#include "support/StreamClient.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using test::eventually;
using test::Outcome;
using test::StandinDevice;
using test::StreamClient;

namespace
{

class Fault : public ::testing::Test
{
protected:
    void bootWith(const QString &faults)
    {
        device.environment.insert(u"QUILLNEST_STANDIN_FAULTS"_s, faults);
        ASSERT_TRUE(device.boot());
    }

    StandinDevice device;
    StreamClient client{device};
};

} // namespace

TEST_F(Fault, NeverBootsKeepsTheDeviceListedAndUnbooted)
{
    device.environment.insert(u"QUILLNEST_STANDIN_FAULTS"_s, u"never-boots"_s);
    device.adb({u"start-server"_s});
    device.start();
    ASSERT_TRUE(eventually([&] { return device.adb({u"devices"_s}).out.contains("\tdevice"); }));
    EXPECT_EQ(device.shell(u"getprop sys.boot_completed"_s).out.trimmed(), "");
    device.control({u"fault"_s, u"clear"_s});
    EXPECT_TRUE(eventually([&] { return device.shell(u"getprop sys.boot_completed"_s).out.trimmed() == "1"; }));
}

TEST_F(Fault, ASickPackageServiceIsNotFoundUntilTheFaultIsCleared)
{
    bootWith(u"sick-package-service"_s);
    EXPECT_EQ(device.shell(u"service check package"_s).out.trimmed(), "Service package: not found");
    EXPECT_NE(device.shell(u"pm list packages"_s).status, 0);
    device.control({u"fault"_s, u"clear"_s, u"sick-package-service"_s});
    EXPECT_EQ(device.shell(u"service check package"_s).out.trimmed(), "Service package: found");
}

TEST_F(Fault, WrongApiAnswersAnotherLevel)
{
    bootWith(u"wrong-api=30,no-validated-network"_s);
    EXPECT_EQ(device.shell(u"getprop ro.build.version.sdk"_s).out.trimmed(), "30");
    EXPECT_FALSE(device.shell(u"dumpsys connectivity"_s).out.contains("VALIDATED"));
}

TEST_F(Fault, AnUnknownFaultEndsTheEmulatorWithItsName)
{
    device.environment.insert(u"QUILLNEST_STANDIN_FAULTS"_s, u"no-such-fault"_s);
    const Outcome outcome = device.runEmulator(u"Test"_s, device.port());
    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(outcome.error.contains("no-such-fault"));
}

TEST_F(Fault, IgnoredKillsLeaveTheDeviceRunning)
{
    bootWith(u"ignore-kill"_s);
    device.adb({u"emu"_s, u"kill"_s});
    EXPECT_EQ(device.shell(u"getprop sys.boot_completed"_s).out.trimmed(), "1");
    device.control({u"fault"_s, u"clear"_s});
    device.adb({u"emu"_s, u"kill"_s});
    EXPECT_TRUE(device.waitForExit());
}

TEST_F(Fault, NeverConnectRunsTheServerWithoutSockets)
{
    bootWith(u"never-connect"_s);
    EXPECT_FALSE(client.connect(u"776x1448/320"_s, 1));
    EXPECT_EQ(client.server().state(), QProcess::Running);
    EXPECT_TRUE(eventually([&] { return client.serverOutput().contains("New display"); }));
}

TEST_F(Fault, ConnectLateKeepsTheClientWaiting)
{
    bootWith(u"connect-late=1"_s);
    QElapsedTimer timer;
    timer.start();
    EXPECT_TRUE(client.connect());
    EXPECT_GE(timer.elapsed(), 1000);
}

TEST_F(Fault, VideoIsClosedAtTheByteThatWasAskedFor)
{
    bootWith(u"close-video-after=40"_s);
    ASSERT_TRUE(client.connect());
    EXPECT_TRUE(client.readVideo(40));
    EXPECT_FALSE(client.readVideo(1));
}

TEST_F(Fault, TheServerEndsWithItsVideoOrOutlivesIt)
{
    bootWith(u"close-video-after=40"_s);
    ASSERT_TRUE(client.connect());
    EXPECT_TRUE(client.server().waitForFinished(5000));

    device.control({u"fault"_s, u"server-outlives-its-sockets"_s});
    StreamClient outlived(device);
    ASSERT_TRUE(outlived.connect());
    EXPECT_TRUE(outlived.readVideo(40));
    EXPECT_TRUE(StreamClient::waitForClose(outlived.videoSocket()));
    EXPECT_FALSE(outlived.server().waitForFinished(300));
}

TEST_F(Fault, SoundMayEndWithoutThePicture)
{
    bootWith(u"close-audio-after=4000"_s);
    ASSERT_TRUE(client.connect());
    ASSERT_TRUE(client.readGreetings());
    EXPECT_TRUE(client.readAudio(3996));
    EXPECT_FALSE(client.readAudio(1));
    EXPECT_FALSE(client.pictureWhere([](const QImage &) { return true; }).isNull());
    EXPECT_EQ(device.state()[u"sessions"].toArray().size(), 1);
}

TEST_F(Fault, TheControlSocketMayEndWithoutThePicture)
{
    bootWith(u"close-control-after=14"_s);
    ASSERT_TRUE(client.connect());
    ASSERT_TRUE(client.readGreetings());
    client.key(0, 29);
    client.key(1, 29);
    EXPECT_TRUE(StreamClient::waitForClose(client.controlSocket()));
    EXPECT_EQ(device.state()[u"keysSeen"].toInt(), 1);
    EXPECT_FALSE(client.pictureWhere([](const QImage &) { return true; }).isNull());
}

TEST_F(Fault, WrongCodecsAreAnnounced)
{
    bootWith(u"wrong-video-codec,wrong-audio-codec"_s);
    ASSERT_TRUE(client.connect());
    ASSERT_TRUE(client.readGreetings());
    EXPECT_EQ(client.videoCodec(), 0x68323635U);
    EXPECT_NE(client.audioCodec(), 0x00726177U);
}

TEST_F(Fault, GarbageVideoHasPacketsButNoPicture)
{
    bootWith(u"garbage-video"_s);
    ASSERT_TRUE(client.connect());
    ASSERT_TRUE(client.readGreetings());
    test::PictureDecoder decoder;
    for (int packets = 0; packets < 10; ++packets) {
        const auto packet = client.nextVideo();
        ASSERT_TRUE(packet);
        if (packet->kind == StreamClient::VideoPacket::Media) {
            EXPECT_TRUE(decoder.decode(packet->payload).isNull());
        }
    }
}

TEST_F(Fault, AStalledVideoStopsAfterItsFramesAndKeepsTheSocket)
{
    bootWith(u"stall-video-after=3"_s);
    ASSERT_TRUE(client.connect());
    ASSERT_TRUE(client.readGreetings());
    for (int packets = 0; packets < 5; ++packets) // size, parameter sets, three frames
        ASSERT_TRUE(client.nextVideo());
    EXPECT_FALSE(client.videoSocket().waitForReadyRead(300));
    EXPECT_EQ(client.videoSocket().state(), QAbstractSocket::ConnectedState);
    EXPECT_EQ(device.state()[u"sessions"].toArray().at(0).toObject()[u"framesEncoded"].toInt(), 3);
}

TEST_F(Fault, AnOversizePacketAnnouncesWhatWasAskedFor)
{
    bootWith(u"oversize-packet=33554432"_s);
    ASSERT_TRUE(client.connect());
    ASSERT_TRUE(client.readGreetings());
    for (int packets = 0; packets < 3; ++packets)
        ASSERT_TRUE(client.nextVideo());
    const auto packet = client.nextVideo();
    ASSERT_TRUE(packet);
    EXPECT_EQ(packet->declaredSize, 33554432U);
}

TEST_F(Fault, TheDeviceDiesAfterTheFramesThatWereAskedFor)
{
    bootWith(u"die-after-frames=5"_s);
    ASSERT_TRUE(client.connect());
    ASSERT_TRUE(device.waitForExit());
    EXPECT_NE(device.emulator().exitCode(), 0);
    EXPECT_TRUE(StreamClient::waitForClose(client.videoSocket()));
    EXPECT_TRUE(client.server().waitForFinished(5000));
}

TEST_F(Fault, ControlThatIsNotReadChangesNothing)
{
    bootWith(u"device-stops-reading-control"_s);
    ASSERT_TRUE(client.connect());
    ASSERT_TRUE(client.readGreetings());
    client.touch(0, QPoint(1, 1), QSize(776, 1448));
    EXPECT_FALSE(client.pictureWhere([](const QImage &) { return true; }).isNull());
    EXPECT_EQ(device.state()[u"touchesSeen"].toInt(), 0);
    device.control({u"fault"_s, u"clear"_s});
    EXPECT_TRUE(eventually([&] { return device.state()[u"touchesSeen"].toInt() == 1; }));
}

TEST_F(Fault, DieLeavesWithoutGoodbye)
{
    bootWith({});
    device.control({u"die"_s});
    ASSERT_TRUE(device.waitForExit());
    EXPECT_EQ(device.emulator().exitCode(), 9);
}
