#include "StreamTest.h"
#include "platform/Semaphore.h"

#include <QRegularExpression>
#include <QSet>

using namespace quillnest;

namespace
{
using AndroidStreamClientTest = StreamTest;

const auto couldNotConnect = QStringLiteral("Could not connect to Android: ");

QString scidOf(const QStringList &arguments)
{
    return arguments.filter(QStringLiteral("scid=")).value(0).mid(5);
}

QStringList expectedArguments(const QString &scid, const QString &audio)
{
    return {
        QStringLiteral("-s"),
        QStringLiteral("emulator-5556"),
        QStringLiteral("shell"),
        QStringLiteral("CLASSPATH=/data/local/tmp/scrcpy-server.jar"),
        QStringLiteral("app_process"),
        QStringLiteral("/"),
        QStringLiteral("com.genymobile.scrcpy.Server"),
        QStringLiteral("5.0.1"),
        QStringLiteral("scid=") + scid,
        QStringLiteral("log_level=info"),
        audio,
        QStringLiteral("video_bit_rate=8000000"),
        QStringLiteral("max_fps=60"),
        QStringLiteral("new_display=776x1448/320"),
        QStringLiteral("flex_display=true"),
        QStringLiteral("vd_system_decorations=false"),
        QStringLiteral("clipboard_autosync=true"),
        QStringLiteral("power_on=false"),
    };
}
} // namespace

// The road

TEST_F(AndroidStreamClientTest, pushesTunnelsStartsTheServerAndTakesTheTunnelDown)
{
    ASSERT_NO_FATAL_FAILURE(connectAll());
    const auto lines = fakes.processes->lines();
    ASSERT_EQ(lines.size(), 4);
    const auto name = QStringLiteral("localabstract:scrcpy_") + scidOf(serverArguments());
    EXPECT_EQ(
        lines[0],
        QStringLiteral("/sdk/adb -s emulator-5556 push /bundle/scrcpy-server /data/local/tmp/scrcpy-server.jar"));
    EXPECT_EQ(lines[1], QStringLiteral("/sdk/adb -s emulator-5556 reverse %1 tcp:%2").arg(name).arg(port));
    EXPECT_TRUE(lines[2].contains(QStringLiteral("app_process")));
    EXPECT_EQ(lines[3], QStringLiteral("/sdk/adb -s emulator-5556 reverse --remove ") + name);
    for (const auto &call : fakes.processes->calls()) {
        EXPECT_EQ(call.output, ChildCommand::Output::pipe);
        EXPECT_EQ(call.errors, ChildCommand::Errors::merged);
    }
}

TEST_F(AndroidStreamClientTest, serverArgumentsWithSound)
{
    ASSERT_NO_FATAL_FAILURE(startUntilServerRuns());
    EXPECT_EQ(serverArguments(), expectedArguments(scidOf(serverArguments()), QStringLiteral("audio_codec=raw")));
    EXPECT_EQ(server()->command().program, QStringLiteral("/sdk/adb"));
}

TEST_F(AndroidStreamClientTest, serverArgumentsWithoutSound)
{
    fakes.settings->setValue(QStringLiteral("QuillnestForwardAudio"), false);
    ASSERT_NO_FATAL_FAILURE(startUntilServerRuns());
    EXPECT_EQ(serverArguments(), expectedArguments(scidOf(serverArguments()), QStringLiteral("audio=false")));
    EXPECT_EQ(serverArguments().at(10), QStringLiteral("audio=false"));
}

TEST_F(AndroidStreamClientTest, serverArgumentsFollowTheConfiguration)
{
    config.serial = QStringLiteral("emulator-5580");
    config.bitRate = 1234567;
    config.maxFPS = 24;
    config.pixelSize = QSizeF(1081, 7.9);
    config.dpi = 441;
    ASSERT_NO_FATAL_FAILURE(startUntilServerRuns());
    const auto arguments = serverArguments();
    EXPECT_EQ(arguments.at(1), QStringLiteral("emulator-5580"));
    EXPECT_EQ(
        arguments.mid(11, 3),
        (QStringList{
            QStringLiteral("video_bit_rate=1234567"), QStringLiteral("max_fps=24"),
            QStringLiteral("new_display=1080x0/441")}));
}

