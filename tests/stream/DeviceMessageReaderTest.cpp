#include "ConnectedSocket.h"
#include "StreamTest.h"

#include "stream/ScrcpyControl.h"

using namespace quillnest;

namespace
{
QByteArray clipboard(const QByteArray &text)
{
    return QByteArray(1, '\0') + bigEndian(static_cast<std::uint32_t>(text.size())) + text;
}

class DeviceMessageReaderTest : public StreamTest
{
protected:
    /// What is on this machine's clipboard; empty when that is no text.
    QString clipboardText() const { return fakes.pasteboard->string().value_or(QString()); }
    /// Whether a text is on the clipboard, after the pause that follows the one before it.
    bool arrived(const QString &text) const
    {
        fakes.clock->advance(DeviceMessageReader::clipboardPause);
        return clipboardText() == text;
    }
    /// Sends a text behind what was sent before and waits for it: all before it has been handled.
    ::testing::AssertionResult readerGoesOn()
    {
        const auto text = QStringLiteral("sentinel %1").arg(++m_sentinels);
        controlSocket.send(clipboard(text.toUtf8()));
        if (!comesTrue([&] { return arrived(text); }))
            return ::testing::AssertionFailure() << "the reader has ended";
        return ::testing::AssertionSuccess();
    }
    /// Sends bytes that end the reader, and then a text that must not arrive.
    void endsTheReader(const QByteArray &bytes)
    {
        ASSERT_NO_FATAL_FAILURE(openVideo());
        ASSERT_TRUE(readerGoesOn());
        // With the first frame all its threads run.
        ASSERT_TRUE(videoGoesOn());
        const auto changes = fakes.pasteboard->changeCount();
        const int threads = ownThreads();
        controlSocket.send(bytes);
        ASSERT_TRUE(comesTrue([&] { return ownThreads() == threads - 1; }));
        controlSocket.send(clipboard("too late"));
        EXPECT_TRUE(videoGoesOn());
        QCoreApplication::processEvents();
        EXPECT_EQ(fakes.pasteboard->changeCount(), changes);
        EXPECT_TRUE(ends.empty());
        // What goes to the device still goes.
        client->send(ScrcpyControl::resetVideo());
        EXPECT_EQ(controlSocket.receive(1), QByteArray("\x11"));
    }

private:
    int m_sentinels = 0;
};
} // namespace

// From the device

TEST_F(DeviceMessageReaderTest, clipboardOfTheDeviceIsPutOnThisMachines)
{
    ASSERT_NO_FATAL_FAILURE(connectAll());
    // Two characters, of five code units.
    const auto text = QStringLiteral("e\u0301\U0001F44D");
    controlSocket.send(clipboard(text.toUtf8()));
    EXPECT_TRUE(comesTrue([&] { return clipboardText() == text; }));
    EXPECT_TRUE(hasLogged(QStringLiteral("Quillnest: Android clipboard copied to Mac (2 chars)")))
        << logLines().join(QLatin1Char('\n')).toStdString();
}

TEST_F(DeviceMessageReaderTest, emptyClipboardTextDoesNothing)
{
    fakes.pasteboard->put(std::nullopt);
    const auto changes = fakes.pasteboard->changeCount();
    ASSERT_NO_FATAL_FAILURE(connectAll());
    controlSocket.send(clipboard({}));
    ASSERT_TRUE(readerGoesOn());
    EXPECT_EQ(fakes.pasteboard->changeCount(), changes + 1) << "the sentinel's change alone";
    EXPECT_FALSE(hasLogged(QStringLiteral("Quillnest: Android clipboard copied to Mac (0 chars)")));
}

