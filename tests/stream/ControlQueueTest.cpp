#include "stream/ControlQueue.h"

#include "stream/ScrcpyControl.h"

#include <gtest/gtest.h>

#include <thread>

using namespace quillnest;
using ScrcpyControl::KeyAction;
using ScrcpyControl::MotionAction;

namespace
{

const QSizeF frame(800, 600);

QByteArray touch(MotionAction action, int x)
{
    return ScrcpyControl::touch(action, QPointF(x, 10), frame);
}

QByteArray key(KeyAction action, std::uint32_t code = 66)
{
    return ScrcpyControl::key(action, code, 0);
}

QList<QByteArray> drain(ControlQueue &queue)
{
    QList<QByteArray> all;
    while (const auto message = queue.next())
        all.append(message->bytes);
    return all;
}

void fill(ControlQueue &queue)
{
    while (queue.size() < ControlQueue::capacity)
        queue.push(ScrcpyControl::text(QString::number(queue.size())));
}

} // namespace

TEST(ControlQueueTest, messagesComeOutInTheirOrder)
{
    ControlQueue queue;
    const QList<QByteArray> messages{
        touch(MotionAction::down, 1),
        touch(MotionAction::move, 2),
        touch(MotionAction::move, 3),
        touch(MotionAction::up, 4),
        key(KeyAction::down),
        key(KeyAction::up),
        ScrcpyControl::text(QStringLiteral("a"))};
    for (const auto &message : messages)
        queue.push(message);
    EXPECT_EQ(drain(queue), messages);
    EXPECT_EQ(queue.bytes(), 0U);
    EXPECT_EQ(queue.dropped(), 0U);
}

TEST(ControlQueueTest, onlyTheFirstMessageOfABurstHasSomebodyBegin)
{
    ControlQueue queue;
    EXPECT_TRUE(queue.push(ScrcpyControl::backDown()));
    EXPECT_FALSE(queue.push(ScrcpyControl::backUp()));
    EXPECT_TRUE(queue.next());
    EXPECT_FALSE(queue.push(ScrcpyControl::backDown())) << "it is being emptied";
    drain(queue);
    EXPECT_TRUE(queue.push(ScrcpyControl::backDown()));
}

TEST(ControlQueueTest, movesOfAnUncrowdedQueueAllStay)
{
    ControlQueue queue;
    for (int i = 0; i < static_cast<int>(ControlQueue::crowded); ++i)
        queue.push(touch(MotionAction::move, i));
    EXPECT_EQ(queue.size(), ControlQueue::crowded);
}

TEST(ControlQueueTest, aMoveReplacesTheMoveBeforeItOnceManyWait)
{
    ControlQueue queue;
    for (int i = 0; i < 100000; ++i)
        queue.push(touch(MotionAction::move, i));
    EXPECT_EQ(queue.size(), ControlQueue::crowded);
    EXPECT_EQ(queue.dropped(), 100000U - ControlQueue::crowded) << "what was replaced counts";
    EXPECT_EQ(drain(queue).last(), touch(MotionAction::move, 99999));
}

TEST(ControlQueueTest, aMoveNeverPassesAnotherMessage)
{
    ControlQueue queue;
    for (int i = 0; i < 50; ++i)
        queue.push(touch(MotionAction::move, i));
    queue.push(touch(MotionAction::up, 50));
    queue.push(touch(MotionAction::down, 51));
    queue.push(touch(MotionAction::move, 52));
    queue.push(touch(MotionAction::move, 53));
    const auto all = drain(queue);
    EXPECT_EQ(
        all.last(4),
        (QList<QByteArray>{
            touch(MotionAction::move, 49), touch(MotionAction::up, 50), touch(MotionAction::down, 51),
            touch(MotionAction::move, 53)}));
}

TEST(ControlQueueTest, aFullQueueKeepsTheReleasesOfWhatIsPressed)
{
    ControlQueue queue;
    queue.push(touch(MotionAction::down, 1));
    queue.push(key(KeyAction::down, 66));
    queue.push(key(KeyAction::down, 67));
    queue.push(ScrcpyControl::backDown());
    fill(queue);
    for (int i = 0; i < 1000; ++i) {
        queue.push(touch(MotionAction::up, i));
        queue.push(key(KeyAction::up, 66));
        queue.push(key(KeyAction::up, 67));
        queue.push(ScrcpyControl::backUp());
    }
    EXPECT_EQ(queue.size(), ControlQueue::capacity + 4) << "each once";
    EXPECT_EQ(
        drain(queue).last(4),
        (QList<QByteArray>{
            touch(MotionAction::up, 0), key(KeyAction::up, 66), key(KeyAction::up, 67), ScrcpyControl::backUp()}));
}

TEST(ControlQueueTest, aFullQueueRefusesPressesAndThenTheirReleases)
{
    ControlQueue queue;
    fill(queue);
    for (std::uint32_t code = 0; code < 10000; ++code) {
        queue.push(key(KeyAction::down, code));
        queue.push(key(KeyAction::up, code));
        queue.push(touch(MotionAction::down, 1));
        queue.push(touch(MotionAction::up, 1));
    }
    EXPECT_EQ(queue.size(), ControlQueue::capacity);
    EXPECT_EQ(queue.dropped(), 40000U);
}

TEST(ControlQueueTest, theBytesAreBoundedToo)
{
    ControlQueue queue;
    queue.push(touch(MotionAction::down, 1));
    const auto clipboard = ScrcpyControl::setClipboard(QString(200000, QLatin1Char('x')), false, 2);
    for (int i = 0; i < 100; ++i)
        queue.push(clipboard);
    EXPECT_LE(queue.bytes(), ControlQueue::byteCapacity);
    queue.push(touch(MotionAction::up, 1));
    EXPECT_EQ(drain(queue).last(), touch(MotionAction::up, 1));
}

TEST(ControlQueueTest, aQueueThatHasBeenEmptiedTakesEverythingAgain)
{
    ControlQueue queue;
    fill(queue);
    queue.push(ScrcpyControl::backDown());
    drain(queue);
    EXPECT_TRUE(queue.push(ScrcpyControl::backDown()));
    queue.push(ScrcpyControl::backUp());
    EXPECT_EQ(drain(queue), (QList<QByteArray>{ScrcpyControl::backDown(), ScrcpyControl::backUp()}));
}

TEST(ControlQueueTest, aReleaseWithoutAPressGoesOutWhileThereIsRoom)
{
    ControlQueue queue;
    queue.push(touch(MotionAction::up, 1));
    EXPECT_EQ(drain(queue), QList<QByteArray>{touch(MotionAction::up, 1)});
}

TEST(ControlQueueTest, shortAndForeignMessagesAreTaken)
{
    ControlQueue queue;
    for (const auto &message : {QByteArray(), QByteArray(1, '\2'), QByteArray(1, '\0'), QByteArray("\x63\x01\x02")})
        queue.push(message);
    EXPECT_EQ(queue.size(), 4U);
}

TEST(ControlQueueTest, messagesOfSeveralThreadsAreAllTaken)
{
    ControlQueue queue;
    std::atomic<int> begun = 0;
    std::atomic<int> taken = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&] {
            for (int i = 0; i < 200; ++i) {
                if (queue.push(ScrcpyControl::text(QString::number(i)))) {
                    ++begun;
                    while (queue.next())
                        ++taken;
                }
            }
        });
    }
    for (auto &thread : threads)
        thread.join();
    EXPECT_EQ(taken, 800);
    EXPECT_GE(begun, 1);
    EXPECT_EQ(queue.size(), 0U);
}
