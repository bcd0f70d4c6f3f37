#include "windows/ControlBytes.h"
#include "windows/WindowFixture.h"
#include "windows/WindowPlacement.h"

// How a change of a window's size reaches Android. The numbers are those of scale 1 and 2; the tests are run at 1.5 as
// well.

using namespace quillnest;
using namespace std::chrono_literals;

namespace
{

class WindowSizingTest : public WindowFixture
{
protected:
    /// The display that belongs to the scale of the test's screen. At a broken one the desktop rounds the window.
    static QSize atScale(const AndroidWindowSession &session, QSize one, QSize two)
    {
        const double scale = session.panel().devicePixelRatioF();
        return scale == 1 ? one : scale == 2 ? two : displayFor(session);
    }

    QByteArray resizedTo(AndroidWindowSession &session, QSize frame)
    {
        EXPECT_TRUE(resize(session, frame));
        pass(300ms);
        return device.sent(session);
    }
};

} // namespace

TEST_F(WindowSizingTest, theDisplayIsAskedForThePixelsOfThePicture)
{
    auto &session = openKey();
    device.connect(session);
    device.sent(session);
    const auto sent = resizedTo(session, {430, 750});
    const auto display = atScale(session, QSize(424, 712), QSize(856, 1424));
    EXPECT_EQ(sent, bytes::resize(display.width(), display.height()));
}

TEST_F(WindowSizingTest, aDisplayThatIsTooSmallIsNotAskedFor)
{
    auto &session = openKey();
    device.connect(session);
    session.panel().setMinimumSize(1, 1);
    // 40 points are 80 pixels at most.
    EXPECT_EQ(resizedTo(session, {390, 36 + 40}), QByteArray());
    // At one and a half the desktop's steps are coarser.
    const double scale = session.panel().devicePixelRatioF();
    const int height = scale == 1 ? 103 : scale == 2 ? 51 : 64;
    EXPECT_EQ(resizedTo(session, {390, 36 + height}), QByteArray());
    const auto sent = resizedTo(session, {390, 36 + height + (scale == 1.5 ? 8 : 1)});
    const auto display = atScale(session, QSize(384, 104), QSize(776, 104));
    EXPECT_EQ(sent, bytes::resize(display.width(), display.height()));
}

TEST_F(WindowSizingTest, aSizeThatIsAppliedToAHiddenWindowReachesAndroid)
{
    auto &session = openKey();
    device.connect(session);
    device.sent(session);
    session.hide();
    registry->applySize(QuillnestLayout::presets[3]);
    pass(240ms);
    EXPECT_EQ(device.sent(session), QByteArray());
    pass(20ms);
    const bool isBroken = session.panel().devicePixelRatioF() == 1.5;
    const auto display = isBroken ? QSize(568, 1080) : atScale(session, QSize(376, 720), QSize(760, 1440));
    EXPECT_EQ(device.sent(session), bytes::resize(display.width(), display.height()));
    EXPECT_EQ(record().value(QStringLiteral("w")), 380);
    // What the window hears of it when it is shown is nothing new.
    session.show();
    ASSERT_TRUE(waitFor([&] { return isAbout(session.panel(), videoView(session).size(), {380, 720}); }));
    pass(1s);
    const auto again = device.sent(session);
    EXPECT_TRUE(again.isEmpty() || again == bytes::resize(display.width(), display.height()));
}

TEST(WindowPlacement, aFrameKeepsItsTopLeftCornerWhereTheScreenAllows)
{
    const QRect visible(100, 30, 1500, 1170);
    struct Row {
        QRect frame;
        QSize wanted;
        QRect expected;
    };
    const std::vector<Row> table{
        {{200, 100, 390, 760}, {440, 956}, {200, 100, 440, 956}},
        // The bottom edge would pass the screen's.
        {{200, 400, 390, 760}, {440, 956}, {200, 244, 440, 956}},
        // The right edge would.
        {{1200, 100, 390, 760}, {440, 956}, {1160, 100, 440, 956}},
        {{1500, 1100, 390, 760}, {760, 1036}, {840, 164, 760, 1036}},
        // Higher and wider than the screen.
        {{200, 100, 390, 760}, {390, 2000}, {200, 30, 390, 1170}},
        {{200, 100, 390, 760}, {3000, 760}, {100, 100, 1500, 760}},
        // A frame that hangs out on the left comes in.
        {{50, 100, 390, 760}, {300, 500}, {100, 100, 300, 500}},
        // Just so.
        {{1160, 244, 10, 10}, {440, 956}, {1160, 244, 440, 956}},
    };
    for (const auto &row : table)
        EXPECT_EQ(WindowPlacement::fittedFrame(row.frame, row.wanted, visible), row.expected)
            << row.wanted.width() << "x" << row.wanted.height();
}

