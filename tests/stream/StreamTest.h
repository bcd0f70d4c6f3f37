#pragma once

#include "StreamFakes.h"
#include "fakes/DeviceSocket.h"
#include "fakes/FakePlatform.h"
#include "platform/Conditions.h"
#include "platform/desktop/QtExecutor.h"
#include "stream/AndroidStreamClient.h"

#include <gtest/gtest.h>

#include <optional>
#include <vector>

namespace quillnest
{

/// A client against a scripted device: `adb` is a script, the device's sockets are real ones over the loopback address
/// that the test writes to. At its end every test checks that the client is gone with its threads and descriptors.
class StreamTest : public ::testing::Test
{
protected:
    StreamTest();
    void SetUp() override;
    void TearDown() override;

    /// Makes a client out of `config`, with callbacks that record.
    void makeClient();
    /// Starts it and waits for the server's launch, after which the device may connect.
    void startUntilServerRuns();
    /// All that, the sockets, and the message that starts the app.
    void connectAll();
    /// All that, and the beginning of the video stream.
    void openVideo();
    /// All that, and the beginning of the sound.
    void openVideoAndAudio();
    /// Sends video parameter sets and a key frame, and waits for the frame: the video socket is alive.
    ::testing::AssertionResult videoGoesOn();

    std::shared_ptr<ScriptedChild> server() const;
    /// Stops the client, lets the server end and waits until the client has gone with all that it had open.
    void dropClient();

    QStringList logLines() const;
    bool hasLogged(const QString &line) const { return logLines().contains(line); }
    bool endsOnceWith(const std::optional<QString> &text);
    /// The words of the command that starts the server.
    QStringList serverArguments() const;

    FakePlatform fakes = fakePlatform();
    std::shared_ptr<QtExecutor> executor = std::make_shared<QtExecutor>();
    std::shared_ptr<FakeVideoDecoding> video = std::make_shared<FakeVideoDecoding>();
    std::shared_ptr<FakeAudioOutput> audio = std::make_shared<FakeAudioOutput>();
    std::shared_ptr<RecordingRenderer> renderer = std::make_shared<RecordingRenderer>();
    std::shared_ptr<SampleRenderer> usedRenderer = renderer;
    std::shared_ptr<QuillnestLog> log;
    AndroidStreamClient::Config config;

    std::shared_ptr<AndroidStreamClient> client;
    std::weak_ptr<AndroidStreamClient> watched;
    std::atomic<int> port = 0;

    DeviceSocket videoSocket;
    DeviceSocket audioSocket;
    DeviceSocket controlSocket;

    // What the callbacks said, all on the main thread.
    std::vector<std::optional<QString>> ends;
    std::vector<QSizeF> sizes;
    std::vector<QImage> snapshots;
    int firstFrames = 0;

    int streamsBefore = 0;
    int threadsBefore = 0;
};

const auto parameterSets = QByteArray::fromHex("000000016742aa"
                                               "0000000168bb");

} // namespace quillnest
