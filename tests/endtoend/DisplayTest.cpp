#include "endtoend/EndToEnd.h"

#include <QJsonDocument>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace quillnest::driver
{

namespace
{

const auto package = QStringLiteral("app.quillnest.samples.tide");

/// The share of pixels that differ clearly from the other picture's, which begins at `offset` in this one.
double wrongShare(const QImage &shown, QPoint offset, const QImage &wanted, QRect part)
{
    int wrong = 0;
    for (int y = part.top(); y <= part.bottom(); ++y) {
        for (int x = part.left(); x <= part.right(); ++x) {
            const QColor a(shown.pixel(x + offset.x(), y + offset.y()));
            const QColor b(wanted.pixel(x, y));
            wrong += std::abs(a.red() - b.red()) + std::abs(a.green() - b.green()) + std::abs(a.blue() - b.blue())
                > 3 * 32;
        }
    }
    return static_cast<double>(wrong) / (part.width() * part.height());
}

bool isBlack(QRgb pixel)
{
    return qRed(pixel) < 16 && qGreen(pixel) < 16 && qBlue(pixel) < 16;
}

double blackShare(const QImage &image)
{
    int black = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            black += isBlack(image.pixel(x, y));
    }
    return static_cast<double>(black) / (image.width() * image.height());
}

} // namespace

class DisplayTest : public EndToEnd
{
protected:
    DisplayTest() : DisplayTest(1, {1200, 1000}) { }
    DisplayTest(double scale, QSize screen) : EndToEnd(options(scale, screen)) { }

    static TestDesktop::Options options(double scale, QSize screen)
    {
        TestDesktop::Options options;
        options.screen = screen;
        options.scale = scale;
        options.sound = false;
        return options;
    }

    void SetUp() override
    {
        program.configureDevice({{QStringLiteral("bootSeconds"), 0.2}});
        program.start();
        openTide();
    }

    QRect frame() const { return rectangle(program.window().value(QStringLiteral("frame")).toObject()); }
    QRect videoArea() const { return rectangle(program.window().value(QStringLiteral("videoArea")).toObject()); }
    bool isVisible() const { return program.window().value(QStringLiteral("visible")).toBool(); }
    QJsonArray resizes() const { return program.device().value(QStringLiteral("resizes")).toArray(); }
    QSize lastResize() const
    {
        const auto last = resizes().last();
        return {last[QStringLiteral("width")].toInt(), last[QStringLiteral("height")].toInt()};
    }

    /// The header's buttons by their distance from its right end, in their order.
    enum Button { Close, Hide, Pin, Size };
    QPointF button(Button which) const
    {
        const auto at = frame();
        return {at.x() + at.width() - 21.0 - 28.0 * static_cast<int>(which), at.y() + 18.0};
    }
    void click(Button which) const { desktop.click(button(which)); }

    void waitForSize(QSize size) const
    {
        waitFor(QStringLiteral("a window of %1 by %2").arg(size.width()).arg(size.height()), 10, [this, size] {
            return frame().size() == size;
        });
    }
    void waitForVisible(bool visible) const
    {
        waitFor(
            visible ? QStringLiteral("the window to show") : QStringLiteral("the window to hide"), 10,
            [this, visible] { return isVisible() == visible; });
    }
    void waitForPinned(bool pinned) const
    {
        waitFor(QStringLiteral("the pin"), 10, [this, pinned] {
            return program.window().value(QStringLiteral("pinned")).toBool() == pinned;
        });
    }

    /// Opens the size menu and waits until it stands on the screen; where its first row begins.
    QPoint openSizeMenu() const
    {
        const auto corner = (button(Size) + QPointF(-11, 11 + 4)).toPoint();
        const auto without = desktop.shownWindows();
        click(Size);
        waitFor(QStringLiteral("the size menu"), 10, [&] { return desktop.shownWindows() > without; });
        // The picture beside it moves; the menu itself has been painted whole once nothing in it changes any more.
        const QRect inside(corner + QPoint(4, 10), ::QSize(100, 100));
        QImage seen;
        waitFor(QStringLiteral("the menu to be painted"), 10, [&] {
            program.state(); // answered behind the painting that was due
            const auto now = desktop.screenshot(inside);
            return std::exchange(seen, now) == now;
        });
        return corner;
    }
    void leaveSizeMenu(const QString &key) const
    {
        const auto with = desktop.shownWindows();
        desktop.key(key);
        waitFor(QStringLiteral("the menu to go"), 10, [&] { return desktop.shownWindows() < with; });
    }
    void chooseSize(int preset) const
    {
        openSizeMenu();
        for (int i = 0; i <= preset; ++i)
            desktop.key(QStringLiteral("Down"));
        leaveSizeMenu(QStringLiteral("Return"));
    }

