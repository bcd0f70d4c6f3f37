#include "platform/posix/PosixLocalListener.h"

#include "fakes/DeviceSocket.h"
#include "platform/AnotherUser.h"
#include "platform/Conditions.h"
#include "platform/posix/PosixStreamSocket.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <gtest/gtest.h>

using namespace quillnest;

namespace
{
template <typename Work> std::string failureOf(Work work)
{
    try {
        work();
    } catch (const SocketError &error) {
        return error.what();
    }
    return "none";
}
} // namespace

TEST(PosixLocalListenerTest, listensOnAFreePortOfThisMachineAlone)
{
    PosixLocalListener first;
    PosixLocalListener second;
    EXPECT_NE(first.port(), 0);
    EXPECT_NE(first.port(), second.port());
    QFile table(QStringLiteral("/proc/net/tcp"));
    ASSERT_TRUE(table.open(QIODevice::ReadOnly));
    // Local addresses stand in hexadecimal, as the machine's own integers.
    const auto entry = QByteArray("0100007F:") + QByteArray::number(first.port(), 16).toUpper().rightJustified(4, '0');
    EXPECT_TRUE(table.readAll().contains(entry));
}

TEST(PosixLocalListenerTest, connectionsComeInTheOrderInWhichTheyWereMade)
{
    PosixLocalListener listener;
    DeviceSocket devices[3]
        = {DeviceSocket(listener.port()), DeviceSocket(listener.port()), DeviceSocket(listener.port())};
    const char names[] = {'a', 'b', 'c'};
    for (int i = 0; i < 3; ++i)
        devices[i].send(QByteArray(1, names[i]));
    for (const char name : names)
        EXPECT_EQ(listener.accept(10.0)->readExactly(1), std::vector<std::uint8_t>{static_cast<std::uint8_t>(name)});
}

TEST(PosixLocalListenerTest, acceptedSocketSendsAtOnceAndIsNotInherited)
{
    PosixLocalListener listener;
    const DeviceSocket device(listener.port());
    const auto socket = std::dynamic_pointer_cast<PosixStreamSocket>(listener.accept(10.0));
    ASSERT_TRUE(socket);
    int on = 0;
    socklen_t length = sizeof on;
    ::getsockopt(socket->descriptor(), IPPROTO_TCP, TCP_NODELAY, &on, &length);
    EXPECT_NE(on, 0);
    EXPECT_NE(::fcntl(socket->descriptor(), F_GETFD) & FD_CLOEXEC, 0);
}

TEST(PosixLocalListenerTest, nobodyConnecting)
{
    PosixLocalListener listener;
    EXPECT_EQ(
        failureOf([&] { listener.accept(0.01); }), "failed(\"timed out waiting for the Android side to connect\")");
}

TEST(PosixLocalListenerTest, anotherUsersConnectionIsTurnedAwayAndTheNextOneTaken)
{
    if (!AnotherUser::canBeMade())
        GTEST_SKIP() << "needs root";
    PosixLocalListener listener;
    const auto stranger = AnotherUser::connected(listener.port());
    ASSERT_TRUE(stranger.isReady);
    EXPECT_EQ(
        failureOf([&] { listener.accept(0.01); }), "failed(\"timed out waiting for the Android side to connect\")");
    const auto again = AnotherUser::connected(listener.port());
    DeviceSocket device(listener.port());
    device.send("d");
    EXPECT_EQ(listener.accept(10.0)->readExactly(1), std::vector<std::uint8_t>{'d'});
}

TEST(PosixLocalListenerTest, ofAConnectionThatWasClosedAtOnceNothingIsBelieved)
{
    PosixLocalListener listener;
    {
        DeviceSocket device(listener.port());
        device.send("it may have been anybody");
    }
    EXPECT_EQ(listener.accept(10.0)->readExactly(1), std::nullopt);
}

TEST(PosixLocalListenerTest, strangersAtTheDoorDoNotStretchTheTime)
{
    if (!AnotherUser::canBeMade())
        GTEST_SKIP() << "needs root";
    PosixLocalListener listener;
    const auto one = AnotherUser::connected(listener.port());
    const auto two = AnotherUser::connected(listener.port());
    EXPECT_EQ(
        failureOf([&] { listener.accept(-0.01); }), "failed(\"timed out waiting for the Android side to connect\")");
}

TEST(PosixLocalListenerTest, wakeEndsAWaitingAcceptAndEveryLaterOne)
{
    PosixLocalListener listener;
    std::thread waiting([&] { EXPECT_NE(failureOf([&] { listener.accept(3600.0); }), "none"); });
    listener.wake();
    waiting.join();
    EXPECT_EQ(failureOf([&] { listener.accept(3600.0); }), "failed(\"accept\")");
}

TEST(PosixLocalListenerTest, closesItsSocketWithItself)
{
    const int before = openStreams();
    auto listener = std::make_unique<PosixLocalListener>();
    const auto port = listener->port();
    EXPECT_GT(openStreams(), before);
    listener.reset();
    EXPECT_EQ(openStreams(), before);
    EXPECT_FALSE(DeviceSocket(port).isOpen());
}

TEST(PosixStreamSocketTest, readsExactlyAsMuchAsWasAskedForWhateverThePieces)
{
    PosixLocalListener listener;
    DeviceSocket device(listener.port());
    const auto socket = listener.accept(10.0);
    std::thread sender([&] {
        for (const char byte : {'1', '2', '3', '4', '5'})
            device.send(QByteArray(1, byte));
    });
    EXPECT_EQ(socket->readExactly(4), (std::vector<std::uint8_t>{'1', '2', '3', '4'}));
    EXPECT_EQ(socket->readExactly(1), std::vector<std::uint8_t>{'5'});
    sender.join();
}

TEST(PosixStreamSocketTest, readingNothingNeedsNoConnection)
{
    PosixLocalListener listener;
    DeviceSocket device(listener.port());
    const auto socket = listener.accept(10.0);
    device.close();
    EXPECT_EQ(socket->readExactly(0), std::vector<std::uint8_t>{});
}

TEST(PosixStreamSocketTest, connectionThatEndsHalfWayGivesNothing)
{
    PosixLocalListener listener;
    DeviceSocket device(listener.port());
    const auto socket = listener.accept(10.0);
    device.send("123");
    device.close();
    EXPECT_EQ(socket->readExactly(4), std::nullopt);
}

TEST(PosixStreamSocketTest, shutDownWakesAReaderAndAWriter)
{
    PosixLocalListener listener;
    const DeviceSocket device(listener.port());
    const auto socket = listener.accept(10.0);
    std::thread reader([&] { EXPECT_EQ(socket->readExactly(1), std::nullopt); });
    std::thread writer([&] {
        const std::vector<std::uint8_t> much(1 << 20);
        while (socket->writeAll(much)) { }
    });
    socket->shutDown();
    reader.join();
    writer.join();
}

TEST(PosixStreamSocketTest, writingToSomebodyWhoLeftFailsAndNothingElse)
{
    PosixLocalListener listener;
    DeviceSocket device(listener.port());
    const auto socket = listener.accept(10.0);
    device.close();
    const std::vector<std::uint8_t> bytes(1000);
    // The first writes may still find room; then the refusal arrives.
    EXPECT_TRUE(comesTrueWithoutMain([&] { return !socket->writeAll(bytes); }));
}

TEST(SocketErrorTest, textFormNamesTheCaseWithItsTextInQuotes)
{
    EXPECT_STREQ(SocketError::failed("bind/listen").what(), "failed(\"bind/listen\")");
}