TEST_F(DeviceMessageReaderTest, textThatIsThereAlreadyIsNeitherWrittenNorLogged)
{
    fakes.pasteboard->put(QStringLiteral("same"));
    const auto changes = fakes.pasteboard->changeCount();
    ASSERT_NO_FATAL_FAILURE(connectAll());
    controlSocket.send(clipboard("same"));
    ASSERT_TRUE(readerGoesOn());
    EXPECT_EQ(fakes.pasteboard->changeCount(), changes + 1) << "the sentinel's change alone";
    EXPECT_FALSE(hasLogged(QStringLiteral("Quillnest: Android clipboard copied to Mac (4 chars)")));
}

TEST_F(DeviceMessageReaderTest, badSequencesInAClipboardTextAreRepaired)
{
    ASSERT_NO_FATAL_FAILURE(connectAll());
    controlSocket.send(clipboard("a\xff"
                                 "b"));
    EXPECT_TRUE(comesTrue([&] {
        return fakes.pasteboard->string()
            == QStringLiteral("a\uFFFD"
                              "b");
    }));
}

TEST_F(DeviceMessageReaderTest, clipboardTextsAreHandedOverInOrder)
{
    ASSERT_NO_FATAL_FAILURE(connectAll());
    for (const char *text : {"one", "two", "three"}) {
        controlSocket.send(clipboard(text));
        ASSERT_TRUE(comesTrue([&] { return arrived(QString::fromLatin1(text)); }));
    }
    EXPECT_EQ(fakes.pasteboard->changeCount(), 3);
}

TEST_F(DeviceMessageReaderTest, longestClipboardTextIsTaken)
{
    ASSERT_NO_FATAL_FAILURE(connectAll());
    ASSERT_TRUE(controlSocket.send(clipboard(QByteArray(0x7FFFFF, 'a'))));
    EXPECT_TRUE(comesTrue([&] { return fakes.pasteboard->changeCount() == 1; }));
    EXPECT_EQ(clipboardText().size(), 0x7FFFFF);
    EXPECT_TRUE(readerGoesOn());
}

TEST_F(DeviceMessageReaderTest, clipboardLengthOverTheLimitEndsTheReaderAndNotTheVideo)
{
    endsTheReader(QByteArray(1, '\0') + bigEndian(0x800000));
}

TEST_F(DeviceMessageReaderTest, unknownTypeEndsTheReaderAndNotTheVideo)
{
    endsTheReader("\x03");
}

TEST_F(DeviceMessageReaderTest, acknowledgementTakesNineBytes)
{
    ASSERT_NO_FATAL_FAILURE(connectAll());
    controlSocket.send(QByteArray("\x01\x00\x00\x00\x00\x00\x00\x00\x02", 9));
    EXPECT_TRUE(readerGoesOn());
    EXPECT_EQ(fakes.pasteboard->changeCount(), 1);
}

TEST_F(DeviceMessageReaderTest, outputOfAnInputDeviceWithoutDataTakesFiveBytes)
{
    ASSERT_NO_FATAL_FAILURE(connectAll());
    controlSocket.send(QByteArray("\x02\xff\xff\x00\x00", 5));
    EXPECT_TRUE(readerGoesOn());
}

TEST_F(DeviceMessageReaderTest, outputOfAnInputDeviceIsReadAndDropped)
{
    ASSERT_NO_FATAL_FAILURE(connectAll());
    controlSocket.send(QByteArray("\x02\x00\x01\x01\x02", 5) + QByteArray(0x0102, '\x07'));
    EXPECT_TRUE(readerGoesOn());
    EXPECT_EQ(fakes.pasteboard->changeCount(), 1);
}

TEST_F(DeviceMessageReaderTest, textThatArrivesAfterTheClientHasGoneIsDropped)
{
    ASSERT_NO_FATAL_FAILURE(openVideo());
    ASSERT_TRUE(videoGoesOn());
    const int threads = ownThreads();
    controlSocket.send(clipboard("late") + QByteArray("\x7f"));
    // The reader has handed the text over, and the main thread hasn't come to it.
    ASSERT_TRUE(comesTrueWithoutMain([&] { return ownThreads() == threads - 1; }));
    client->stop();
    client.reset();
    ASSERT_TRUE(comesTrueWithoutMain([this] { return watched.expired(); }));
    QCoreApplication::processEvents();
    EXPECT_EQ(fakes.pasteboard->changeCount(), 0);
}