    /// Another program's window, which takes the keyboard.
    std::unique_ptr<QProcess> startAnother() const { return desktop.start(QStringLiteral(QUILLNEST_DRAG_SOURCE), {}); }
    static void end(QProcess &process)
    {
        process.kill();
        process.waitForFinished(5000);
    }
};

/// Each at the scale of its name: it is one for the whole program.
class SharpnessTest : public DisplayTest
{
protected:
    explicit SharpnessTest(double scale) : DisplayTest(scale, QSizeF(700 * scale, 800 * scale).toSize()) { }

    void expectSharp(::QSize display, int dpi) const
    {
        const auto asked
            = QStringLiteral("New display: %1x%2/%3 (id=").arg(display.width()).arg(display.height()).arg(dpi);
        EXPECT_TRUE(program.windowLog(package).contains(asked)) << qUtf8Printable(program.windowLog(package));
        double best = 1;
        waitFor(QStringLiteral("a sharp picture"), 20, [&] {
            // A window manager that wants a window a pixel smaller gets a display that follows.
            const auto wanted = program.deviceScreenshot();
            const auto shown = desktop.screenshot(videoArea());
            // The list and its small letters; the head moves.
            const QRect part(16, wanted.height() / 2, wanted.width() - 32, wanted.height() / 2 - 32);
            // The few pixels that the picture lacks lie around it; a window may begin within a point.
            const ::QSize slack = shown.size() - wanted.size();
            for (int y = slack.height() / 2 - 1; y <= slack.height() / 2 + 1; ++y) {
                for (int x = slack.width() / 2 - 1; x <= slack.width() / 2 + 1; ++x) {
                    if (x >= 0 && y >= 0 && x <= slack.width() && y <= slack.height())
                        best = std::min(best, wrongShare(shown, {x, y}, wanted, part));
                }
            }
            return best < 0.001;
        });
        std::printf("%.4f %% of the pixels differ\n", best * 100);
    }
};

#define QUILLNEST_SCALE_TEST(name, scale)                                                                              \
    class name : public SharpnessTest                                                                                  \
    {                                                                                                                  \
    protected:                                                                                                         \
        name() : SharpnessTest(scale) { }                                                                              \
    }
QUILLNEST_SCALE_TEST(DisplayAtOneTest, 1);
QUILLNEST_SCALE_TEST(DisplayAtOneAndAQuarterTest, 1.25);
QUILLNEST_SCALE_TEST(DisplayAtOneAndAHalfTest, 1.5);
QUILLNEST_SCALE_TEST(DisplayAtTwoTest, 2);
#undef QUILLNEST_SCALE_TEST

TEST_F(DisplayAtOneTest, theDisplayHasTheWindowsPixelsAndIsShownUnscaled)
{
    expectSharp({384, 720}, 160);
}

TEST_F(DisplayAtOneAndAQuarterTest, theDisplayHasTheWindowsPixelsAndIsShownUnscaled)
{
    expectSharp({480, 904}, 200);
}

TEST_F(DisplayAtOneAndAHalfTest, theDisplayHasTheWindowsPixelsAndIsShownUnscaled)
{
    expectSharp({584, 1080}, 240);
}

TEST_F(DisplayAtTwoTest, theDisplayHasTheWindowsPixelsAndIsShownUnscaled)
{
    expectSharp({776, 1448}, 320);
}

