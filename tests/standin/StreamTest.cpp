#include "support/StreamClient.h"

#include <QColor>
#include <QJsonArray>
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using test::eventually;
using test::StandinDevice;
using test::StreamClient;

namespace
{

const QString tide = u"app.quillnest.samples.tide"_s;
const QSize phone(776, 1448);

/// The colour of a touch's ring, as far as the video keeps colours.
bool isRing(QRgb pixel)
{
    return qRed(pixel) > 200 && qGreen(pixel) < 110 && qBlue(pixel) > 100 && qBlue(pixel) < 200;
}

/// Whether the ring of a touch is there: 44 pixels out from its middle at this density.
bool hasRingAt(const QImage &picture, QPoint at)
{
    return isRing(picture.pixel(at + QPoint(44, 0))) && isRing(picture.pixel(at - QPoint(0, 44)));
}

class Stream : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(device.boot());
        ASSERT_EQ(device.adb({u"install"_s, u"--no-streaming"_s, u"-r"_s, test::sampleApk("tide")}).status, 0);
    }

    void open(StreamClient &client)
    {
        ASSERT_TRUE(client.connect()) << client.serverOutput().constData();
        ASSERT_TRUE(client.readGreetings());
        client.startApp(tide);
    }

    QJsonObject session() const { return device.state()[u"sessions"].toArray().at(0).toObject(); }
    QByteArray resumed() const { return device.shell(u"dumpsys activity activities | grep ResumedActivity"_s).out; }

    StandinDevice device;
};

} // namespace

TEST_F(Stream, GreetsOnVideoAndAudioAndNamesItsDisplay)
{
    StreamClient client(device);
    ASSERT_TRUE(client.connect());
    ASSERT_TRUE(client.readGreetings());
    EXPECT_TRUE(client.deviceName().startsWith("sdk_gphone64_x86_64"));
    EXPECT_EQ(client.deviceName().count('\0'), 64 - 19);
    EXPECT_EQ(client.videoCodec(), 0x68323634U);
    EXPECT_EQ(client.audioCodec(), 0x00726177U);
    EXPECT_TRUE(eventually([&] {
        return client.serverOutput().contains("[server] INFO: New display: 776x1448/320 (id=2)\n");
    })) << client.serverOutput().constData();
    EXPECT_TRUE(client.serverOutput().contains("[server] INFO: Device: "));
}

TEST_F(Stream, BeginsWithSizeThenParameterSetsThenAKeyFrame)
{
    StreamClient client(device);
    open(client);
    const auto first = client.nextVideo();
    const auto second = client.nextVideo();
    const auto third = client.nextVideo();
    const auto fourth = client.nextVideo();
    ASSERT_TRUE(first && second && third && fourth);
    EXPECT_EQ(first->kind, StreamClient::VideoPacket::Session);
    EXPECT_EQ(first->size, phone);
    EXPECT_EQ(second->kind, StreamClient::VideoPacket::Config);
    EXPECT_TRUE(second->payload.startsWith(QByteArray("\0\0\0\1\x67", 5)));
    EXPECT_TRUE(second->payload.contains(QByteArray("\0\0\0\1\x68", 5)));
    EXPECT_EQ(third->kind, StreamClient::VideoPacket::Media);
    EXPECT_TRUE(third->isKeyFrame);
    EXPECT_FALSE(fourth->isKeyFrame);
}

TEST_F(Stream, StartingAnAppShowsItOnTheSessionsDisplay)
{
    StreamClient client(device);
    open(client);
    ASSERT_TRUE(eventually([&] { return session()[u"package"].toString() == tide; }));
    EXPECT_TRUE(resumed().contains(" app.quillnest.samples.tide/"));
    // The head of the app's screen is coloured, its empty background is grey.
    const QImage picture
        = client.pictureWhere([](const QImage &image) { return QColor(image.pixel(388, 200)).saturation() > 60; });
    ASSERT_EQ(picture.size(), phone);
    EXPECT_GT(QColor(picture.pixel(388, 200)).saturation(), 60);
    EXPECT_LT(QColor(picture.pixel(4, 700)).saturation(), 30);
}