TEST_F(AndroidStreamClientTest, soundIsOnUnlessTheSettingIsABooleanThatSaysNo)
{
    for (const auto &value : {QVariant(), QVariant(true), QVariant(QStringLiteral("false")), QVariant(0)}) {
        fakes.processes->forget();
        fakes.settings->setValue(QStringLiteral("QuillnestForwardAudio"), value);
        const auto children = fakes.processes->children().size();
        makeClient();
        client->start();
        ASSERT_TRUE(comesTrue([&] { return fakes.processes->children().size() > children; }));
        EXPECT_EQ(serverArguments().at(10), QStringLiteral("audio_codec=raw"));
        dropClient();
        ends.clear();
    }
}

TEST_F(AndroidStreamClientTest, sessionIdIsDrawnAnewAndFitsThirtyOneBits)
{
    QSet<QString> seen;
    for (int i = 0; i < 5; ++i) {
        fakes.processes->forget();
        const auto children = fakes.processes->children().size();
        makeClient();
        client->start();
        ASSERT_TRUE(comesTrue([&] { return fakes.processes->children().size() > children; }));
        const auto scid = scidOf(serverArguments());
        EXPECT_TRUE(QRegularExpression(QStringLiteral("^[0-9a-f]{8}$")).match(scid).hasMatch()) << scid.toStdString();
        const auto value = scid.toUInt(nullptr, 16);
        EXPECT_GE(value, 1U);
        EXPECT_LE(value, 0x7FFFFFFEU);
        seen.insert(scid);
        dropClient();
        ends.clear();
    }
    EXPECT_EQ(seen.size(), 5);
}

TEST(StreamDisplaySizeTest, eachSideIsCutDownToAMultipleOfEight)
{
    const auto cut = [](double width, double height) {
        const auto size = AndroidStreamClient::displaySize(QSizeF(width, height));
        return std::pair(size.width(), size.height());
    };
    EXPECT_EQ(cut(780, 1448.5), std::pair(776, 1448));
    EXPECT_EQ(cut(8, 15.999), std::pair(8, 8));
    EXPECT_EQ(cut(7.999, 0), std::pair(0, 0));
    EXPECT_EQ(cut(1080, 1920), std::pair(1080, 1920));
}

TEST_F(AndroidStreamClientTest, socketsAreVideoAudioControlInTheOrderOfTheConnections)
{
    ASSERT_NO_FATAL_FAILURE(openVideoAndAudio());
    EXPECT_TRUE(videoGoesOn());
    EXPECT_TRUE(hasLogged(QStringLiteral("Quillnest: audio forwarding on (48 kHz stereo PCM)")));
    controlSocket.send(QByteArray("\x00\x00\x00\x00\x02hi", 7));
    EXPECT_TRUE(comesTrue([this] { return fakes.pasteboard->string() == QStringLiteral("hi"); }));
}

TEST_F(AndroidStreamClientTest, firstConnectionIsTheVideoSocketWhateverItCarries)
{
    ASSERT_NO_FATAL_FAILURE(startUntilServerRuns());
    videoSocket = DeviceSocket(static_cast<std::uint16_t>(port));
    // What a sound socket begins with, and then enough for a preamble.
    videoSocket.send(bigEndian(0x00726177) + QByteArray(64, '\x11'));
    audioSocket = DeviceSocket(static_cast<std::uint16_t>(port));
    controlSocket = DeviceSocket(static_cast<std::uint16_t>(port));
    EXPECT_TRUE(endsOnceWith(QStringLiteral("Unsupported video codec 0x11111111")));
}

TEST_F(AndroidStreamClientTest, withoutSoundExactlyTwoConnectionsAreAccepted)
{
    fakes.settings->setValue(QStringLiteral("QuillnestForwardAudio"), false);
    ASSERT_NO_FATAL_FAILURE(openVideo());
    DeviceSocket third(static_cast<std::uint16_t>(port));
    EXPECT_TRUE(third.isOpen());
    EXPECT_TRUE(videoGoesOn());
    // Three ends of the device's, two of the client's, and the listener with the pipe that wakes it.
    EXPECT_EQ(openStreams(), streamsBefore + 8);
    EXPECT_TRUE(audio->engines().empty());
    client->stop();
    EXPECT_TRUE(third.ends());
}

