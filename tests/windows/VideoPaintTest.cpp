#include "windows/AndroidVideoView.h"

#include "windows/LoopbackDevice.h"
#include "windows/PicturePlace.h"
#include "windows/WindowFakes.h"

#include <QScreen>
#include <QTest>

#include <gtest/gtest.h>

#include <random>

using namespace quillnest;
using namespace std::chrono_literals;

namespace
{

/// A view in a window of its own, at whatever scale the display has. What it shows is read back from the display, so
/// that a partial update is judged by what the user sees of it.
class VideoPaintTest : public ::testing::Test
{
protected:
    VideoPaintTest()
    {
        fakes.platform.video = video;
        view = std::make_unique<AndroidVideoView>(fakes.platform);
        view->move(100, 100);
    }

    FakeRenderer &renderer() { return *video->renderers.at(0); }

    /// Opens the window with a view of 160 by 120 points.
    void open()
    {
        view->setFixedSize(160, 120);
        view->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(view.get()));
        view->repaint();
        pixels = onScreen().size();
        const double scale = view->devicePixelRatioF();
        ASSERT_EQ(pixels, QSize(qRound(160 * scale), qRound(120 * scale)));
    }

    QImage onScreen() const
    {
        return view->screen()->grabWindow(view->winId()).toImage().convertToFormat(QImage::Format_RGB32);
    }

    /// What the view must show of a picture that is drawn unscaled: the pixels that are left beside it go on with its
    /// edges.
    QImage composed(const QImage &picture) const
    {
        QImage whole(pixels, QImage::Format_RGB32);
        const auto slack = pixels - picture.size();
        for (int y = 0; y < whole.height(); ++y) {
            for (int x = 0; x < whole.width(); ++x) {
                const int fromX = std::clamp(x - slack.width() / 2, 0, picture.width() - 1);
                const int fromY = std::clamp(y - slack.height() / 2, 0, picture.height() - 1);
                whole.setPixel(x, y, picture.pixel(fromX, fromY));
            }
        }
        return whole;
    }

    /// Puts the next picture of the stream into the slot, without giving the view a turn.
    std::shared_ptr<FakeFrame> put(const QImage &picture, std::vector<QRect> changed)
    {
        auto frame = std::make_shared<FakeFrame>(picture, ++sequence, std::move(changed), fakes.clock->monotonic());
        renderer().put(frame);
        return frame;
    }

    std::shared_ptr<FakeFrame> show(const QImage &picture, std::vector<QRect> changed)
    {
        auto frame = put(picture, std::move(changed));
        fakes.settle();
        return frame;
    }

    std::shared_ptr<FakeFrame> showWhole(const QImage &picture) { return show(picture, {picture.rect()}); }

    /// A picture of random pixels in the whole view but for `slack` pixels.
    QImage noise(QSize slack = {0, 0})
    {
        QImage picture(pixels - slack, QImage::Format_RGB32);
        fillRandomly(picture, picture.rect());
        return picture;
    }

    void fillRandomly(QImage &picture, QRect part)
    {
        for (int y = part.y(); y < part.y() + part.height(); ++y) {
            for (int x = part.x(); x < part.x() + part.width(); ++x)
                picture.setPixel(x, y, 0xFF000000 | (random() & 0xFFFFFF));
        }
    }

    /// A part with even sides but at the picture's own edges.
    QRect randomPart(QSize picture)
    {
        const auto upTo = [this](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
        const int x = upTo(picture.width()) & ~1;
        const int y = upTo(picture.height()) & ~1;
        const int right = std::min(x + ((upTo(40) + 2) & ~1), picture.width());
        const int bottom = std::min(y + ((upTo(30) + 2) & ~1), picture.height());
        return {QPoint(x, y), QSize(right - x, bottom - y)};
    }

    FakePlatform fakes = fakePlatform();
    std::shared_ptr<FakeVideo> video = std::make_shared<FakeVideo>();
    std::unique_ptr<AndroidVideoView> view;
    QSize pixels;
    std::uint64_t sequence = 0;
    std::mt19937 random{4711};
};

int differingPixels(const QImage &a, const QImage &b, QRect *where = nullptr)
{
    int count = 0;
    QRect area;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            if (a.pixel(x, y) != b.pixel(x, y)) {
                ++count;
                area |= QRect(x, y, 1, 1);
            }
        }
    }
    if (where)
        *where = area;
    return count;
}