TEST_F(WindowSizingTest, aWindowIsCutToItsScreenAndItsSizeComesBackOnALargerOne)
{
    const auto large = fakes.screens->screens;
    fakes.screens->screens = {{QRect(0, 0, 1280, 720), QRect(0, 20, 1280, 660), 1.0}};
    auto &session = openKey();
    const auto hasSize = [](const AndroidWindowSession &window, QSize size) {
        const auto off = window.panel().frame().size() - size;
        return std::abs(off.width()) <= 1 && std::abs(off.height()) <= 1;
    };
    EXPECT_TRUE(waitFor([&] { return hasSize(session, {390, 660}); }));
    registry->applySize(QuillnestLayout::presets[8]); // Tablet
    EXPECT_TRUE(waitFor([&] { return hasSize(session, {760, 660}); }));
    pass(300ms);
    EXPECT_EQ(QuillnestLayout::size(*fakes.settings), QSizeF(760, 1036));
    EXPECT_TRUE(hasSize(session, {760, 660}));
    // What the user drags is a choice.
    session.panel().resize(500, 600);
    EXPECT_TRUE(waitFor([&] { return std::abs(QuillnestLayout::size(*fakes.settings).width() - 500) <= 1; }));

    registry->applySize(QuillnestLayout::presets[8]);
    EXPECT_TRUE(waitFor([&] { return hasSize(session, {760, 660}); }));
    pass(300ms);
    // Of a side that is dragged alone the other one's choice stays.
    session.panel().resize(700, session.panel().height());
    EXPECT_TRUE(waitFor([&] { return std::abs(QuillnestLayout::size(*fakes.settings).width() - 700) <= 1; }));
    EXPECT_EQ(QuillnestLayout::size(*fakes.settings).height(), 1036);
    registry->applySize(QuillnestLayout::presets[8]);
    EXPECT_TRUE(waitFor([&] { return hasSize(session, {760, 660}); }));
    session.close(QStringLiteral("test"));
    ASSERT_TRUE(waitFor([this] { return ends.size() == 1; }));
    fakes.screens->screens = large;
    EXPECT_TRUE(hasSize(open(), {760, 1036}));
}

TEST_F(WindowSizingTest, aHandWrittenSizeBeyondAllScreensIsCut)
{
    for (const auto &text : {"inf", "1e300", "nan", "-inf"}) {
        const double value = QByteArray(text).toDouble();
        fakes.settings->setValue(QStringLiteral("Quillnest.panelWidth"), value);
        fakes.settings->setValue(QStringLiteral("Quillnest.panelHeight"), value);
        const auto size = QuillnestLayout::size(*fakes.settings);
        EXPECT_TRUE(size == QSizeF(16384, 16384) || size == QSizeF(390, 760)) << text;
        EXPECT_TRUE(
            QSize(16384, 16384).expandedTo(QuillnestLayout::launcherSize(*fakes.settings)) == QSize(16384, 16384));
    }
}

TEST(WindowPlacement, aWindowStepsAsideTowardsWhereThereIsRoom)
{
    FakeScreens screens;
    const auto opened = [&screens](QRect anchor, const std::vector<QPoint> &taken, QSize size = {390, 760}) {
        return WindowPlacement::initialFrame(screens, {}, size, anchor, taken).topLeft();
    };
    const QRect left(100, 100, 390, 760);
    EXPECT_EQ(opened(left, {}), QPoint(100, 100));
    EXPECT_EQ(opened(left, {{100, 100}}), QPoint(124, 124));
    EXPECT_EQ(opened(left, {{102, 98}}), QPoint(124, 124));
    EXPECT_EQ(opened(left, {{100, 100}, {124, 124}}), QPoint(148, 148));
    EXPECT_EQ(opened(left, {{100, 130}}), QPoint(100, 100));
    const QRect right(1530, 320, 390, 760);
    EXPECT_EQ(opened(right, {{1530, 320}}), QPoint(1506, 296));
    // Where there is no room at all it stays, over the other.
    EXPECT_EQ(opened({0, 30, 1920, 1050}, {{0, 30}}, {1920, 1050}), QPoint(0, 30));
}

TEST(WindowPlacement, aPinnedWindowStaysWhereItsUserPutItAndIsCutToTheScreen)
{
    FakeScreens screens;
    const WindowPlacement::Record pinned{.origin = QPoint(1800, 900), .isPinned = true};
    EXPECT_EQ(
        WindowPlacement::initialFrame(screens, pinned, {390, 2000}, QRect(5, 5, 1, 1), {{1800, 900}}),
        QRect(1800, 900, 390, 1050));
}

TEST_F(WindowSizingTest, aRecordWhoseValuesHaveOtherTypesIsReadAsFarAsItGoes)
{
    const auto load = [this](const QVariant &pinned, const QVariant &x) {
        // A value that only has another type counts as the same one.
        setRecord({});
        setRecord({{QStringLiteral("pinned"), pinned}, {QStringLiteral("x"), x}, {QStringLiteral("y"), 5}});
        return WindowPlacement::load(*fakes.settings, package);
    };
    EXPECT_TRUE(load(true, 3).isPinned);
    EXPECT_EQ(load(true, 3).origin, QPoint(3, 5));
    EXPECT_EQ(load(true, 3.0).origin, QPoint(3, 5));
    EXPECT_EQ(load(true, QStringLiteral("3")).origin, std::nullopt);
    // Only a switch can be on.
    for (const auto &value : {QVariant(1), QVariant(QStringLiteral("true")), QVariant(2.5), QVariant()})
        EXPECT_FALSE(load(value, 3).isPinned) << value.toString().toStdString();
}

TEST(WindowPlacement, theLauncherOpensAtTheEdgeOfTheDesktopsBar)
{
    const QRect screen(0, 0, 1280, 800);
    const QSize size(390, 600);
    const auto origin = [&](QRect visible) { return WindowPlacement::launcherOrigin({screen, visible, 1}, size); };
    EXPECT_EQ(origin({0, 30, 1280, 770}), QPoint(1280 - 390 - 12, 36));
    EXPECT_EQ(origin({0, 0, 1280, 768}), QPoint(1280 - 390 - 12, 768 - 600 - 6));
    EXPECT_EQ(origin({0, 0, 1280, 800}), QPoint(1280 - 390 - 12, 6)) << "without a bar";
    EXPECT_EQ(origin({0, 200, 1280, 590}), QPoint(1280 - 390 - 12, 206)) << "of two the wider";
    EXPECT_EQ(origin({0, 0, 1240, 600}), QPoint(1240 - 390 - 12, 6)) << "what doesn't fit begins at the top";
}
