#include "platform/posix/PosixInstanceDoor.h"

#include "platform/Conditions.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QLocalSocket>
#include <QTemporaryDir>

#include <atomic>
#include <future>
#include <thread>

#include <sys/stat.h>

#include <gtest/gtest.h>

using namespace quillnest;
using namespace std::chrono_literals;
using Entry = InstanceDoor::Entry;

namespace
{

class PosixInstanceDoorTest : public ::testing::Test
{
protected:
    QString folder() const { return home.filePath(QStringLiteral("data/Quillnest")); }
    QString socket() const { return folder() + QStringLiteral("/instance.socket"); }

    /// Enters as another process would: on a thread, while this one's events go on.
    Entry enterMeanwhile(const QStringList &arguments)
    {
        auto entering
            = std::async(std::launch::async, [&] { return PosixInstanceDoor(2s).enter(folder(), arguments); });
        EXPECT_TRUE(comesTrue([&] { return entering.wait_for(0s) == std::future_status::ready; }));
        return entering.get();
    }

    const QTemporaryDir home;
};

} // namespace

TEST_F(PosixInstanceDoorTest, theFirstComesInAndWhoComesLaterHandsItsArgumentsOver)
{
    PosixInstanceDoor first;
    std::vector<std::pair<QStringList, QString>> knocks;
    QObject::connect(&first, &InstanceDoor::knocked, &first, [&](const QStringList &arguments, const QString &from) {
        knocks.emplace_back(arguments, from);
    });
    EXPECT_EQ(first.enter(folder(), {QStringLiteral("quillnest")}), Entry::first);
    const QStringList arguments{QStringLiteral("quillnest"), QStringLiteral("--open-app"), QStringLiteral("é \n\"x\"")};
    EXPECT_EQ(enterMeanwhile(arguments), Entry::handedOver);
    EXPECT_EQ(enterMeanwhile({QStringLiteral("quillnest")}), Entry::handedOver);
    ASSERT_EQ(knocks.size(), 2U);
    EXPECT_EQ(knocks[0], std::pair(arguments, QDir::currentPath()));
    EXPECT_EQ(knocks[1].first, QStringList{QStringLiteral("quillnest")});
}

TEST_F(PosixInstanceDoorTest, eachFolderHasADoorOfItsOwn)
{
    PosixInstanceDoor first;
    PosixInstanceDoor other;
    EXPECT_EQ(first.enter(folder(), {QStringLiteral("a")}), Entry::first);
    EXPECT_EQ(other.enter(folder() + QStringLiteral("2"), {QStringLiteral("b")}), Entry::first);
}

TEST_F(PosixInstanceDoorTest, oneThatDoesNotAnswerIsToldAfterThePatience)
{
    PosixInstanceDoor first;
    ASSERT_EQ(first.enter(folder(), {QStringLiteral("a")}), Entry::first);
    PosixInstanceDoor second(200ms);
    EXPECT_EQ(second.enter(folder(), {QStringLiteral("b")}), Entry::noAnswer);
}

TEST_F(PosixInstanceDoorTest, oneWithoutASocketIsToldToo)
{
    PosixInstanceDoor first;
    ASSERT_EQ(first.enter(folder(), {QStringLiteral("a")}), Entry::first);
    ASSERT_TRUE(QFile::remove(socket()));
    PosixInstanceDoor second(200ms);
    EXPECT_EQ(second.enter(folder(), {QStringLiteral("b")}), Entry::noAnswer);
}

TEST_F(PosixInstanceDoorTest, whenTheFirstHasGoneTheNextComesIn)
{
    auto first = std::make_unique<PosixInstanceDoor>();
    ASSERT_EQ(first->enter(folder(), {QStringLiteral("a")}), Entry::first);
    first.reset();
    // What a killed one leaves behind.
    QFile(socket()).open(QIODevice::WriteOnly);
    PosixInstanceDoor second;
    EXPECT_EQ(second.enter(folder(), {QStringLiteral("b")}), Entry::first);
    EXPECT_EQ(enterMeanwhile({QStringLiteral("c")}), Entry::handedOver);
}

TEST_F(PosixInstanceDoorTest, oneThatGoesWhileAnotherKnocksIsFollowedByIt)
{
    auto first = std::make_unique<PosixInstanceDoor>();
    ASSERT_EQ(first->enter(folder(), {QStringLiteral("a")}), Entry::first);
    auto entering = std::async(
        std::launch::async, [this] { return PosixInstanceDoor(10s).enter(folder(), {QStringLiteral("b")}); });
    std::this_thread::sleep_for(100ms);
    first.reset();
    EXPECT_EQ(entering.get(), Entry::first);
}

TEST_F(PosixInstanceDoorTest, ofManyInTheSameInstantOneComesIn)
{
    std::atomic<int> firsts = 0;
    std::atomic<int> ended = 0;
    constexpr int count = 8;
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i) {
        threads.emplace_back([&] {
            PosixInstanceDoor door(300ms);
            firsts += door.enter(folder(), {QStringLiteral("a")}) == Entry::first ? 1 : 0;
            // It stays until all have tried.
            for (++ended; ended < count;)
                std::this_thread::sleep_for(5ms);
        });
    }
    for (auto &thread : threads)
        thread.join();
    EXPECT_EQ(firsts, 1);
}

TEST_F(PosixInstanceDoorTest, whatNoStartSaysIsPassedOver)
{
    PosixInstanceDoor first;
    int knocks = 0;
    QObject::connect(&first, &InstanceDoor::knocked, &first, [&knocks] { ++knocks; });
    ASSERT_EQ(first.enter(folder(), {QStringLiteral("a")}), Entry::first);
    const auto says = [this](const QByteArray &bytes) {
        QLocalSocket visitor;
        visitor.connectToServer(socket());
        EXPECT_TRUE(visitor.waitForConnected(1000));
        visitor.write(bytes);
        return comesTrue([&visitor] { return visitor.state() == QLocalSocket::UnconnectedState; });
    };
    EXPECT_TRUE(says("hello\n"));
    EXPECT_TRUE(says("{\"arguments\":7}\n"));
    EXPECT_TRUE(says("[]\n"));
    EXPECT_TRUE(says(QByteArray(5 * 1024 * 1024, 'x'))) << "a line without an end";
    EXPECT_EQ(knocks, 0);
    EXPECT_EQ(enterMeanwhile({QStringLiteral("b")}), Entry::handedOver);
    EXPECT_EQ(knocks, 1);
}

TEST_F(PosixInstanceDoorTest, nobodyElseMayKnock)
{
    PosixInstanceDoor first;
    ASSERT_EQ(first.enter(folder(), {QStringLiteral("a")}), Entry::first);
    for (const auto *name : {"/instance.socket", "/instance.lock"}) {
        struct stat facts {
        };
        ASSERT_EQ(::stat(QFile::encodeName(folder() + QLatin1String(name)).constData(), &facts), 0);
        EXPECT_EQ(facts.st_mode & 0077, 0U) << name;
    }
}

TEST_F(PosixInstanceDoorTest, whereNothingCanBeWrittenTheProgramStarts)
{
    const auto file = home.filePath(QStringLiteral("no folder"));
    QFile(file).open(QIODevice::WriteOnly);
    EXPECT_EQ(PosixInstanceDoor().enter(file, {QStringLiteral("a")}), Entry::first);
}
