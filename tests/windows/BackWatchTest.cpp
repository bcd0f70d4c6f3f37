#include "windows/BackWatch.h"

#include "fakes/FakePlatform.h"

#include <gtest/gtest.h>

using namespace quillnest;
using namespace std::chrono_literals;

namespace
{

class BackWatchTest : public ::testing::Test
{
protected:
    BackWatchTest() : services(makeServices()) { }

    WindowServices makeServices() const
    {
        const auto log
            = std::make_shared<QuillnestLog>(fakes.clock, fakes.home->path(), QStringLiteral("windows.log"), true);
        return {
            fakes.platform, log, std::make_shared<ChangeNotifications>(),
            std::make_shared<const AndroidCommands>(fakes.platform, log)};
    }
    void makeWatch(std::function<void()> onLeft)
    {
        watch = std::make_unique<BackWatch>(services, QStringLiteral("org.example.app"), std::move(onLeft));
    }
    void pass(std::chrono::milliseconds duration) const
    {
        for (auto left = duration; left.count() > 0; left -= 50ms) {
            fakes.clock->advance(50ms);
            fakes.settle();
        }
    }
    qsizetype looks() const { return fakes.processes->count(QStringLiteral("grep ResumedActivity")); }

    FakePlatform fakes = fakePlatform();
    const WindowServices services;
    std::unique_ptr<BackWatch> watch;
};

} // namespace

TEST_F(BackWatchTest, anAppThatHasLeftIsToldOnceAndLooksEndWhenToldTo)
{
    int left = 0;
    makeWatch([&] {
        ++left;
        watch->stop();
    });
    watch->backSent();
    pass(5s);
    EXPECT_EQ(left, 1);
    EXPECT_EQ(looks(), 1);
}

TEST_F(BackWatchTest, whatIsToldIsNotDestroyedWhileItRuns)
{
    const auto token = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = token;
    bool wasThere = false;
    auto onLeft = [this, held = token, watched, &wasThere] {
        watch->stop();
        watch.reset();
        wasThere = watched.use_count() > 1;
    };
    makeWatch(std::move(onLeft));
    watch->backSent();
    pass(300ms);
    EXPECT_TRUE(wasThere) << "it owns the token, beside the test";
    EXPECT_EQ(watched.use_count(), 1) << "and is gone with the watch";
}

TEST_F(BackWatchTest, aWatchThatIsGoneNeitherLooksNorTells)
{
    int left = 0;
    makeWatch([&left] { ++left; });
    watch->backSent();
    fakes.clock->advance(200ms);
    // One look is under way.
    ASSERT_TRUE(fakes.executor->runOneInBackground());
    watch.reset();
    pass(5s);
    EXPECT_EQ(left, 0);
    EXPECT_EQ(looks(), 1);
}

TEST(BackWatch, anAppIsResumedWhenALineNamesOneOfItsActivities)
{
    const auto app = QStringLiteral("org.example.app");
    EXPECT_TRUE(BackWatch::isResumed(QStringLiteral("ResumedActivity: u0 org.example.app/.Main t7"), app));
    EXPECT_TRUE(BackWatch::isResumed(QStringLiteral("a\nb u0 org.example.app/org.other.Main\nc"), app));
    EXPECT_FALSE(BackWatch::isResumed(QStringLiteral("u0 org.example.app.second/.Main"), app));
    EXPECT_FALSE(BackWatch::isResumed(QStringLiteral("u0 com.org.example.app/.Main"), app));
    EXPECT_FALSE(BackWatch::isResumed(QStringLiteral("org.example.app/.Main"), app));
    EXPECT_FALSE(BackWatch::isResumed(QStringLiteral("u0 org.example.app"), app));
    EXPECT_FALSE(BackWatch::isResumed(QString(), app));
}