TEST_F(AndroidStreamClientTest, startsTheAppWithAPlusSignInFront)
{
    config.package = QStringLiteral("org.other");
    ASSERT_NO_FATAL_FAILURE(startUntilServerRuns());
    videoSocket = DeviceSocket(static_cast<std::uint16_t>(port));
    audioSocket = DeviceSocket(static_cast<std::uint16_t>(port));
    controlSocket = DeviceSocket(static_cast<std::uint16_t>(port));
    EXPECT_EQ(controlSocket.receive(12), QByteArray("\x10\x0a+org.other"));
}

TEST_F(AndroidStreamClientTest, logsHowLongTheConnectionTook)
{
    fakes.processes->on(QStringLiteral("push"), [this](const ChildCommand &) {
        fakes.clock->advance(std::chrono::milliseconds(1260));
        return ScriptedProcesses::Answer{};
    });
    ASSERT_NO_FATAL_FAILURE(connectAll());
    EXPECT_TRUE(hasLogged(QStringLiteral("Quillnest: sockets connected after 1.26s (port %1)").arg(port)))
        << logLines().join(QLatin1Char('\n')).toStdString();
}

TEST_F(AndroidStreamClientTest, constructionDoesNothing)
{
    makeClient();
    EXPECT_TRUE(fakes.processes->calls().empty());
    EXPECT_EQ(openStreams(), streamsBefore);
    client->stop();
    client->stop();
    EXPECT_TRUE(ends.empty());
}

// Ends before the stream

TEST_F(AndroidStreamClientTest, failedPush)
{
    fakes.processes->on(QStringLiteral("push"), ScriptedProcesses::Answer{"adb: error: no space", 1, {}});
    makeClient();
    client->start();
    EXPECT_TRUE(endsOnceWith(couldNotConnect + QStringLiteral("failed(\"push server: adb: error: no space\")")));
    EXPECT_EQ(fakes.processes->calls().size(), 1U);
    EXPECT_TRUE(
        hasLogged(QStringLiteral("Quillnest: stream start failed: failed(\"push server: adb: error: no space\")")));
}

TEST_F(AndroidStreamClientTest, whatAdbPrintsStandsInTheSentenceAsOneLine)
{
    for (const char *command : {"push", "reverse"}) {
        const ScriptedProcesses::Answer answer{"adb: error: no space\r\n  left on device\n", 1, {}};
        fakes.processes->on(QString::fromLatin1(command), answer);
        makeClient();
        client->start();
        const auto step = QLatin1String(command) == QLatin1String("push") ? "push server" : "adb reverse";
        EXPECT_TRUE(endsOnceWith(
            couldNotConnect
            + QStringLiteral("failed(\"%1: adb: error: no space left on device\")").arg(QLatin1String(step))));
        EXPECT_TRUE(hasLogged(
            QStringLiteral("Quillnest: stream start failed: failed(\"%1: adb: error: no space left on device\")")
                .arg(QLatin1String(step))));
        fakes.processes->on(QString::fromLatin1(command), ScriptedProcesses::Answer{});
        ends.clear();
    }
}

TEST_F(AndroidStreamClientTest, stopEndsTheAdbThatADeviceKeepsWaiting)
{
    /// An adb that ends when it is told to.
    class StuckProcesses : public ScriptedProcesses
    {
    public:
        ChildResult runEndable(const ChildCommand &command, const Started &started) override
        {
            child = std::make_shared<ScriptedChild>(command, Handlers{});
            started(child);
            isRunning = true;
            if (!comesTrueWithoutMain([this] { return !child->isRunning(); }))
                return {};
            return {std::nullopt, 143, {}};
        }
        std::atomic_bool isRunning = false;
        std::shared_ptr<ScriptedChild> child;
    };
    const auto stuck = std::make_shared<StuckProcesses>();
    fakes.platform.processes = stuck;
    const auto threads = std::make_shared<StreamThreads>();
    client = AndroidStreamClient::create(fakes.platform, config, usedRenderer, log, threads);
    watched = client;
    client->onEnded = [this](const std::optional<QString> &text) { ends.push_back(text); };
    client->start();
    ASSERT_TRUE(comesTrue([&] { return stuck->isRunning.load(); }));
    EXPECT_FALSE(threads->waitForEnd(std::chrono::milliseconds(1)));
    client->stop();
    EXPECT_EQ(stuck->child->terminations(), 1);
    EXPECT_TRUE(threads->waitForEnd(std::chrono::minutes(1)));
    EXPECT_TRUE(endsOnceWith(couldNotConnect + QStringLiteral("failed(\"push server: \")")));
}

