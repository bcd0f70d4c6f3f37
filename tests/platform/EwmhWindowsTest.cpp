#include "platform/linux/EwmhWindows.h"

#include "platform/Conditions.h"

#include <QGuiApplication>
#include <QProcess>
#include <QScreen>

#include <gtest/gtest.h>

using namespace quillnest;

namespace
{

/// Another program's window: the X server's own calculator, under the window manager of the test's display.
class EwmhWindowsTest : public ::testing::Test
{
protected:
    ~EwmhWindowsTest() override
    {
        other.kill();
        other.waitForFinished(5000);
    }

    void startOther(const QStringList &arguments = {})
    {
        other.start(
            QStringLiteral("xcalc"),
            QStringList{
                QStringLiteral("-name"), QStringLiteral("quill-calc"), QStringLiteral("-geometry"),
                QStringLiteral("300x280+40+60")}
                + arguments);
        ASSERT_TRUE(comesTrue([this] { return !windows.windows(QStringLiteral("quill-calc")).empty(); }));
        window = windows.windows(QStringLiteral("quill-calc")).front();
    }

    /// What the display's own tools say of a window.
    static QByteArray tool(const QString &program, const QStringList &arguments)
    {
        QProcess process;
        process.start(program, arguments);
        process.waitForFinished(5000);
        return process.readAllStandardOutput();
    }

    /// The window with its frame, in pixels.
    QRect frame() const
    {
        // The frame is the window that the window manager has put around the program's.
        const auto tree = tool(
            QStringLiteral("xwininfo"), {QStringLiteral("-tree"), QStringLiteral("-id"), QString::number(window)});
        const QRegularExpression parent(QStringLiteral("Parent window id: (0x[0-9a-f]+)"));
        const auto text = tool(
            QStringLiteral("xwininfo"), {QStringLiteral("-id"), parent.match(QString::fromUtf8(tree)).captured(1)});
        const auto number = [&text](const char *label) {
            const auto at = text.indexOf(label);
            return at < 0 ? -1
                          : text.mid(at + static_cast<qsizetype>(qstrlen(label))).simplified().split(' ')[0].toInt();
        };
        return {
            number("Absolute upper-left X:"), number("Absolute upper-left Y:"), number("Width:"), number("Height:")};
    }

    QByteArray activeWindow() const
    {
        return tool(QStringLiteral("xprop"), {QStringLiteral("-root"), QStringLiteral("_NET_ACTIVE_WINDOW")});
    }

    EwmhWindows windows;
    QProcess other;
    ForeignWindows::WindowId window = 0;
};

} // namespace

TEST_F(EwmhWindowsTest, aWindowManagerThatFollowsTheHintsIsTrusted)
{
    EXPECT_TRUE(windows.isTrusted());
}

TEST_F(EwmhWindowsTest, withoutADisplayNothingIsTrustedAndNothingFails)
{
    EwmhWindows none(":4711");
    EXPECT_FALSE(none.isTrusted());
    EXPECT_TRUE(none.windows(QStringLiteral("quill-calc")).empty());
    EXPECT_FALSE(none.setSize(1, {100, 100}));
    EXPECT_FALSE(none.setPosition(1, {0, 0}));
    none.activate(1);
}

TEST_F(EwmhWindowsTest, aProgramIsFoundByItsNamesWhateverTheirCase)
{
    startOther();
    for (const auto *name : {"quill-calc", "XCalc", "xcalc", "org.example.XCalc"})
        EXPECT_EQ(windows.windows(QString::fromLatin1(name)), std::vector{window}) << name;
    EXPECT_TRUE(windows.windows(QStringLiteral("calc")).empty());
    EXPECT_TRUE(windows.windows(QString()).empty());
}