::testing::AssertionResult same(const QImage &actual, const QImage &expected)
{
    if (actual.size() != expected.size())
        return ::testing::AssertionFailure() << "sizes differ";
    QRect where;
    if (const int count = differingPixels(actual, expected, &where))
        return ::testing::AssertionFailure() << count << " pixels differ within " << where.x() << "," << where.y()
                                             << " " << where.width() << "x" << where.height();
    return ::testing::AssertionSuccess();
}

} // namespace

TEST_F(VideoPaintTest, theViewIsBlackBeforeTheFirstPicture)
{
    open();
    QImage black(pixels, QImage::Format_RGB32);
    black.fill(Qt::black);
    EXPECT_TRUE(same(onScreen(), black));
    EXPECT_EQ(view->counters().framesShown, 0U);
    EXPECT_FALSE(view->counters().firstShownAt);
}

TEST_F(VideoPaintTest, aPictureOfTheViewsSizeIsShownPixelForPixel)
{
    open();
    const auto picture = noise();
    const auto frame = showWhole(picture);
    EXPECT_TRUE(same(onScreen(), picture));
    EXPECT_TRUE(frame->scaledTo.empty());
    EXPECT_EQ(frame->wrongQuestions, 0);
}

TEST_F(VideoPaintTest, aPictureThatOnlyLacksTheRoundingIsCentredUnscaled)
{
    open();
    const auto picture = noise({7, 5});
    const auto frame = showWhole(picture);
    EXPECT_TRUE(same(onScreen(), composed(picture)));
    EXPECT_TRUE(frame->scaledTo.empty());
}

TEST_F(VideoPaintTest, aPictureThatLacksMoreIsScaled)
{
    open();
    QImage picture(pixels - QSize(8, 8), QImage::Format_RGB32);
    picture.fill(Qt::red);
    const auto frame = showWhole(picture);
    EXPECT_TRUE(frame->converted.empty());
    const auto area = PicturePlace::rect(pixels, picture.size());
    ASSERT_FALSE(frame->scaledTo.empty());
    EXPECT_EQ(frame->scaledTo.at(0), area.size());
}

TEST_F(VideoPaintTest, aPictureOfOtherProportionsStandsBetweenBlackBars)
{
    open();
    QImage picture(pixels.width(), pixels.height() / 4, QImage::Format_RGB32);
    picture.fill(Qt::green);
    showWhole(picture);
    const auto area = PicturePlace::rect(pixels, picture.size());
    QImage expected(pixels, QImage::Format_RGB32);
    expected.fill(Qt::black);
    QPainter painter(&expected);
    painter.fillRect(area, Qt::green);
    painter.end();
    EXPECT_TRUE(same(onScreen(), expected));
    EXPECT_GT(area.y(), 0);
}

TEST_F(VideoPaintTest, theBarsOfATallerPictureAreClearedWhenAWiderOneComes)
{
    open();
    QImage tall(pixels.width() / 4, pixels.height(), QImage::Format_RGB32);
    tall.fill(Qt::red);
    showWhole(tall);
    QImage wide(pixels.width(), pixels.height() / 4, QImage::Format_RGB32);
    wide.fill(Qt::blue);
    showWhole(wide);
    const auto area = PicturePlace::rect(pixels, wide.size());
    QImage expected(pixels, QImage::Format_RGB32);
    expected.fill(Qt::black);
    QPainter painter(&expected);
    painter.fillRect(area, Qt::blue);
    painter.end();
    EXPECT_TRUE(same(onScreen(), expected));
}

TEST_F(VideoPaintTest, manyPartialUpdatesShowWhatAFullRepaintShows)
{
    open();
    for (const auto slack : {QSize(0, 0), QSize(5, 3), QSize(4, 7)}) {
        auto picture = noise(slack);
        showWhole(picture);
        for (int round = 0; round < 60; ++round) {
            std::vector<QRect> changed;
            for (unsigned count = random() % 4; count > 0; --count) {
                changed.push_back(randomPart(picture.size()));
                fillRandomly(picture, changed.back());
            }
            const auto frame = show(picture, changed);
            ASSERT_TRUE(same(onScreen(), composed(picture))) << "round " << round;
            ASSERT_EQ(frame->wrongQuestions, 0);
        }
        const auto partially = onScreen();
        view->repaint();
        EXPECT_TRUE(same(onScreen(), partially));
    }
}

