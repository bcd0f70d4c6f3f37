#include "core/ArrangeOrder.h"

#include "fakes/FakePlatform.h"

#include <gtest/gtest.h>

using namespace quillnest;
using namespace std::chrono_literals;

namespace
{

class ArrangeOrderTest : public ::testing::Test
{
protected:
    ArrangeOrderTest()
    {
        fakes.screens->screens = {{QRect(0, 0, 1600, 1200), QRect(0, 30, 1600, 1170), 1.0}};
        fakes.foreignWindows->running = QStringLiteral("org.example.Other");
        fakes.foreignWindows->ids = {7, 9};
    }

    void arrange(const QStringList &arguments, std::chrono::milliseconds time = 400ms)
    {
        ::testing::internal::CaptureStdout();
        ::testing::internal::CaptureStderr();
        const auto order = ArrangeOrder::from(QStringList{QStringLiteral("quillnest")} + arguments);
        ASSERT_TRUE(order);
        order->carryOut(fakes.platform, [this] { ++quits; });
        fakes.clock->advance(time);
        output = QString::fromStdString(::testing::internal::GetCapturedStdout());
        errors = QString::fromStdString(::testing::internal::GetCapturedStderr());
    }

    FakePlatform fakes = fakePlatform();
    const QStringList other{QStringLiteral("--arrange"), QStringLiteral("org.example.Other")};
    QString output;
    QString errors;
    int quits = 0;
};

} // namespace

TEST_F(ArrangeOrderTest, aWindowIsArrangedAfterAMomentAndTheProcessEnds)
{
    arrange(other, 399ms);
    EXPECT_TRUE(fakes.foreignWindows->steps.isEmpty());
    EXPECT_EQ(quits, 0);
    ::testing::internal::CaptureStdout();
    fakes.clock->advance(1ms);
    output = QString::fromStdString(::testing::internal::GetCapturedStdout());
    // The free area is 1600 by 1170 from y 30.
    EXPECT_EQ(
        fakes.foreignWindows->steps,
        (QStringList{
            QStringLiteral("7 size 430x760"), QStringLiteral("7 position 1146,235"), QStringLiteral("7 active")}));
    EXPECT_EQ(output, QStringLiteral("Quillnest arranged org.example.Other to 430x760\n"));
    EXPECT_EQ(quits, 1);
}

TEST_F(ArrangeOrderTest, aWidthOf100IsAskedForAndWidenedTo320AndAMissingHeightIs760)
{
    arrange(other + QStringList{QStringLiteral("--width"), QStringLiteral("100")});
    EXPECT_EQ(fakes.foreignWindows->steps.value(0), QStringLiteral("7 size 320x760"));
    EXPECT_EQ(output, QStringLiteral("Quillnest arranged org.example.Other to 100x760\n"));
}

TEST_F(ArrangeOrderTest, aWidthThatIsNoNumberCountsAsAbsent)
{
    arrange(
        other
        + QStringList{
            QStringLiteral("--width"), QStringLiteral("wide"), QStringLiteral("--height"), QStringLiteral("600.9")});
    EXPECT_EQ(fakes.foreignWindows->steps.value(0), QStringLiteral("7 size 430x601"));
    EXPECT_EQ(output, QStringLiteral("Quillnest arranged org.example.Other to 430x600\n"));
}

TEST_F(ArrangeOrderTest, theSizeEndsAtTheScreens)
{
    arrange(
        other
        + QStringList{
            QStringLiteral("--width"), QStringLiteral("9000"), QStringLiteral("--height"), QStringLiteral("9000")});
    EXPECT_EQ(fakes.foreignWindows->steps.value(0), QStringLiteral("7 size 1600x1170"));
    EXPECT_EQ(fakes.foreignWindows->steps.value(1), QStringLiteral("7 position -24,30"));
}

TEST_F(ArrangeOrderTest, withoutThePermissionTheDesktopAsksAndTheProcessWaits15Seconds)
{
    fakes.foreignWindows->trusted = false;
    arrange(other);
    EXPECT_EQ(
        errors, QStringLiteral("Quillnest arrange failed: Accessibility permission is required for compact windows\n"));
    EXPECT_EQ(fakes.foreignWindows->prompts, 1);
    fakes.clock->advance(14999ms);
    EXPECT_EQ(quits, 0);
    fakes.clock->advance(1ms);
    EXPECT_EQ(quits, 1);
    EXPECT_TRUE(fakes.foreignWindows->steps.isEmpty());
}

TEST_F(ArrangeOrderTest, anyOtherFailureEndsTheProcessAtOnce)
{
    arrange({QStringLiteral("--arrange"), QStringLiteral("org.example.Nobody")});
    EXPECT_EQ(errors, QStringLiteral("Quillnest arrange failed: The mobile app window is not running yet\n"));
    EXPECT_EQ(quits, 1);

    fakes.foreignWindows->ids.clear();
    arrange(other);
    EXPECT_EQ(errors, QStringLiteral("Quillnest arrange failed: No resizable window was found\n"));
    EXPECT_EQ(quits, 2);

    fakes.foreignWindows->ids = {7};
    fakes.foreignWindows->takesPositions = false;
    arrange(other);
    EXPECT_EQ(errors, QStringLiteral("Quillnest arrange failed: The desktop did not allow the window resize\n"));
    EXPECT_EQ(quits, 3);

    fakes.platform.profile.systemName = HostProfile::appleSilicon().systemName;
    fakes.foreignWindows->takesSizes = false;
    arrange(other);
    EXPECT_EQ(errors, QStringLiteral("Quillnest arrange failed: macOS did not allow the window resize\n"));
    EXPECT_EQ(quits, 4);
}

TEST_F(ArrangeOrderTest, withoutAnIdentityThereIsNoOrder)
{
    EXPECT_FALSE(ArrangeOrder::from({QStringLiteral("quillnest"), QStringLiteral("--arrange")}));
    EXPECT_FALSE(ArrangeOrder::from({QStringLiteral("quillnest")}));
}

TEST_F(ArrangeOrderTest, numbersThatNoScreenHasAreCutAndThoseThatAreNoneAreAbsent)
{
    const auto size = [this](const char *width, const char *height) {
        return ArrangeOrder::
            from(other
                 + QStringList{QStringLiteral("--width"), QLatin1String(width), QStringLiteral("--height"), QLatin1String(height)})
                ->size;
    };
    EXPECT_EQ(size("nan", "inf"), QSizeF(430, 760));
    EXPECT_EQ(size("1e300", "-1e300"), QSizeF(1e6, -1e6));
}