TEST_F(EwmhWindowsTest, aProgramWithoutAWindowRunsAllTheSame)
{
    QProcess process;
    process.start(QStringLiteral("sleep"), {QStringLiteral("60")});
    ASSERT_TRUE(process.waitForStarted());
    EXPECT_TRUE(comesTrue([this] { return windows.isRunning(QStringLiteral("org.example.sleep")); }));
    EXPECT_TRUE(windows.windows(QStringLiteral("sleep")).empty());
    EXPECT_FALSE(windows.isRunning(QStringLiteral("org.example.nobody-has-this-name")));
    process.kill();
    process.waitForFinished(5000);
}

TEST_F(EwmhWindowsTest, sizeAndPlaceAreThoseOfTheWindowWithItsFrame)
{
    startOther();
    EXPECT_TRUE(windows.setSize(window, {430, 760}));
    EXPECT_TRUE(windows.setPosition(window, {1000, 150}));
    EXPECT_TRUE(comesTrue([this] { return frame() == QRect(1000, 150, 430, 760); }))
        << frame().x() << ' ' << frame().y() << ' ' << frame().width() << ' ' << frame().height();
}

TEST_F(EwmhWindowsTest, aPointMayBeSeveralPixels)
{
    startOther();
    EwmhWindows doubled(nullptr, 2);
    EXPECT_TRUE(doubled.setSize(window, {330, 400}));
    EXPECT_TRUE(doubled.setPosition(window, {20, 30}));
    EXPECT_TRUE(comesTrue([this] { return frame() == QRect(40, 60, 660, 800); }));
}

TEST_F(EwmhWindowsTest, aMaximisedWindowIsMadeSmall)
{
    startOther();
    tool(
        QStringLiteral("wmctrl"),
        {QStringLiteral("-i"), QStringLiteral("-r"), QString::number(window), QStringLiteral("-b"),
         QStringLiteral("add,maximized_vert,maximized_horz")});
    const auto *screen = QGuiApplication::primaryScreen();
    const int whole = static_cast<int>(screen->size().width() * screen->devicePixelRatio());
    ASSERT_TRUE(comesTrue([this, whole] { return frame().width() == whole; }));
    // The window manager says so after it has done it.
    ASSERT_TRUE(comesTrue([this] {
        return tool(
                   QStringLiteral("xprop"),
                   {QStringLiteral("-id"), QString::number(window), QStringLiteral("_NET_WM_STATE")})
            .contains("MAXIMIZED_VERT");
    }));
    // Asked again, as the window manager may still be busy with making it large.
    EXPECT_TRUE(comesTrue([this] {
        EXPECT_TRUE(windows.setSize(window, {430, 760}));
        return frame().size() == QSize(430, 760);
    }));
}

TEST_F(EwmhWindowsTest, aWindowThatHasGoneTakesNothing)
{
    startOther();
    other.kill();
    other.waitForFinished(5000);
    ASSERT_TRUE(comesTrue([this] { return windows.windows(QStringLiteral("quill-calc")).empty(); }));
    EXPECT_FALSE(windows.setSize(window, {430, 760}));
    EXPECT_FALSE(windows.setPosition(window, {0, 0}));
}

TEST_F(EwmhWindowsTest, anActivatedWindowHasTheKeyboard)
{
    startOther();
    QProcess second;
    second.start(QStringLiteral("xcalc"), {QStringLiteral("-name"), QStringLiteral("second-calc")});
    ASSERT_TRUE(comesTrue([this] { return !windows.windows(QStringLiteral("second-calc")).empty(); }));
    const auto hex = [](ForeignWindows::WindowId id) { return "0x" + QByteArray::number(id, 16); };
    windows.activate(windows.windows(QStringLiteral("second-calc")).front());
    EXPECT_TRUE(comesTrue(
        [&] { return activeWindow().contains(hex(windows.windows(QStringLiteral("second-calc")).front())); }));
    windows.activate(window);
    EXPECT_TRUE(comesTrue([&] { return activeWindow().contains(hex(window)); }));
    second.kill();
    second.waitForFinished(5000);
}