TEST_F(VideoPaintTest, nothingOutsideTheChangedPartIsDrawnOrConverted)
{
    open();
    QImage first(pixels, QImage::Format_RGB32);
    first.fill(Qt::blue);
    showWhole(first);
    // A picture that says less than is true of it: what it keeps to itself must not appear.
    QImage second(pixels, QImage::Format_RGB32);
    second.fill(Qt::yellow);
    const QRect part(20, 30, 40, 24);
    const auto frame = show(second, {part});
    const auto shown = onScreen();
    // At a broken scale the part ends inside a point, and the whole point is painted.
    const int rim = static_cast<int>(std::ceil(view->devicePixelRatioF())) + 1;
    for (int y = 0; y < shown.height(); ++y) {
        for (int x = 0; x < shown.width(); ++x) {
            const bool mayDiffer = part.adjusted(-rim, -rim, rim, rim).contains(x, y);
            if (part.contains(x, y) || !mayDiffer) {
                const QColor expected = mayDiffer ? Qt::yellow : Qt::blue;
                ASSERT_EQ(shown.pixelColor(x, y), expected) << x << "," << y;
            }
        }
    }
    for (const auto &converted : frame->converted)
        EXPECT_TRUE(part.adjusted(-rim - 1, -rim - 1, rim, rim).contains(converted));
    EXPECT_FALSE(frame->converted.empty());
}

TEST_F(VideoPaintTest, aPictureThatChangesNothingCostsNoConversionAndCountsAsShown)
{
    open();
    const auto picture = noise();
    showWhole(picture);
    const auto frame = show(picture, {});
    EXPECT_TRUE(frame->converted.empty());
    EXPECT_EQ(view->counters().framesShown, 2U);
    EXPECT_TRUE(same(onScreen(), picture));
}

TEST_F(VideoPaintTest, aPictureAfterOneThatWasSkippedIsShownWhole)
{
    open();
    auto picture = noise();
    showWhole(picture);
    const QRect skipped(0, 0, 20, 20);
    fillRandomly(picture, skipped);
    put(picture, {skipped});
    const QRect last(60, 60, 10, 10);
    fillRandomly(picture, last);
    put(picture, {last});
    fakes.settle();
    EXPECT_TRUE(same(onScreen(), picture));
    EXPECT_EQ(view->counters().framesShown, 2U);
}

TEST_F(VideoPaintTest, aPaintOfOnePlaceDoesNotLoseWhatANewerPictureChangedElsewhere)
{
    open();
    auto picture = noise();
    showWhole(picture);
    const QRect part(60, 60, 20, 20);
    fillRandomly(picture, part);
    put(picture, {part});
    // Something else needs a corner painted before the new picture's turn comes.
    view->repaint(QRect(0, 0, 10, 10));
    fakes.settle();
    EXPECT_TRUE(same(onScreen(), picture));
}

TEST_F(VideoPaintTest, aPictureThatComesWhileAnotherIsPaintedIsNotLost)
{
    /// Lets the next picture come at the moment at which this one's changes have been looked at.
    class Interrupted : public FakeFrame
    {
    public:
        using FakeFrame::FakeFrame;
        const std::vector<QRect> &changedParts() const override
        {
            if (auto action = std::exchange(whenLookedAt, nullptr))
                action();
            return FakeFrame::changedParts();
        }
        mutable std::function<void()> whenLookedAt;
    };

    open();
    auto picture = noise();
    showWhole(picture);
    const QRect firstPart(10, 10, 20, 20);
    const QRect secondPart(80, 60, 20, 20);
    fillRandomly(picture, firstPart);
    const auto first
        = std::make_shared<Interrupted>(picture, ++sequence, std::vector{firstPart}, fakes.clock->monotonic());
    fillRandomly(picture, secondPart);
    first->whenLookedAt = [this, &picture, secondPart] { put(picture, {secondPart}); };
    renderer().put(first);
    fakes.settle();
    EXPECT_TRUE(same(onScreen(), picture));
    EXPECT_EQ(view->counters().framesShown, 3U);
}