TEST_F(DisplayTest, aDraggedCornerSendsOneSizeAndThePictureStaysOnTheWay)
{
    waitForMorePictures();
    const auto area = videoArea();
    const auto before = frame();
    // In one run that no look at the screen slows down: a pause would be the end of a drag.
    QStringList script{
        QStringLiteral("mousemove"), QString::number(before.x() + 2), QString::number(before.y() + before.height() - 2),
        QStringLiteral("mousedown"), QStringLiteral("1")};
    constexpr int steps = 40;
    for (int i = 1; i <= steps; ++i) {
        script
            += {QStringLiteral("sleep"), QStringLiteral("0.04"), QStringLiteral("mousemove"),
                QString::number(before.x() + 2 - 160 * i / steps),
                QString::number(before.y() + before.height() - 2 + 120 * i / steps)};
    }
    script += {QStringLiteral("mouseup"), QStringLiteral("1")};
    const auto dragging = desktop.start(QStringLiteral("xdotool"), script);
    int looks = 0;
    double darkest = 0;
    do {
        // What was video before the drag stays inside the growing window. Bars may come beside the picture.
        darkest = std::max(darkest, blackShare(desktop.screenshot(area)));
        ++looks;
    } while (!dragging->waitForFinished(0));
    EXPECT_GE(looks, 3);
    EXPECT_LT(darkest, 0.4);
    waitFor(QStringLiteral("the window to have grown"), 10, [this, before] {
        return frame().width() > before.width() + 100 && frame().height() > before.height() + 80;
    });
    const auto wanted = videoArea().size();
    const ::QSize display(wanted.width() & ~7, wanted.height() & ~7);
    program.waitForState(QStringLiteral("the video to take the new size"), 15, [display](const QJsonObject &state) {
        const auto window = windows(state).first();
        return window[QStringLiteral("videoWidth")].toInt() == display.width()
            && window[QStringLiteral("videoHeight")].toInt() == display.height();
    });
    waitForMorePictures();
    EXPECT_EQ(resizes().size(), 1) << QJsonDocument(resizes()).toJson().constData();
    EXPECT_EQ(lastResize(), display);
    EXPECT_EQ(frame().topRight(), before.topRight()) << "the other corner stays";
    EXPECT_LT(blackShare(desktop.screenshot(videoArea())), 0.1) << "no bars once the display has followed";
    std::printf("%d looks on the way, black at most %.0f %%\n", looks, darkest * 100);
}

TEST_F(DisplayTest, theSizeMenuTicksThePresentSizeAndSetsAnother)
{
    // Away from the screen's edge, which would push the menu aside.
    const QPointF grip(frame().x() + frame().width() / 2.0, frame().y() + 18.0);
    const int left = frame().x() - 400;
    desktop.drag(grip, grip + QPointF(-400, 60));
    waitFor(QStringLiteral("the window to move"), 10, [this, left] { return std::abs(frame().x() - left) <= 2; });
    chooseSize(1); // Small
    waitForSize({340, 636});
    EXPECT_EQ(videoArea().size(), ::QSize(340, 600));
    waitFor(QStringLiteral("the device to follow"), 10, [this] { return !resizes().isEmpty(); });
    EXPECT_EQ(lastResize(), ::QSize(336, 600));
    EXPECT_TRUE(program.log().contains(QStringLiteral("window size preset Small — 340 × 600")));

    // The column of the ticks, with the present size and with the one two rows further down.
    const auto ticks = [this] {
        const auto corner = openSizeMenu();
        const auto column = desktop.screenshot(QRect(corner + QPoint(4, 4), ::QSize(14, 300)));
        leaveSizeMenu(QStringLiteral("Escape"));
        return column;
    };
    const auto small = ticks();
    chooseSize(3); // Medium
    waitForSize({380, 756});
    const auto medium = ticks();
    std::vector<int> places;
    int last = -10;
    for (int y = 0; y < small.height(); ++y) {
        bool same = true;
        for (int x = 0; x < small.width(); ++x)
            same = same && small.pixel(x, y) == medium.pixel(x, y);
        if (same)
            continue;
        if (y > last + 4)
            places.push_back(y);
        last = y;
    }
    ASSERT_EQ(places.size(), 2U) << "a tick that was there and one that is";
    const int rows = places[1] - places[0];
    EXPECT_GT(rows, 30);
    EXPECT_LT(rows, 70);
    EXPECT_EQ(
        program.ctl({QStringLiteral("settings"), QStringLiteral("get"), QStringLiteral("Quillnest.panelWidth")})
            .trimmed()
            .toDouble(),
        380);
}