TEST_F(AndroidStreamClientTest, theEndOfTheThreadsCanBeWaitedFor)
{
    const auto threads = std::make_shared<StreamThreads>();
    client = AndroidStreamClient::create(fakes.platform, config, usedRenderer, log, threads);
    watched = client;
    client->start();
    ASSERT_TRUE(comesTrue([this] { return server() != nullptr; }));
    videoSocket = DeviceSocket(static_cast<std::uint16_t>(port));
    audioSocket = DeviceSocket(static_cast<std::uint16_t>(port));
    controlSocket = DeviceSocket(static_cast<std::uint16_t>(port));
    ASSERT_EQ(controlSocket.receive(18), QByteArray("\x10\x10+com.example.app"));
    client->stop();
    client.reset();
    EXPECT_TRUE(threads->waitForEnd(std::chrono::seconds(30)));
    EXPECT_TRUE(watched.expired()) << "with its threads";
}

TEST_F(AndroidStreamClientTest, samplesCanBeWatchedWhileTheStreamRuns)
{
    /// Counts, and tells its end.
    class Counter : public SampleConsumer
    {
    public:
        void takeVideo(const VideoSample &, std::chrono::microseconds) override { ++pictures; }
        void takeAudio(std::span<const std::uint8_t>, std::chrono::microseconds) override { ++sounds; }
        void ended() override { hasEnded = true; }
        std::atomic_int pictures = 0;
        std::atomic_int sounds = 0;
        std::atomic_bool hasEnded = false;
    };
    ASSERT_NO_FATAL_FAILURE(openVideoAndAudio());
    ASSERT_TRUE(videoGoesOn());
    const auto first = std::make_shared<Counter>();
    const auto second = std::make_shared<Counter>();
    client->samples().attach(first);
    client->samples().attach(second);
    ASSERT_TRUE(videoGoesOn());
    audioSocket.send(packet(0, QByteArray(400, '\0')));
    EXPECT_TRUE(comesTrue([&] { return first->pictures == 1 && first->sounds == 1; }));
    client->samples().detach(first);
    EXPECT_TRUE(comesTrue([&] { return first->hasEnded.load(); }));
    ASSERT_TRUE(videoGoesOn());
    EXPECT_TRUE(comesTrue([&] { return second->pictures == 2; }));
    EXPECT_EQ(first->pictures, 1);
    EXPECT_FALSE(second->hasEnded);
    videoSocket.close();
    EXPECT_TRUE(comesTrue([&] { return second->hasEnded.load(); })) << "the stream's end is theirs";
}

TEST_F(AndroidStreamClientTest, adbThatCannotBeLaunchedForThePush)
{
    fakes.processes->on(QStringLiteral("push"), ScriptedProcesses::Answer{{}, 0, QStringLiteral("No such file")});
    makeClient();
    client->start();
    EXPECT_TRUE(endsOnceWith(couldNotConnect + QStringLiteral("failed(\"push server: No such file\")")));
}

TEST_F(AndroidStreamClientTest, outputOfAdbThatIsNoUtf8CountsAsEmpty)
{
    for (const char *output : {"broken \xff text", "cut \xc3"}) {
        fakes.processes->on(QStringLiteral("push"), ScriptedProcesses::Answer{output, 1, {}});
        makeClient();
        client->start();
        EXPECT_TRUE(endsOnceWith(couldNotConnect + QStringLiteral("failed(\"push server: \")"))) << output;
        ends.clear();
    }
}

