#include "windows/AndroidAppPanel.h"

#include "look/Palette.h"
#include "windows/KeyboardFocus.h"

#include <QTest>
#include <QWindow>

#include <gtest/gtest.h>

using namespace quillnest;
using namespace std::chrono_literals;

namespace
{

class AndroidAppPanelTest : public ::testing::Test
{
protected:
    AndroidAppPanelTest() { fakes.screens->composited = false; }

    std::unique_ptr<AndroidAppPanel> makePanel(AndroidAppPanel::Resizing resizing)
    {
        auto panel = std::make_unique<AndroidAppPanel>(fakes.platform, resizing);
        panel->setGeometry(200, 200, 300, 400);
        QObject::connect(panel.get(), &AndroidAppPanel::becameKey, panel.get(), [this] { ++becameKey; });
        QObject::connect(panel.get(), &AndroidAppPanel::resignedKey, panel.get(), [this] { ++resignedKey; });
        return panel;
    }
    std::unique_ptr<AndroidAppPanel> openKey(AndroidAppPanel::Resizing resizing = AndroidAppPanel::Resizing::atEdges)
    {
        auto panel = makePanel(resizing);
        panel->orderFront();
        EXPECT_TRUE(giveKeyboard(fakes, *panel));
        EXPECT_EQ(becameKey, 1);
        return panel;
    }
    void takeKeyboard()
    {
        other.setGeometry(900, 700, 200, 100);
        EXPECT_TRUE(giveKeyboard(fakes, other));
    }

    FakePlatform fakes = fakePlatform();
    QWidget other;
    int becameKey = 0;
    int resignedKey = 0;
};

} // namespace

TEST_F(AndroidAppPanelTest, itTellsWhenItGetsAndWhenItLosesTheKeyboard)
{
    const auto panel = openKey();
    EXPECT_EQ(resignedKey, 0);
    takeKeyboard();
    EXPECT_TRUE(comesTrue(fakes, [this] { return resignedKey == 1; }));
    EXPECT_TRUE(giveKeyboard(fakes, *panel));
    EXPECT_EQ(becameKey, 2);
    EXPECT_EQ(resignedKey, 1);
}

TEST_F(AndroidAppPanelTest, aGrabOfTheKeyboardIsNoLossUntilItHasEnded)
{
    const auto panel = openKey();
    fakes.screens->keepsKeys = true;
    takeKeyboard();
    fakes.clock->advance(10s);
    EXPECT_EQ(resignedKey, 0);
    fakes.screens->keepsKeys = false;
    fakes.clock->advance(100ms);
    EXPECT_EQ(resignedKey, 1);
}

TEST_F(AndroidAppPanelTest, aGrabThatGivesTheKeyboardBackIsNeverTold)
{
    const auto panel = openKey();
    fakes.screens->keepsKeys = true;
    takeKeyboard();
    EXPECT_TRUE(giveKeyboard(fakes, *panel));
    fakes.screens->keepsKeys = false;
    fakes.clock->advance(10s);
    EXPECT_EQ(resignedKey, 0);
    EXPECT_EQ(becameKey, 1);
    EXPECT_EQ(fakes.clock->pending(), 0U);
}

TEST_F(AndroidAppPanelTest, aRequestToCloseIsHandedOnAndNeverCloses)
{
    const auto panel = openKey();
    int asked = 0;
    const auto connection
        = QObject::connect(panel.get(), &AndroidAppPanel::closeRequested, panel.get(), [&asked] { ++asked; });
    EXPECT_FALSE(panel->close());
    EXPECT_EQ(asked, 1);
    EXPECT_TRUE(panel->isVisible());
    QObject::disconnect(connection);
    EXPECT_FALSE(panel->close());
    EXPECT_TRUE(panel->isVisible());
}

TEST_F(AndroidAppPanelTest, movesAndSizesAreToldOnlyWhileItIsOnScreen)
{
    int moves = 0;
    int sizes = 0;
    const auto panel = makePanel(AndroidAppPanel::Resizing::atEdges);
    QObject::connect(panel.get(), &AndroidAppPanel::moved, panel.get(), [&moves] { ++moves; });
    QObject::connect(panel.get(), &AndroidAppPanel::resized, panel.get(), [&sizes] { ++sizes; });
    panel->setGeometry(210, 210, 310, 410);
    EXPECT_EQ(moves + sizes, 0);
    panel->orderFront();
    EXPECT_TRUE(comesTrue(fakes, [&panel] { return panel->isActiveWindow(); }));
    EXPECT_EQ(sizes, 0);
    panel->resize(320, 420);
    EXPECT_TRUE(comesTrue(fakes, [&sizes] { return sizes > 0; }));
    const int before = moves;
    panel->move(250, 260);
    EXPECT_TRUE(comesTrue(fakes, [&] { return moves > before; }));
}