TEST_F(DeviceMessageReaderTest, floodOfTextsCostsOneSlotAndTheNewestArrives)
{
    fakes.platform.executor = fakes.executor;
    DeviceMessageReader reader(fakes.platform, log);
    QByteArray flood;
    for (int i = 0; i < 500; ++i)
        flood += clipboard("text " + QByteArray::number(i));
    ConnectedSocket connection;
    connection.sendAndClose(flood + clipboard({}));
    reader.read(*connection.socket);
    // The main thread has had no turn meanwhile, and has one thing to do when it gets one.
    EXPECT_EQ(fakes.executor->drainMain(), 1U);
    EXPECT_EQ(fakes.pasteboard->changeCount(), 1);
    EXPECT_EQ(clipboardText(), QStringLiteral("text 499")) << "the empty text behind it does nothing";
}

TEST_F(DeviceMessageReaderTest, clipboardChangesAtMostAFewTimesInASecondAndTheLastTextIsNotLost)
{
    fakes.platform.executor = fakes.executor;
    DeviceMessageReader reader(fakes.platform, log);
    for (int i = 0; i < 100; ++i) {
        ConnectedSocket connection;
        connection.sendAndClose(clipboard("text " + QByteArray::number(i)));
        reader.read(*connection.socket);
        fakes.executor->drainMain();
        fakes.clock->advance(std::chrono::milliseconds(10));
    }
    fakes.executor->drainMain();
    EXPECT_LE(fakes.pasteboard->changeCount(), 1 + 1000 / 200);
    fakes.clock->advance(DeviceMessageReader::clipboardPause);
    EXPECT_EQ(clipboardText(), QStringLiteral("text 99"));
}

TEST_F(DeviceMessageReaderTest, readerThatGoesTakesAlongWhatItHasNotHandedOver)
{
    fakes.platform.executor = fakes.executor;
    for (const bool waits : {false, true}) {
        ConnectedSocket connection;
        {
            DeviceMessageReader reader(fakes.platform, log);
            if (waits) {
                ConnectedSocket first;
                first.sendAndClose(clipboard("first"));
                reader.read(*first.socket);
                fakes.executor->drainMain();
            }
            connection.sendAndClose(clipboard("late"));
            reader.read(*connection.socket);
            if (waits)
                fakes.executor->drainMain();
        }
        fakes.executor->drainMain();
        fakes.clock->advance(std::chrono::seconds(1));
        EXPECT_NE(clipboardText(), QStringLiteral("late")) << waits;
    }
}

// To the device

TEST_F(DeviceMessageReaderTest, messagesOfSeveralThreadsKeepTheirOrderAndStayWhole)
{
    constexpr int threadCount = 4;
    constexpr int each = 1000;
    ASSERT_NO_FATAL_FAILURE(connectAll());
    std::vector<std::thread> threads;
    for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([this, thread] {
            for (int i = 0; i < each; ++i)
                client->send(ScrcpyControl::text(QStringLiteral("%1:%2").arg(thread).arg(i, 4, 10, QLatin1Char('0'))));
        });
    }
    std::vector<int> next(threadCount, 0);
    for (int i = 0; i < threadCount * each; ++i) {
        const auto bytes = controlSocket.receive(11);
        ASSERT_EQ(bytes.left(5), QByteArray("\x01\x00\x00\x00\x06", 5)) << i;
        const auto parts = bytes.mid(5).split(':');
        ASSERT_EQ(parts.size(), 2);
        const auto thread = parts[0].toUInt();
        ASSERT_LT(thread, static_cast<unsigned>(threadCount));
        ASSERT_EQ(parts[1].toInt(), next[thread]++);
    }
    for (auto &thread : threads)
        thread.join();
}