TEST_F(AndroidStreamClientTest, failedTunnel)
{
    fakes.processes->on(QStringLiteral("reverse"), ScriptedProcesses::Answer{"no device", 2, {}});
    makeClient();
    client->start();
    EXPECT_TRUE(endsOnceWith(couldNotConnect + QStringLiteral("failed(\"adb reverse: no device\")")));
    EXPECT_EQ(fakes.processes->calls().size(), 2U);
}

TEST_F(AndroidStreamClientTest, serverThatCannotBeLaunched)
{
    fakes.processes->onStart(
        QStringLiteral("app_process"), [](ScriptedChild &) { throw LaunchError(QStringLiteral("too many files")); });
    makeClient();
    client->start();
    EXPECT_TRUE(endsOnceWith(couldNotConnect + QStringLiteral("too many files")));
}

TEST(StreamTimeoutsTest, firstConnectionGetsFifteenSecondsAndTheOthersFive)
{
    const AndroidStreamClient::Config config;
    EXPECT_EQ(config.timeouts.firstAccept, 15.0);
    EXPECT_EQ(config.timeouts.nextAccept, 5.0);
}

TEST_F(AndroidStreamClientTest, serverThatNeverConnects)
{
    config.timeouts.firstAccept = 0.02;
    config.timeouts.nextAccept = 3600;
    makeClient();
    client->start();
    EXPECT_TRUE(endsOnceWith(
        couldNotConnect + QStringLiteral("failed(\"timed out waiting for the Android side to connect\")")));
    EXPECT_GE(server()->terminations(), 1);
    // Only a connection that came about takes the tunnel down.
    EXPECT_EQ(fakes.processes->count(QStringLiteral("--remove")), 0);
}

TEST_F(AndroidStreamClientTest, serverThatConnectsOnlyItsVideo)
{
    config.timeouts.firstAccept = 3600;
    config.timeouts.nextAccept = 0.02;
    ASSERT_NO_FATAL_FAILURE(startUntilServerRuns());
    videoSocket = DeviceSocket(static_cast<std::uint16_t>(port));
    ASSERT_TRUE(comesTrue([this] { return !ends.empty(); }));
    EXPECT_TRUE(videoSocket.ends());
    EXPECT_TRUE(endsOnceWith(
        couldNotConnect + QStringLiteral("failed(\"timed out waiting for the Android side to connect\")")));
}

TEST_F(AndroidStreamClientTest, serverThatConnectsNoControl)
{
    config.timeouts.nextAccept = 0.02;
    ASSERT_NO_FATAL_FAILURE(startUntilServerRuns());
    videoSocket = DeviceSocket(static_cast<std::uint16_t>(port));
    audioSocket = DeviceSocket(static_cast<std::uint16_t>(port));
    EXPECT_TRUE(endsOnceWith(
        couldNotConnect + QStringLiteral("failed(\"timed out waiting for the Android side to connect\")")));
}

TEST_F(AndroidStreamClientTest, serverThatExitsBeforeItConnects)
{
    ASSERT_NO_FATAL_FAILURE(startUntilServerRuns());
    server()->exit(1);
    EXPECT_TRUE(endsOnceWith(std::nullopt));
    EXPECT_TRUE(hasLogged(QStringLiteral("Quillnest: android server exited status=1")));
}

TEST_F(AndroidStreamClientTest, serverThatExitsWhileItIsBeingLaunched)
{
    fakes.processes->onStart(QStringLiteral("app_process"), [](ScriptedChild &child) { child.exit(127); });
    makeClient();
    client->start();
    EXPECT_TRUE(endsOnceWith(std::nullopt));
    EXPECT_TRUE(hasLogged(QStringLiteral("Quillnest: android server exited status=127")));
}

// Ends of the stream

TEST_F(AndroidStreamClientTest, videoThatClosesBeforeItsPreambleIsThere)
{
    for (const int length : {0, 63, 64, 67}) {
        fakes.processes->forget();
        const auto children = fakes.processes->children().size();
        makeClient();
        client->start();
        ASSERT_TRUE(comesTrue([&] { return fakes.processes->children().size() > children; }));
        videoSocket = DeviceSocket(static_cast<std::uint16_t>(port));
        audioSocket = DeviceSocket(static_cast<std::uint16_t>(port));
        controlSocket = DeviceSocket(static_cast<std::uint16_t>(port));
        videoSocket.send(videoPreamble().left(length));
        videoSocket.close();
        EXPECT_TRUE(endsOnceWith(QStringLiteral("Video stream closed early"))) << length;
        ends.clear();
    }
}

