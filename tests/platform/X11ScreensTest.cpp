#include "platform/linux/X11Screens.h"

#include "platform/Conditions.h"

#include <QGuiApplication>
#include <QProcess>
#include <QScreen>
#include <QWidget>

#include <gtest/gtest.h>

#include <cmath>

using namespace quillnest;

TEST(X11ScreensTest, screenOfTheDisplay)
{
    const X11Screens screens;
    const auto all = screens.all();
    ASSERT_EQ(all.size(), static_cast<std::size_t>(QGuiApplication::screens().size()));
    ASSERT_TRUE(screens.main());
    const auto main = *screens.main();
    EXPECT_EQ(main.frame, QGuiApplication::primaryScreen()->geometry());
    EXPECT_EQ(main.backingScaleFactor, QGuiApplication::primaryScreen()->devicePixelRatio());
    EXPECT_TRUE(main.frame.contains(main.visibleFrame));
    EXPECT_EQ(main.frame.size(), QSize(1600, 1200)) << "in points, at every scale";
}

TEST(X11ScreensTest, screenThatContainsAPoint)
{
    const X11Screens screens;
    const auto frame = screens.main()->frame;
    ASSERT_TRUE(screens.containing(frame.center()));
    EXPECT_EQ(screens.containing(frame.center())->frame, frame);
    EXPECT_FALSE(screens.containing(frame.topLeft() - QPoint(1, 1)));
    EXPECT_FALSE(screens.containing(frame.bottomRight() + QPoint(1, 1)));
}

TEST(X11ScreensTest, desktopWithoutACompositorIsNotComposited)
{
    EXPECT_FALSE(X11Screens().isComposited());
}

TEST(X11ScreensTest, windowWithTheInputFocusKeepsTheKeyboard)
{
    const X11Screens screens;
    QWidget window;
    window.resize(200, 200);
    window.show();
    window.activateWindow();
    EXPECT_TRUE(comesTrue([&] { return screens.keepsKeyboard(window.winId()); }));
    QWidget other;
    other.resize(200, 200);
    other.show();
    // The window manager may still be about to give it to the first one.
    EXPECT_TRUE(comesTrue([&] {
        other.activateWindow();
        return screens.keepsKeyboard(other.winId()) && !screens.keepsKeyboard(window.winId());
    }));
}

TEST(X11ScreensTest, shadowCountsForNoPlacementAndLetsTheMouseThrough)
{
    X11Screens screens;
    QWidget window;
    window.setWindowFlags(Qt::FramelessWindowHint);
    window.setGeometry(100, 100, 240, 220);
    window.show();
    ASSERT_TRUE(comesTrue([&] { return window.isActiveWindow(); }));
    screens.declareShadow(window.winId(), window.size(), {20, 10, 20, 30}, 5, window.devicePixelRatioF());
    const auto tool = [&](const QString &program, const QStringList &arguments) {
        QProcess process;
        process.start(program, arguments);
        process.waitForFinished(5000);
        return process.readAllStandardOutput();
    };
    const auto id = QString::number(window.winId());
    const auto pixels
        = [scale = window.devicePixelRatioF()](int points) { return QString::number(std::lround(points * scale)); };
    const QStringList extents{pixels(20), pixels(20), pixels(10), pixels(30)};
    EXPECT_TRUE(tool(QStringLiteral("xprop"), {QStringLiteral("-id"), id, QStringLiteral("_GTK_FRAME_EXTENTS")})
                    .contains("= " + extents.join(QStringLiteral(", ")).toUtf8()));
    // The window manager's frame around it, or the desktop.
    const auto under = [&](int x, int y) {
        tool(QStringLiteral("xdotool"), {QStringLiteral("mousemove"), pixels(x), pixels(y)});
        return tool(QStringLiteral("xdotool"), {QStringLiteral("getmouselocation"), QStringLiteral("--shell")})
            .split('\n')
            .value(3);
    };
    const auto ours = under(220, 200);
    const auto desktop = under(500, 600);
    EXPECT_NE(ours, desktop);
    EXPECT_TRUE(comesTrue([&] { return under(100 + 14, 200) == desktop; }));
    EXPECT_EQ(under(220, 100 + 220 - 24), desktop);
    EXPECT_EQ(under(100 + 16, 200), ours) << "a little outside the frame";
}