TEST_F(Stream, EveryFrameOfARunningAppDiffersFromTheOneBefore)
{
    StreamClient client(device);
    open(client);
    ASSERT_TRUE(eventually([&] { return session()[u"package"].toString() == tide; }));
    client.pictureWhere([](const QImage &image) { return QColor(image.pixel(388, 200)).saturation() > 60; });
    QImage last;
    int frames = 0;
    client.pictureWhere([&](const QImage &image) {
        EXPECT_FALSE(image == last);
        last = image;
        return ++frames == 20;
    });
    EXPECT_EQ(frames, 20);
}

TEST_F(Stream, ATouchIsRecordedAndItsRingIsInThePicture)
{
    StreamClient client(device);
    open(client);
    ASSERT_TRUE(eventually([&] { return session()[u"package"].toString() == tide; }));
    const QPoint at(400, 1000);
    client.touch(0, at, phone);
    client.touch(1, at, phone);
    EXPECT_TRUE(hasRingAt(client.pictureWhere([&](const QImage &image) { return hasRingAt(image, at); }), at));
    const QJsonObject state = device.state();
    EXPECT_EQ(state[u"touchesSeen"].toInt(), 2);
    const QJsonObject down = state[u"touches"].toArray().at(0).toObject();
    EXPECT_EQ(down[u"action"].toInt(), 0);
    EXPECT_EQ(down[u"x"].toInt(), 400);
    EXPECT_EQ(down[u"y"].toInt(), 1000);
    EXPECT_EQ(down[u"frameWidth"].toInt(), 776);
    EXPECT_EQ(down[u"frameHeight"].toInt(), 1448);
    EXPECT_EQ(down[u"pressure"].toInt(), 0xffff);
}

TEST_F(Stream, ATouchInAFrameOfAnotherSizeIsScaledToTheDisplay)
{
    StreamClient client(device);
    open(client);
    client.touch(0, QPoint(100, 300), QSize(388, 724));
    ASSERT_TRUE(eventually([&] { return device.state()[u"touchesSeen"].toInt() == 1; }));
    const QJsonObject touch = device.state()[u"touches"].toArray().at(0).toObject();
    EXPECT_EQ(touch[u"displayX"].toDouble(), 200);
    EXPECT_EQ(touch[u"displayY"].toDouble(), 600);
}

TEST_F(Stream, AResizeBringsTheNewSizeParameterSetsAndAKeyFrame)
{
    StreamClient client(device);
    open(client);
    client.send(QByteArray("\x15\x03\xeb\x02\xbd", 5)); // 1003 by 701
    std::optional<StreamClient::VideoPacket> packet;
    do {
        packet = client.nextVideo();
    } while (packet && (packet->kind != StreamClient::VideoPacket::Session || packet->size == phone));
    ASSERT_TRUE(packet);
    EXPECT_EQ(packet->size, QSize(1000, 696));
    const auto config = client.nextVideo();
    ASSERT_TRUE(config);
    EXPECT_EQ(config->kind, StreamClient::VideoPacket::Config);
    const auto key = client.nextVideo();
    ASSERT_TRUE(key);
    EXPECT_TRUE(key->isKeyFrame);
    test::PictureDecoder decoder;
    decoder.decode(config->payload);
    QImage picture = decoder.decode(key->payload);
    for (int more = 0; more < 5 && picture.isNull(); ++more)
        picture = decoder.decode(client.nextVideo().value().payload);
    EXPECT_EQ(picture.size(), QSize(1000, 696));
    EXPECT_EQ(session()[u"width"].toInt(), 1000);
}

TEST_F(Stream, AResetOfTheVideoBringsAKeyFrame)
{
    StreamClient client(device);
    open(client);
    for (int packets = 0; packets < 6; ++packets)
        ASSERT_TRUE(client.nextVideo());
    client.send("\x11");
    int frames = 0;
    while (frames < 120) {
        const auto packet = client.nextVideo();
        ASSERT_TRUE(packet);
        ++frames;
        if (packet->isKeyFrame)
            break;
    }
    EXPECT_LT(frames, 120); // by itself the next one would come after 600
}