TEST_F(AndroidStreamClientTest, videoCodecThatIsNotH264)
{
    ASSERT_NO_FATAL_FAILURE(connectAll());
    videoSocket.send(videoPreamble(0x68323635));
    EXPECT_TRUE(endsOnceWith(QStringLiteral("Unsupported video codec 0x68323635")));
}

TEST_F(AndroidStreamClientTest, videoCodecIsNamedWithEightDigits)
{
    ASSERT_NO_FATAL_FAILURE(connectAll());
    videoSocket.send(videoPreamble(0x00617631));
    EXPECT_TRUE(endsOnceWith(QStringLiteral("Unsupported video codec 0x00617631")));
}

TEST_F(AndroidStreamClientTest, videoThatClosesAfterItBegan)
{
    ASSERT_NO_FATAL_FAILURE(openVideo());
    ASSERT_TRUE(videoGoesOn());
    videoSocket.close();
    ASSERT_TRUE(comesTrue([this] { return !ends.empty(); }));
    // With the stream everything else ends.
    EXPECT_TRUE(controlSocket.ends());
    EXPECT_TRUE(audioSocket.ends());
    EXPECT_GE(server()->terminations(), 1);
    EXPECT_TRUE(endsOnceWith(std::nullopt));
}

TEST_F(AndroidStreamClientTest, serverThatExitsWhileStreaming)
{
    ASSERT_NO_FATAL_FAILURE(openVideo());
    ASSERT_TRUE(videoGoesOn());
    server()->exit(255);
    ASSERT_TRUE(comesTrue([this] { return !ends.empty(); }));
    EXPECT_TRUE(videoSocket.ends());
    EXPECT_EQ(server()->terminations(), 0) << "a child that has ended is left alone";
    EXPECT_TRUE(endsOnceWith(std::nullopt));
    EXPECT_TRUE(hasLogged(QStringLiteral("Quillnest: android server exited status=255")));
}

TEST_F(AndroidStreamClientTest, endThatTwoPathsSeeAtOnceIsReportedOnce)
{
    for (int round = 0; round < 20; ++round) {
        ASSERT_NO_FATAL_FAILURE({
            fakes.processes->forget();
            const auto children = fakes.processes->children().size();
            makeClient();
            client->start();
            ASSERT_TRUE(comesTrue([&] { return fakes.processes->children().size() > children; }));
        });
        videoSocket = DeviceSocket(static_cast<std::uint16_t>(port));
        audioSocket = DeviceSocket(static_cast<std::uint16_t>(port));
        controlSocket = DeviceSocket(static_cast<std::uint16_t>(port));
        videoSocket.send(videoPreamble());
        ASSERT_TRUE(videoGoesOn());
        std::thread exit([child = server()] { child->exit(1); });
        videoSocket.close();
        exit.join();
        EXPECT_TRUE(endsOnceWith(std::nullopt));
        ends.clear();
    }
}

TEST_F(AndroidStreamClientTest, lossOfTheControlSocketEndsNothingElse)
{
    ASSERT_NO_FATAL_FAILURE(openVideo());
    ASSERT_TRUE(videoGoesOn());
    const int before = ownThreads();
    controlSocket.close();
    EXPECT_TRUE(comesTrue([&] { return ownThreads() == before - 1; }));
    EXPECT_TRUE(videoGoesOn());
    EXPECT_TRUE(ends.empty());
}

TEST_F(AndroidStreamClientTest, lossOfTheAudioSocketEndsNothingElse)
{
    ASSERT_NO_FATAL_FAILURE(openVideoAndAudio());
    ASSERT_TRUE(videoGoesOn());
    const auto engine = audio->engines().front();
    audioSocket.close();
    EXPECT_TRUE(comesTrue([&] { return engine->calls().contains(QStringLiteral("stop")); }));
    EXPECT_TRUE(videoGoesOn());
    EXPECT_TRUE(ends.empty());
}