TEST_F(AndroidAppPanelTest, aNewFrameOfAHiddenWindowIsToldAtOnceWhenItHasAnotherSize)
{
    int sizes = 0;
    const auto panel = makePanel(AndroidAppPanel::Resizing::atEdges);
    panel->setFrame({200, 200, 300, 400});
    QObject::connect(panel.get(), &AndroidAppPanel::resized, panel.get(), [&sizes] { ++sizes; });
    panel->setFrame({210, 220, 300, 400});
    EXPECT_EQ(sizes, 0) << "it is only elsewhere";
    panel->setFrame({210, 220, 320, 400});
    EXPECT_EQ(sizes, 1);
}

TEST_F(AndroidAppPanelTest, comingAndGoingAreTold)
{
    QStringList told;
    const auto panel = makePanel(AndroidAppPanel::Resizing::atEdges);
    QObject::connect(
        panel.get(), &AndroidAppPanel::shown, panel.get(), [&told] { told.append(QStringLiteral("shown")); });
    QObject::connect(
        panel.get(), &AndroidAppPanel::hidden, panel.get(), [&told] { told.append(QStringLiteral("hidden")); });
    panel->orderFront();
    panel->orderFront();
    panel->orderOut();
    panel->orderOut();
    EXPECT_EQ(told, (QStringList{QStringLiteral("shown"), QStringLiteral("hidden")}));
}

TEST_F(AndroidAppPanelTest, edgesAndCornersShowHowTheyResize)
{
    const auto panel = openKey();
    const struct {
        QPoint point;
        Qt::CursorShape shape;
    } table[] = {
        {{2, 200}, Qt::SizeHorCursor},   {{298, 200}, Qt::SizeHorCursor},   {{150, 2}, Qt::SizeVerCursor},
        {{150, 398}, Qt::SizeVerCursor}, {{2, 2}, Qt::SizeFDiagCursor},     {{298, 398}, Qt::SizeFDiagCursor},
        {{298, 2}, Qt::SizeBDiagCursor}, {{2, 398}, Qt::SizeBDiagCursor},   {{2, 12}, Qt::SizeFDiagCursor},
        {{12, 2}, Qt::SizeFDiagCursor},  {{288, 398}, Qt::SizeFDiagCursor}, {{2, 15}, Qt::SizeHorCursor},
        {{150, 200}, Qt::ArrowCursor},   {{6, 200}, Qt::ArrowCursor},       {{12, 12}, Qt::ArrowCursor},
        {{150, 393}, Qt::ArrowCursor},
    };
    for (const auto &row : table) {
        QMouseEvent move(
            QEvent::MouseMove, row.point, row.point, panel->mapToGlobal(row.point), Qt::NoButton, Qt::NoButton,
            Qt::NoModifier);
        QApplication::sendEvent(panel->windowHandle(), &move);
        EXPECT_EQ(panel->windowHandle()->cursor().shape(), row.shape) << row.point.x() << "," << row.point.y();
    }
}