TEST_F(DisplayTest, aSizeThatTheScreenHasNoRoomForIsCutToIt)
{
    chooseSize(8); // Tablet
    waitForSize({760, 1000});
    const QRect screen(0, 0, 1200, 1000);
    EXPECT_TRUE(screen.contains(frame())) << frame().x() << " " << frame().y();
    EXPECT_EQ(frame().y(), 0);
    waitFor(QStringLiteral("the device to follow"), 10, [this] { return !resizes().isEmpty(); });
    EXPECT_EQ(lastResize(), ::QSize(760, 960));
}

TEST_F(DisplayTest, aWindowHidesWhenItLosesTheKeyboardAndAPinnedOneStays)
{
    {
        const auto other = startAnother();
        waitForVisible(false);
        end(*other);
    }
    program.post(QStringLiteral("open:Tide"));
    waitForVisible(true);
    waitForKeyboard();
    click(Pin);
    waitForPinned(true);
    {
        const auto other = startAnother();
        waitFor(QStringLiteral("the keyboard to go"), 10, [this] {
            return !program.window().value(QStringLiteral("active")).toBool();
        });
        waitForMorePictures();
        EXPECT_TRUE(isVisible());
        end(*other);
    }
    click(Pin);
    waitForPinned(false);
}

TEST_F(DisplayTest, homePutsThePanelInTheWindowsPlaceAndTheStreamGoesOn)
{
    const auto before = frame();
    desktop.click({before.x() + 21.0, before.y() + 18.0});
    waitForVisible(false);
    program.waitForState(QStringLiteral("the panel in the window's place"), 10, [before](const QJsonObject &state) {
        return rectangle(state.value(QStringLiteral("panel")).toObject()) == before;
    });
    const int enqueued = program.window().value(QStringLiteral("framesEnqueued")).toInt();
    program.waitForState(QStringLiteral("the stream to go on"), 10, [enqueued](const QJsonObject &state) {
        return windows(state).first()[QStringLiteral("framesEnqueued")].toInt() > enqueued + 10;
    });
}

TEST_F(DisplayTest, aPinnedWindowComesBackWhereItWasAfterARestart)
{
    click(Pin);
    waitForPinned(true);
    const auto before = frame();
    const QPointF grip(before.x() + before.width() / 2.0, before.y() + 18.0);
    desktop.drag(grip, grip + QPointF(-400, 60));
    waitFor(QStringLiteral("the window to move"), 10, [this, before] {
        return std::abs(frame().x() - before.x() + 400) <= 2 && std::abs(frame().y() - before.y() - 60) <= 2;
    });
    const auto saved = frame();
    EXPECT_EQ(program.quit(), 0);
    waitFor(QStringLiteral("the device to stop"), 20, [this] { return !program.isDeviceRunning(); });
    program.start();
    program.post(QStringLiteral("open:Tide"));
    program.waitForPicture(60);
    EXPECT_EQ(frame(), saved);
    EXPECT_TRUE(program.window().value(QStringLiteral("pinned")).toBool());
}

TEST_F(DisplayTest, aPinnedWindowWhosePlaceIsOnNoScreenOpensAtTheTopRight)
{
    program.post(QStringLiteral("close-all"));
    waitForNoWindow();
    set(QStringLiteral("Quillnest.window.") + package,
        QJsonObject{
            {QStringLiteral("x"), 5000},
            {QStringLiteral("y"), 4000},
            {QStringLiteral("w"), 390},
            {QStringLiteral("h"), 760},
            {QStringLiteral("pinned"), true}});
    program.post(QStringLiteral("open:Tide"));
    program.waitForPicture();
    EXPECT_TRUE(program.window().value(QStringLiteral("pinned")).toBool());
    EXPECT_EQ(frame(), QRect(1200 - 390 - 12, 6, 390, 760));
}

} // namespace quillnest::driver