// Stop

TEST_F(AndroidStreamClientTest, stopWhileStreamingClosesEverythingAndTheReaderReportsTheEnd)
{
    ASSERT_NO_FATAL_FAILURE(openVideoAndAudio());
    ASSERT_TRUE(videoGoesOn());
    client->stop();
    EXPECT_TRUE(videoSocket.ends());
    EXPECT_TRUE(audioSocket.ends());
    EXPECT_TRUE(controlSocket.ends());
    EXPECT_GE(server()->terminations(), 1);
    EXPECT_TRUE(endsOnceWith(std::nullopt));
}

TEST_F(AndroidStreamClientTest, stopWhilePushing)
{
    Semaphore pushing;
    Semaphore release;
    fakes.processes->on(QStringLiteral("push"), [&](const ChildCommand &) {
        pushing.release();
        release.acquire();
        return ScriptedProcesses::Answer{};
    });
    makeClient();
    client->start();
    pushing.acquire();
    client->stop();
    release.release();
    ASSERT_TRUE(comesTrue([this] { return !ends.empty(); }));
    EXPECT_GE(server()->terminations(), 1);
    EXPECT_TRUE(endsOnceWith(couldNotConnect + QStringLiteral("failed(\"accept\")")));
}

TEST_F(AndroidStreamClientTest, stopWhileTheServerIsBeingLaunched)
{
    fakes.processes->onStart(QStringLiteral("app_process"), [this](ScriptedChild &child) {
        child.ignoresTerminate = true;
        client->stop();
    });
    makeClient();
    client->start();
    ASSERT_TRUE(comesTrue([this] { return !ends.empty(); }));
    EXPECT_GE(server()->terminations(), 1);
    EXPECT_TRUE(endsOnceWith(couldNotConnect + QStringLiteral("failed(\"accept\")")));
}

TEST_F(AndroidStreamClientTest, stopBeforeTheFirstConnection)
{
    ASSERT_NO_FATAL_FAILURE(startUntilServerRuns());
    client->stop();
    EXPECT_TRUE(endsOnceWith(couldNotConnect + QStringLiteral("failed(\"accept\")")));
    EXPECT_GE(server()->terminations(), 1);
}

TEST_F(AndroidStreamClientTest, stopBetweenTheConnections)
{
    ASSERT_NO_FATAL_FAILURE(startUntilServerRuns());
    videoSocket = DeviceSocket(static_cast<std::uint16_t>(port));
    // The listener with the pipe that wakes it, the device's end and the accepted one.
    ASSERT_TRUE(comesTrue([this] { return openStreams() == streamsBefore + 5; }));
    client->stop();
    EXPECT_TRUE(videoSocket.ends());
    EXPECT_TRUE(endsOnceWith(couldNotConnect + QStringLiteral("failed(\"accept\")")));
}

TEST_F(AndroidStreamClientTest, stopWhileTheTunnelIsBeingTakenDown)
{
    fakes.processes->on(QStringLiteral("--remove"), [this](const ChildCommand &) {
        client->stop();
        return ScriptedProcesses::Answer{};
    });
    ASSERT_NO_FATAL_FAILURE(startUntilServerRuns());
    videoSocket = DeviceSocket(static_cast<std::uint16_t>(port));
    audioSocket = DeviceSocket(static_cast<std::uint16_t>(port));
    controlSocket = DeviceSocket(static_cast<std::uint16_t>(port));
    EXPECT_TRUE(endsOnceWith(QStringLiteral("Video stream closed early")));
    EXPECT_FALSE(controlSocket.isOpen());
}

