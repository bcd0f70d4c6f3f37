#include "StreamTest.h"

namespace quillnest
{

StreamTest::StreamTest()
{
    fakes.platform.executor = executor;
    fakes.platform.video = video;
    fakes.platform.audio = audio;
    config.adb = QStringLiteral("/sdk/adb");
    config.serial = QStringLiteral("emulator-5556");
    config.server = QStringLiteral("/bundle/scrcpy-server");
    config.package = QStringLiteral("com.example.app");
    config.pixelSize = QSizeF(780, 1448.5);
    config.dpi = 320;

    fakes.processes->on(QStringLiteral("reverse localabstract"), [this](const ChildCommand &command) {
        port = command.arguments.back().mid(4).toInt();
        return ScriptedProcesses::Answer{};
    });
    // As the real one: it ends some time after it was asked to, and on a thread of its own.
    fakes.processes->onStart(
        QStringLiteral("app_process"), [](ScriptedChild &child) { child.ignoresTerminate = true; });
}

void StreamTest::SetUp()
{
    log = std::make_shared<QuillnestLog>(fakes.clock, fakes.home->path(), QStringLiteral("session.log"), true);
    streamsBefore = openStreams();
    threadsBefore = ownThreads();
}

void StreamTest::TearDown()
{
    videoSocket.close();
    audioSocket.close();
    controlSocket.close();
    dropClient();
}

void StreamTest::dropClient()
{
    if (!client)
        return;
    client->stop();
    for (const auto &child : fakes.processes->children())
        child->exit(143);
    client.reset();
    // A real renderer has a thread of its own.
    usedRenderer = renderer;
    EXPECT_TRUE(comesTrue([this] { return watched.expired(); })) << "a thread keeps the client alive";
    // What its threads left for the main thread to do.
    QCoreApplication::processEvents();
    videoSocket.close();
    audioSocket.close();
    controlSocket.close();
    EXPECT_TRUE(comesTrue([this] { return ownThreads() == threadsBefore; }))
        << ownThreads() << " threads, " << threadsBefore << " before";
    EXPECT_TRUE(comesTrue([this] { return openStreams() == streamsBefore; }))
        << openStreams() << " descriptors, " << streamsBefore << " before";
    EXPECT_LE(ends.size(), 1U);
}

void StreamTest::makeClient()
{
    client = AndroidStreamClient::create(fakes.platform, config, usedRenderer, log);
    watched = client;
    client->onEnded = [this](const std::optional<QString> &text) { ends.push_back(text); };
    client->onVideoSize = [this](QSizeF size) { sizes.push_back(size); };
    client->onFirstFrame = [this] { ++firstFrames; };
    client->onSnapshot = [this](const ImageBox &box) { snapshots.push_back(box.image); };
}

void StreamTest::startUntilServerRuns()
{
    makeClient();
    client->start();
    ASSERT_TRUE(comesTrue([this] { return server() != nullptr; }));
}

void StreamTest::connectAll()
{
    ASSERT_NO_FATAL_FAILURE(startUntilServerRuns());
    const auto device = static_cast<std::uint16_t>(port);
    videoSocket = DeviceSocket(device);
    if (!serverArguments().contains(QStringLiteral("audio=false")))
        audioSocket = DeviceSocket(device);
    controlSocket = DeviceSocket(device);
    ASSERT_EQ(controlSocket.receive(18), QByteArray("\x10\x10+com.example.app"));
}

void StreamTest::openVideo()
{
    ASSERT_NO_FATAL_FAILURE(connectAll());
    ASSERT_TRUE(videoSocket.send(videoPreamble()));
}

void StreamTest::openVideoAndAudio()
{
    ASSERT_NO_FATAL_FAILURE(openVideo());
    ASSERT_TRUE(audioSocket.send(bigEndian(0x00726177)));
    ASSERT_TRUE(comesTrue([this] { return audio->engines().size() == 1; }));
}

::testing::AssertionResult StreamTest::videoGoesOn()
{
    const auto before = renderer->count();
    if (!videoSocket.send(packet(configFlag, parameterSets) + packet(keyFlag, QByteArray("\x65\x01\x02", 3))))
        return ::testing::AssertionFailure() << "the video socket is closed";
    if (!comesTrue([&] { return renderer->count() > before; }))
        return ::testing::AssertionFailure() << "no frame came through";
    return ::testing::AssertionSuccess();
}

std::shared_ptr<ScriptedChild> StreamTest::server() const
{
    const auto children = fakes.processes->children();
    return children.empty() ? nullptr : children.back();
}

QStringList StreamTest::logLines() const
{
    return log->tail(100000).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

bool StreamTest::endsOnceWith(const std::optional<QString> &text)
{
    if (!comesTrue([this] { return !ends.empty(); }))
        return false;
    // With its threads gone, a second report would be there too.
    dropClient();
    EXPECT_EQ(ends.size(), 1U);
    EXPECT_EQ(
        ends.front().value_or(QStringLiteral("(none)")).toStdString(),
        text.value_or(QStringLiteral("(none)")).toStdString());
    return ends.size() == 1 && ends.front() == text;
}

QStringList StreamTest::serverArguments() const
{
    for (const auto &call : fakes.processes->calls()) {
        if (call.arguments.contains(QStringLiteral("app_process")))
            return call.arguments;
    }
    return {};
}

} // namespace quillnest