TEST_F(Stream, TheClipboardGoesBothWays)
{
    StreamClient client(device);
    open(client);
    client.setClipboard("from the host", false, 2);
    EXPECT_EQ(client.nextMessage(1), QByteArray("\0\0\0\0\0\0\0\2", 8));
    EXPECT_EQ(device.state()[u"clipboard"].toString(), u"from the host"_s);
    EXPECT_EQ(device.state()[u"clipboardSetByClient"].toInt(), 1);
    // What the client set itself does not come back: the next text to arrive is the device's own.
    device.control({u"clipboard"_s, u"vom Gerät"_s});
    EXPECT_EQ(client.nextMessage(0), QByteArray("vom Ger\xc3\xa4t"));
}

TEST_F(Stream, PasteTypingAndKeysEditTheTextOfTheApp)
{
    StreamClient client(device);
    open(client);
    ASSERT_TRUE(eventually([&] { return session()[u"package"].toString() == tide; }));
    client.text("Quilx");
    client.key(0, 67); // delete
    client.key(1, 67);
    client.text("l");
    client.key(0, 66); // enter
    client.key(1, 66);
    client.setClipboard("nest", true, 2);
    EXPECT_TRUE(eventually([&] { return session()[u"text"].toString() == u"Quill\nnest"_s; }))
        << qPrintable(session()[u"text"].toString());
    EXPECT_EQ(device.state()[u"keysSeen"].toInt(), 4);
    client.send(QByteArray("\x08\x01", 2)); // copy
    EXPECT_EQ(client.nextMessage(0), QByteArray("Quill\nnest"));
    client.send(QByteArray("\x08\x02", 2)); // cut
    EXPECT_EQ(client.nextMessage(0), QByteArray("Quill\nnest"));
    EXPECT_TRUE(eventually([&] { return session()[u"text"].toString().isEmpty(); }));
}

TEST_F(Stream, AScrollMovesTheList)
{
    StreamClient client(device);
    open(client);
    ASSERT_TRUE(eventually([&] { return session()[u"package"].toString() == tide; }));
    const QByteArray position("\0\0\1\x90\0\0\3\xe8\3\x08\5\xa8", 12); // 400, 1000 in 776 by 1448
    client.send('\3' + position + QByteArray("\0\0\xe0\0\0\0\0\0", 8)); // a quarter down
    ASSERT_TRUE(eventually([&] { return device.state()[u"scrollsSeen"].toInt() == 1; }));
    const QJsonObject scroll = device.state()[u"scrolls"].toArray().at(0).toObject();
    EXPECT_EQ(scroll[u"vertical"].toDouble(), -0.25);
    const QJsonArray displays = device.state()[u"displays"].toArray();
    EXPECT_EQ(displays.at(displays.size() - 1).toObject()[u"scroll"].toDouble(), 160);
}

TEST_F(Stream, BackLeavesTheAppOnlyFromItsFirstScreen)
{
    StreamClient client(device);
    open(client);
    ASSERT_TRUE(eventually([&] { return resumed().contains(" app.quillnest.samples.tide/"); }));
    ASSERT_EQ(device.control({u"push-screen"_s, u"2"_s}).status, 0);
    const QByteArray back("\4\0\4\1", 4);
    client.send(back);
    ASSERT_TRUE(eventually([&] { return device.state()[u"keysSeen"].toInt() == 2; }));
    EXPECT_TRUE(resumed().contains(" app.quillnest.samples.tide/"));
    client.send(back);
    EXPECT_TRUE(eventually([&] { return !resumed().contains("tide"); }));
    const QImage empty
        = client.pictureWhere([](const QImage &image) { return QColor(image.pixel(388, 200)).saturation() < 30; });
    EXPECT_LT(QColor(empty.pixel(388, 200)).saturation(), 30);
}