TEST_F(AndroidStreamClientTest, stopAtAnyMomentOfTheConnectionLeavesNothingBehind)
{
    for (int round = 0; round < 60; ++round) {
        fakes.processes->forget();
        const auto children = fakes.processes->children().size();
        makeClient();
        client->start();
        ASSERT_TRUE(comesTrue([&] { return fakes.processes->children().size() > children; }));
        std::thread stopping([subject = client, round] {
            for (int i = 0; i < round * 20; ++i)
                std::this_thread::yield();
            subject->stop();
        });
        videoSocket = DeviceSocket(static_cast<std::uint16_t>(port));
        audioSocket = DeviceSocket(static_cast<std::uint16_t>(port));
        controlSocket = DeviceSocket(static_cast<std::uint16_t>(port));
        stopping.join();
        server()->exit(143);
        ASSERT_TRUE(comesTrue([this] { return ends.size() == 1; }));
        videoSocket.close();
        audioSocket.close();
        controlSocket.close();
        ASSERT_NO_FATAL_FAILURE(dropClient());
        ASSERT_EQ(ends.size(), 1U);
        ends.clear();
    }
}

TEST_F(AndroidStreamClientTest, stopFromSeveralThreads)
{
    ASSERT_NO_FATAL_FAILURE(openVideoAndAudio());
    ASSERT_TRUE(videoGoesOn());
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([subject = client] { subject->stop(); });
    for (auto &thread : threads)
        thread.join();
    EXPECT_TRUE(endsOnceWith(std::nullopt));
    EXPECT_EQ(audio->engines().front()->calls().count(QStringLiteral("stop")), 1);
}

// What the server prints

TEST_F(AndroidStreamClientTest, displayIdStandsInTheServersOutput)
{
    ASSERT_NO_FATAL_FAILURE(startUntilServerRuns());
    EXPECT_EQ(client->displayID(), std::nullopt);
    server()->emitOutput("[server] INFO: Device: x\n[server] INFO: New display: 776x1448/320 (id=12)\nmore (idle)\n");
    EXPECT_EQ(client->displayID(), 12);
    EXPECT_TRUE(hasLogged(QStringLiteral("[server] INFO: New display: 776x1448/320 (id=12)")));
    EXPECT_TRUE(hasLogged(QStringLiteral("more (idle)")));
    server()->emitOutput("(id=7) and (id=8)");
    EXPECT_EQ(client->displayID(), 7) << "the first of a chunk, and the latest chunk";
}

TEST_F(AndroidStreamClientTest, outputCutInTheMiddleOfTheDisplayIdSetsNothing)
{
    ASSERT_NO_FATAL_FAILURE(startUntilServerRuns());
    server()->emitOutput("New display (id=1");
    server()->emitOutput("2)\n");
    EXPECT_EQ(client->displayID(), std::nullopt);
    EXPECT_TRUE(hasLogged(QStringLiteral("New display (id=1")));
}

TEST_F(AndroidStreamClientTest, outputThatLooksLikeADisplayIdAndIsNone)
{
    ASSERT_NO_FATAL_FAILURE(startUntilServerRuns());
    for (const char *chunk :
         {"(id=)", "(id=-3)", "(id=3", "id=3)", "(ID=3)", "(id=99999999999999999999999)", "(id=3x)"}) {
        server()->emitOutput(chunk);
        EXPECT_EQ(client->displayID(), std::nullopt) << chunk;
    }
}

TEST_F(AndroidStreamClientTest, outputThatIsNoUtf8IsPassedOver)
{
    ASSERT_NO_FATAL_FAILURE(startUntilServerRuns());
    server()->emitOutput("\xff (id=9)\n");
    EXPECT_EQ(client->displayID(), std::nullopt);
    // Cut inside a character.
    server()->emitOutput("(id=9) \xc3");
    EXPECT_EQ(client->displayID(), std::nullopt);
    EXPECT_TRUE(logLines().isEmpty()) << logLines().join(QLatin1Char('\n')).toStdString();
    server()->emitOutput("(id=9) \xc3\xa9");
    EXPECT_EQ(client->displayID(), 9);
}

TEST_F(AndroidStreamClientTest, outputAndEndOfAServerWhoseClientHasGoneAreSkipped)
{
    ASSERT_NO_FATAL_FAILURE(startUntilServerRuns());
    const auto orphan = server();
    client->stop();
    client.reset();
    ASSERT_TRUE(comesTrue([this] { return watched.expired(); }));
    orphan->emitOutput("(id=1)");
    orphan->exit(0);
    EXPECT_FALSE(hasLogged(QStringLiteral("(id=1)")));
}
