#include "platform/desktop/DesktopScreens.h"

#include "platform/Conditions.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

#include <gtest/gtest.h>

using namespace quillnest;

TEST(DesktopScreensTest, screenOfTheDisplay)
{
    const DesktopScreens screens;
    const auto all = screens.all();
    ASSERT_EQ(all.size(), static_cast<std::size_t>(QGuiApplication::screens().size()));
    ASSERT_TRUE(screens.main());
    const auto main = *screens.main();
    EXPECT_EQ(main.frame, QGuiApplication::primaryScreen()->geometry());
    EXPECT_EQ(main.backingScaleFactor, QGuiApplication::primaryScreen()->devicePixelRatio());
    EXPECT_TRUE(main.frame.contains(main.visibleFrame));
    EXPECT_EQ(main.frame.size() * main.backingScaleFactor, QSize(1600, 1200));
}

TEST(DesktopScreensTest, screenThatContainsAPoint)
{
    const DesktopScreens screens;
    const auto frame = screens.main()->frame;
    ASSERT_TRUE(screens.containing(frame.center()));
    EXPECT_EQ(screens.containing(frame.center())->frame, frame);
    EXPECT_FALSE(screens.containing(frame.topLeft() - QPoint(1, 1)));
    EXPECT_FALSE(screens.containing(frame.bottomRight() + QPoint(1, 1)));
}

TEST(DesktopScreensTest, desktopWithoutACompositorIsNotComposited)
{
    EXPECT_FALSE(DesktopScreens().isComposited());
}

TEST(DesktopScreensTest, windowWithTheInputFocusKeepsTheKeyboard)
{
    const DesktopScreens screens;
    QWidget window;
    window.resize(200, 200);
    window.show();
    window.activateWindow();
    EXPECT_TRUE(comesTrue([&] { return screens.keepsKeyboard(window.winId()); }));
    QWidget other;
    other.resize(200, 200);
    other.show();
    other.activateWindow();
    EXPECT_TRUE(comesTrue([&] { return screens.keepsKeyboard(other.winId()); }));
    EXPECT_FALSE(screens.keepsKeyboard(window.winId()));
}