TEST_F(DeviceMessageReaderTest, deviceThatStopsReadingHoldsUpNeitherTheCallerNorTheVideo)
{
    ASSERT_NO_FATAL_FAILURE(openVideo());
    // More than the sockets' buffers hold, by far.
    const auto message = ScrcpyControl::setClipboard(QString(200000, QLatin1Char('x')), false, 2);
    for (int i = 0; i < 200; ++i)
        client->send(message);
    EXPECT_TRUE(videoGoesOn());
    // What waits is discarded with the client, and the write under way ends with the socket.
    client->stop();
    EXPECT_TRUE(endsOnceWith(std::nullopt));
}

TEST_F(DeviceMessageReaderTest, deviceThatReadsAgainFindsTheFingerLifted)
{
    ASSERT_NO_FATAL_FAILURE(openVideo());
    using ScrcpyControl::MotionAction;
    const QSizeF frame(800, 600);
    client->send(ScrcpyControl::touch(MotionAction::down, {1, 1}, frame));
    const auto clipboard = ScrcpyControl::setClipboard(QString(200000, QLatin1Char('x')), false, 2);
    for (int i = 0; i < 200; ++i) {
        client->send(clipboard);
        client->send(ScrcpyControl::touch(MotionAction::move, {1.0 * i, 1}, frame));
    }
    const auto up = ScrcpyControl::touch(MotionAction::up, {199, 1}, frame);
    client->send(up);
    EXPECT_GT(client->statistics().controlDropped, 0U) << "what waits is bounded";
    EXPECT_TRUE(controlSocket.receiveUntil(up).endsWith(up));
    client->send(ScrcpyControl::backDown());
    EXPECT_EQ(controlSocket.receive(2), ScrcpyControl::backDown()) << "and then everything goes out again";
}

TEST_F(DeviceMessageReaderTest, whatDidNotFitAtOnceFollowsWhole)
{
    ASSERT_NO_FATAL_FAILURE(connectAll());
    // More than the sockets' buffers hold, less than the queue takes.
    QByteArray all;
    for (int i = 0; i < 20; ++i) {
        const auto message = ScrcpyControl::setClipboard(
            QString(200000, QChar(static_cast<char16_t>(u'a' + i))), false, static_cast<std::uint64_t>(i));
        client->send(message);
        all += message;
    }
    client->send(ScrcpyControl::backDown());
    all += ScrcpyControl::backDown();
    EXPECT_EQ(client->statistics().controlDropped, 0U);
    EXPECT_TRUE(controlSocket.receive(static_cast<int>(all.size())) == all);
}

TEST_F(DeviceMessageReaderTest, sendAfterStopDoesNothing)
{
    ASSERT_NO_FATAL_FAILURE(connectAll());
    client->stop();
    client->send(ScrcpyControl::backDown());
    EXPECT_EQ(controlSocket.receive(2), QByteArray());
}

TEST_F(DeviceMessageReaderTest, sendBeforeTheConnectionIsDropped)
{
    ASSERT_NO_FATAL_FAILURE(startUntilServerRuns());
    client->send(ScrcpyControl::backDown());
    videoSocket = DeviceSocket(static_cast<std::uint16_t>(port));
    audioSocket = DeviceSocket(static_cast<std::uint16_t>(port));
    controlSocket = DeviceSocket(static_cast<std::uint16_t>(port));
    EXPECT_EQ(controlSocket.receive(18), QByteArray("\x10\x10+com.example.app"));
}

TEST_F(DeviceMessageReaderTest, sendWithoutAConnectionOfAnyKind)
{
    makeClient();
    client->send(ScrcpyControl::backDown());
    EXPECT_TRUE(ends.empty());
}

TEST_F(DeviceMessageReaderTest, firstClipboardMessageCarriesNumberTwo)
{
    makeClient();
    EXPECT_EQ(client->nextClipboardSequence(), 2U);
    EXPECT_EQ(client->nextClipboardSequence(), 3U);
}
