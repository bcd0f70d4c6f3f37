#include "stream/ControlLink.h"

#include "ConnectedSocket.h"
#include "fakes/FakePlatform.h"

#include <gtest/gtest.h>

#include <thread>

using namespace quillnest;
using namespace std::chrono_literals;

namespace
{

class ControlLinkTest : public ::testing::Test
{
protected:
    FakePlatform fakes = fakePlatform();
    ConnectedSocket connection;
    ControlLink link{fakes.clock, *fakes.executor};
};

} // namespace

TEST_F(ControlLinkTest, messagesGoOutAtOnceOnTheCallersThread)
{
    link.connect(connection.socket);
    link.send("one");
    link.send("two");
    EXPECT_EQ(connection.device.receive(6), QByteArray("onetwo"));
    EXPECT_EQ(fakes.executor->pendingInBackground(), 0U);
}

TEST_F(ControlLinkTest, withoutAConnectionMessagesAreDropped)
{
    link.send("before");
    link.connect(connection.socket);
    link.send("while");
    link.disconnect();
    link.send("after");
    EXPECT_EQ(connection.device.receive(5), QByteArray("while"));
    EXPECT_TRUE(connection.device.ends());
    EXPECT_EQ(link.socket(), nullptr);
    EXPECT_EQ(link.counters().waiting, 0U);
    EXPECT_EQ(link.counters().latency.count(), 1U) << "what went nowhere took no time";
}

TEST_F(ControlLinkTest, whatTheDeviceDoesNotReadFollowsOnTheQueueInItsOrder)
{
    link.connect(connection.socket);
    QByteArray all;
    const auto sendMore = [&](char letter) {
        const QByteArray message(200000, letter);
        link.send(message);
        all += message;
    };
    // As much as the sockets' buffers hold, and then some.
    for (int i = 0; i < 200 && link.counters().waiting == 0; ++i)
        sendMore(static_cast<char>('a' + i % 26));
    sendMore('!');
    sendMore('?');
    EXPECT_GE(link.counters().waiting, 2U);
    EXPECT_EQ(fakes.executor->pendingInBackground(), 1U) << "one empties the queue, however many come";
    std::thread queue([this] { fakes.executor->runOneInBackground(); });
    EXPECT_TRUE(connection.device.receive(static_cast<int>(all.size())) == all);
    queue.join();
    EXPECT_EQ(link.counters().waiting, 0U);
    EXPECT_EQ(link.counters().dropped, 0U);
}

TEST_F(ControlLinkTest, latencyCountsFromTheMomentThatTheCallerNames)
{
    link.connect(connection.socket);
    const auto since = fakes.clock->monotonic();
    fakes.clock->advance(7ms);
    link.send("x", since);
    EXPECT_DOUBLE_EQ(link.counters().latency.worst(), 7);
}

TEST_F(ControlLinkTest, theFirstClipboardMessageIsNumberTwo)
{
    EXPECT_EQ(link.nextClipboardSequence(), 2U);
    EXPECT_EQ(link.nextClipboardSequence(), 3U);
}