TEST_F(Stream, SoundIsTheToneOfTheApp)
{
    StreamClient client(device);
    device.shell(u"cmd audio set-volume 3 15"_s);
    open(client);
    ASSERT_TRUE(eventually([&] { return session()[u"package"].toString() == tide; }));
    const double tone = session()[u"tone"].toDouble();
    QByteArray samples;
    while (samples.size() < 48000 * 4) { // the first packets may still be silent
        const auto packet = client.nextAudio();
        ASSERT_TRUE(packet);
        const auto *first = reinterpret_cast<const qint16 *>(packet->constData());
        if (!samples.isEmpty() || *std::max_element(first, first + packet->size() / 2) > 1000)
            samples += *packet;
    }
    const auto *pcm = reinterpret_cast<const qint16 *>(samples.constData());
    int crossings = 0;
    for (int frame = 1; frame < 48000; ++frame)
        crossings += pcm[2 * frame - 2] < 0 && pcm[2 * frame] >= 0 ? 1 : 0;
    EXPECT_NEAR(crossings, tone, 2);
    EXPECT_EQ(pcm[4], pcm[5]);
}

TEST_F(Stream, WithoutAudioThereAreTwoSockets)
{
    StreamClient client(device);
    client.wantAudio = false;
    open(client);
    EXPECT_TRUE(client.nextVideo());
    client.setClipboard("x", false, 9);
    EXPECT_EQ(client.nextMessage(1), QByteArray("\0\0\0\0\0\0\0\x9", 8));
}

TEST_F(Stream, AnUnknownControlMessageEndsTheSession)
{
    StreamClient client(device);
    open(client);
    client.send("\x63");
    EXPECT_TRUE(StreamClient::waitForClose(client.videoSocket()));
    EXPECT_TRUE(client.server().waitForFinished(5000));
    EXPECT_TRUE(client.serverOutput().contains("Unknown control message type: 99"))
        << client.serverOutput().constData();
}

TEST_F(Stream, ClosingASocketEndsServerAndDisplay)
{
    StreamClient client(device);
    open(client);
    client.controlSocket().abort();
    EXPECT_TRUE(client.server().waitForFinished(5000));
    EXPECT_TRUE(eventually([&] { return device.state()[u"sessions"].toArray().isEmpty(); }));
    EXPECT_EQ(device.state()[u"displays"].toArray().size(), 1);
}

TEST_F(Stream, TheEndOfTheAdbShellEndsTheSession)
{
    StreamClient client(device);
    open(client);
    client.server().kill();
    EXPECT_TRUE(StreamClient::waitForClose(client.videoSocket()));
    EXPECT_TRUE(eventually([&] { return device.state()[u"sessions"].toArray().isEmpty(); }));
}

TEST_F(Stream, PkillEndsTheRunningServers)
{
    StreamClient client(device);
    open(client);
    EXPECT_EQ(device.shell(u"pkill -f com.genymobile.scrcpy.Server"_s).status, 0);
    EXPECT_TRUE(client.server().waitForFinished(5000));
    EXPECT_EQ(device.shell(u"pkill -f com.genymobile.scrcpy.Server"_s).status, 1);
}

TEST_F(Stream, AnotherVersionIsRefused)
{
    StreamClient client(device);
    client.version = u"4.0"_s;
    EXPECT_FALSE(client.connect(u"776x1448/320"_s, 1));
    EXPECT_TRUE(client.server().waitForFinished(5000));
    EXPECT_NE(client.server().exitCode(), 0);
    EXPECT_TRUE(client.serverOutput().contains("The server version (5.0.1) does not match the client (4.0)"));
}

TEST_F(Stream, NineSessionsRunSideBySide)
{
    std::vector<std::unique_ptr<StreamClient>> clients;
    for (int i = 0; i < 9; ++i) {
        clients.push_back(std::make_unique<StreamClient>(device));
        ASSERT_TRUE(clients.back()->connect(u"400x640/160"_s));
        ASSERT_TRUE(clients.back()->readGreetings());
    }
    for (const auto &client : clients)
        EXPECT_FALSE(client->pictureWhere([](const QImage &) { return true; }).isNull());
    EXPECT_EQ(device.state()[u"sessions"].toArray().size(), 9);
}