TEST_F(VideoPaintTest, anOpaqueWidgetOnTopIsNotOverwritten)
{
    open();
    auto picture = noise();
    showWhole(picture);
    QWidget top(view.get());
    top.setAutoFillBackground(true);
    top.setPalette(QPalette(Qt::red, Qt::red));
    top.setGeometry(40, 40, 40, 40);
    top.show();
    const double scale = view->devicePixelRatioF();
    const auto covered = QRectF(40 * scale, 40 * scale, 40 * scale, 40 * scale).toRect();
    const auto isThere = [&] { return onScreen().pixelColor(covered.center()) == QColor(Qt::red); };
    ASSERT_TRUE(comesTrue(fakes, isThere));
    const QRect part(covered.x() & ~1, (covered.y() - 10) & ~1, 40, 40);
    fillRandomly(picture, part);
    show(picture, {part});
    auto expected = composed(picture);
    QPainter painter(&expected);
    painter.fillRect(covered, Qt::red);
    painter.end();
    EXPECT_TRUE(same(onScreen(), expected));
}

TEST_F(VideoPaintTest, aWidgetThatIsSeenThroughStaysOnTopOfTheNewPicture)
{
    class Veil : public QWidget
    {
    public:
        using QWidget::QWidget;

    protected:
        void paintEvent(QPaintEvent *) override
        {
            QPainter painter(this);
            painter.fillRect(rect(), QColor(255, 255, 255, 128));
        }
    };
    open();
    auto picture = noise();
    showWhole(picture);
    Veil veil(view.get());
    veil.setGeometry(40, 40, 40, 40);
    veil.show();
    ASSERT_TRUE(comesTrue(fakes, [&] { return !same(onScreen(), picture); }));
    const QRect part(40, 40, 60, 60);
    fillRandomly(picture, part);
    show(picture, {part});
    const auto partially = onScreen();
    view->repaint();
    EXPECT_TRUE(same(onScreen(), partially));
    EXPECT_FALSE(same(partially, picture));
}

TEST_F(VideoPaintTest, whatCameWhileHiddenIsShownWithTheWindow)
{
    open();
    showWhole(noise());
    view->hide();
    fakes.settle();
    const auto unseen = showWhole(noise());
    EXPECT_TRUE(unseen->converted.empty());
    EXPECT_EQ(view->counters().framesShown, 1U);
    auto picture = noise();
    const auto newest = put(picture, {QRect(0, 0, 2, 2)});
    fakes.settle();
    fakes.clock->advance(1h);
    view->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(view.get()));
    EXPECT_TRUE(comesTrue(fakes, [&] { return bool(same(onScreen(), picture)); }));
    EXPECT_EQ(view->counters().framesShown, 2U);
    // The hour was the window's, not the stream's.
    EXPECT_EQ(view->counters().frameAges.worst(), 0);
    const QRect part(30, 30, 10, 10);
    fillRandomly(picture, part);
    show(picture, {part});
    EXPECT_TRUE(same(onScreen(), picture));
}

TEST_F(VideoPaintTest, countersTellTheFirstPictureAndTheAgeOfTheLastAndTheWorst)
{
    open();
    const auto showAged = [this](std::chrono::milliseconds age) {
        put(noise(), {QRect(QPoint(0, 0), pixels)});
        fakes.clock->advance(age);
        fakes.settle();
    };
    fakes.clock->advance(3s);
    const auto first = fakes.clock->monotonic() + 5ms;
    showAged(5ms);
    EXPECT_EQ(view->counters().firstShownAt, first);
    EXPECT_DOUBLE_EQ(view->counters().lastFrameAge, 5);
    showAged(20ms);
    showAged(2ms);
    EXPECT_DOUBLE_EQ(view->counters().lastFrameAge, 2);
    EXPECT_DOUBLE_EQ(view->counters().frameAges.worst(), 20);
    EXPECT_EQ(view->counters().firstShownAt, first);
    EXPECT_EQ(view->counters().framesShown, 3U);
}

TEST_F(VideoPaintTest, aViewThatHasGoneIsNotToldOfAPictureUnderWay)
{
    open();
    const auto kept = video->renderers.at(0);
    put(noise(), {});
    view.reset();
    EXPECT_FALSE(kept->hasHandler());
    fakes.settle();
}