TEST_F(AndroidAppPanelTest, aPanelOfFixedSizeHasNoEdges)
{
    const auto panel = openKey(AndroidAppPanel::Resizing::fixed);
    for (const auto point : {QPoint(1, 1), QPoint(299, 200), QPoint(150, 399)}) {
        QMouseEvent move(
            QEvent::MouseMove, point, point, panel->mapToGlobal(point), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(panel->windowHandle(), &move);
        EXPECT_EQ(panel->windowHandle()->cursor().shape(), Qt::ArrowCursor);
    }
}

TEST_F(AndroidAppPanelTest, itFloatsBeforeAndAfterItIsOnScreen)
{
    const auto panel = makePanel(AndroidAppPanel::Resizing::atEdges);
    panel->setFloating(true);
    panel->orderFront();
    EXPECT_TRUE(comesTrue(fakes, [&panel] { return panel->isActiveWindow(); }));
    EXPECT_TRUE(panel->isFloating());
    EXPECT_TRUE(panel->windowHandle()->flags() & Qt::WindowStaysOnTopHint);
    panel->setFloating(false);
    EXPECT_FALSE(panel->windowHandle()->flags() & Qt::WindowStaysOnTopHint);
    EXPECT_TRUE(panel->isVisible());
}

TEST_F(AndroidAppPanelTest, floatingStaysOverHidingAndShowing)
{
    const auto panel = openKey();
    panel->setFloating(true);
    panel->orderOut();
    takeKeyboard();
    panel->orderFront();
    EXPECT_TRUE(comesTrue(fakes, [&panel] { return panel->isActiveWindow(); }));
    EXPECT_TRUE(panel->windowHandle()->flags() & Qt::WindowStaysOnTopHint);
}

TEST_F(AndroidAppPanelTest, itIsOpaqueWhereNothingCanBeSeenThrough)
{
    const auto opaque = makePanel(AndroidAppPanel::Resizing::atEdges);
    EXPECT_FALSE(opaque->testAttribute(Qt::WA_TranslucentBackground));
    EXPECT_EQ(opaque->grab().toImage().pixelColor(0, 0), Palette::light().windowBackground);
    EXPECT_EQ(opaque->frame(), opaque->geometry());
}

// Where the desktop blends windows.

class BlendedPanelTest : public AndroidAppPanelTest
{
protected:
    BlendedPanelTest() { fakes.screens->composited = true; }

    const QRect frame{200, 200, 300, 400};
    const QMargins reach = PanelShadow::reach;
};

TEST_F(BlendedPanelTest, theFrameIsTheWindowWithoutItsShadow)
{
    const auto panel = makePanel(AndroidAppPanel::Resizing::atEdges);
    EXPECT_TRUE(panel->testAttribute(Qt::WA_TranslucentBackground));
    panel->setFrame(frame);
    panel->setMinimumFrameSize({280, 300});
    EXPECT_EQ(panel->frame(), frame);
    EXPECT_EQ(panel->geometry(), frame.marginsAdded(reach));
    EXPECT_EQ(panel->contentsRect(), QRect(QPoint(reach.left(), reach.top()), frame.size()));
    EXPECT_EQ(panel->minimumSize(), QSize(280, 300).grownBy(reach));
}

TEST_F(BlendedPanelTest, theShadowFadesFromTheFrameOutwardsOnAllSides)
{
    const auto panel = makePanel(AndroidAppPanel::Resizing::atEdges);
    panel->setFrame(frame);
    const auto image = panel->grab().toImage();
    const double scale = image.devicePixelRatio();
    const auto alpha = [&image, scale](double x, double y) {
        return qAlpha(image.pixel(static_cast<int>(x * scale), static_cast<int>(y * scale)));
    };
    const QRect inner(QPoint(reach.left(), reach.top()), frame.size());
    const double midX = inner.center().x();
    const double midY = inner.center().y();
    const struct {
        QPointF near;
        QPointF middle;
        QPointF far;
    } sides[] = {
        {{inner.left() - 2.0, midY}, {inner.left() - 8.0, midY}, {0, midY}},
        {{inner.right() + 2.0, midY}, {inner.right() + 8.0, midY}, {image.width() / scale - 1, midY}},
        {{midX, inner.top() - 2.0}, {midX, inner.top() - 6.0}, {midX, 0}},
        {{midX, inner.bottom() + 2.0}, {midX, inner.bottom() + 10.0}, {midX, image.height() / scale - 1}},
    };
    for (const auto &side : sides) {
        EXPECT_GT(alpha(side.near.x(), side.near.y()), alpha(side.middle.x(), side.middle.y()));
        EXPECT_GT(alpha(side.middle.x(), side.middle.y()), alpha(side.far.x(), side.far.y()));
        EXPECT_LT(alpha(side.far.x(), side.far.y()), 12) << "no hard end";
    }
    EXPECT_EQ(alpha(0, 0), 0);
    EXPECT_GT(alpha(midX, inner.bottom() + 4), alpha(midX, inner.top() - 4)) << "it lies lower than the window";
}

TEST_F(BlendedPanelTest, theDesktopIsToldOfTheShadowAtEachSize)
{
    const auto panel = makePanel(AndroidAppPanel::Resizing::atEdges);
    panel->setFrame(frame);
    panel->orderFront();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(panel.get()));
    ASSERT_FALSE(fakes.screens->shadows.isEmpty());
    // At a broken scale the desktop rounds.
    const double scale = panel->devicePixelRatioF();
    const int most = scale == std::floor(scale) ? 0 : 1;
    const auto isToldOf = [&](QSize size) {
        const auto off = size - fakes.screens->shadows.last().size();
        return std::abs(off.width()) <= most && std::abs(off.height()) <= most;
    };
    EXPECT_TRUE(isToldOf(frame.size()));
    panel->setFrame(frame.adjusted(0, 0, 50, 60));
    EXPECT_TRUE(comesTrue(fakes, [&] { return isToldOf({350, 460}); }));
}

TEST_F(BlendedPanelTest, theEdgesAreTakenAtTheFrameAndALittleOutside)
{
    const auto panel = openKey();
    const QRect inner = panel->rect().marginsRemoved(reach);
    const auto cursorAt = [&](QPoint point) {
        QTest::mouseMove(panel->windowHandle(), point);
        fakes.settle();
        return panel->windowHandle()->cursor().shape();
    };
    EXPECT_EQ(cursorAt(inner.center()), Qt::ArrowCursor);
    EXPECT_EQ(cursorAt({inner.left() + 2, inner.center().y()}), Qt::SizeHorCursor);
    EXPECT_EQ(cursorAt({inner.left() - 4, inner.center().y()}), Qt::SizeHorCursor);
    EXPECT_EQ(cursorAt({inner.right() + 4, inner.bottom() + 4}), Qt::SizeFDiagCursor);
    EXPECT_EQ(cursorAt({inner.left() + 8, inner.center().y()}), Qt::ArrowCursor);
}
