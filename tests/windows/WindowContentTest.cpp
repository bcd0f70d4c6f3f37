#include "windows/WindowContent.h"

#include "fakes/FakePlatform.h"
#include "windows/AndroidAppPanel.h"
#include "windows/AndroidVideoView.h"
#include "windows/HeaderView.h"
#include "windows/LoopbackDevice.h"
#include "windows/WindowFakes.h"

#include <QLabel>
#include <QPainter>
#include <QTest>

#include <gtest/gtest.h>

using namespace quillnest;

namespace
{

/// One colour, as high as the test wants it.
class Patch : public QWidget
{
public:
    explicit Patch(QColor color, int height = 40) : m_color(color), m_height(height) { }
    QSize sizeHint() const override { return {10, m_height}; }
    void grow(int height)
    {
        m_height = height;
        updateGeometry();
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.fillRect(rect(), m_color);
    }

private:
    const QColor m_color;
    int m_height;
};

class WindowContentTest : public ::testing::Test
{
protected:
    WindowContentTest()
    {
        fakes.platform.video = video;
        fakes.platform.symbols = std::make_shared<FakeSymbols>();
        content = std::make_unique<WindowContent>(fakes.platform, QStringLiteral("Example"));
        content->resize(392, 760);
    }

    void show(QWidget &window) const
    {
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
        fakes.settle();
    }

    /// A picture of one colour in the whole of the picture's area.
    void showPicture(QColor color)
    {
        const auto &view = content->videoView();
        QImage picture(view.size() * view.devicePixelRatioF(), QImage::Format_RGB32);
        picture.fill(color);
        video->renderers.at(0)->put(
            std::make_shared<FakeFrame>(picture, ++sequence, std::vector{picture.rect()}, fakes.clock->monotonic()));
        fakes.settle();
    }

    FakePlatform fakes = fakePlatform();
    std::shared_ptr<FakeVideo> video = std::make_shared<FakeVideo>();
    std::unique_ptr<WindowContent> content;
    std::uint64_t sequence = 0;
};

} // namespace

TEST_F(WindowContentTest, thePictureHasWhatTheHeaderLeaves)
{
    show(*content);
    EXPECT_EQ(content->header().geometry(), QRect(0, 0, 392, 36));
    EXPECT_EQ(content->videoView().geometry(), QRect(0, 36, 392, 724));
    content->resize(400, 500);
    fakes.settle();
    EXPECT_EQ(content->header().geometry(), QRect(0, 0, 400, 36));
    EXPECT_EQ(content->videoView().geometry(), QRect(0, 36, 400, 464));
    EXPECT_EQ(WindowContent::pictureSize({400, 500}), QSize(400, 464));
    EXPECT_EQ(WindowContent::pictureSize({400, 20}), QSize(400, 0));
}

TEST_F(WindowContentTest, overlaysStandInTheirPlacesHiddenAtFirst)
{
    show(*content);
    auto *shade = new Patch(Qt::blue);
    auto *banner = new Patch(Qt::green, 60);
    content->put(banner, WindowContent::Place::belowHeader);
    content->put(shade, WindowContent::Place::coveringPicture);
    EXPECT_FALSE(shade->isVisible());
    EXPECT_FALSE(banner->isVisible());
    shade->show();
    banner->show();
    EXPECT_EQ(shade->geometry(), QRect(0, 36, 392, 724));
    EXPECT_EQ(banner->geometry(), QRect(10, 44, 372, 60));
    content->resize(300, 500);
    fakes.settle();
    EXPECT_EQ(shade->geometry(), QRect(0, 36, 300, 464));
    EXPECT_EQ(banner->geometry(), QRect(10, 44, 280, 60));
}

TEST_F(WindowContentTest, aBannerIsAsHighAsItWantsToBeWheneverThatChanges)
{
    show(*content);
    auto *banner = new Patch(Qt::green, 60);
    content->put(banner, WindowContent::Place::belowHeader);
    // While it is hidden nobody is asked for another layout.
    banner->grow(70);
    banner->show();
    EXPECT_EQ(banner->height(), 70);
    banner->grow(90);
    EXPECT_TRUE(comesTrue(fakes, [banner] { return banner->height() == 90; }));

    auto *label
        = new QLabel(QStringLiteral("many words that don't stand in one line of this window, by far, ").repeated(4));
    label->setWordWrap(true);
    content->put(label, WindowContent::Place::belowHeader);
    label->show();
    EXPECT_EQ(label->width(), 372);
    EXPECT_EQ(label->height(), label->heightForWidth(372));
}

TEST_F(WindowContentTest, aBannerLiesAboveTheShadeWhicheverCameFirstAndTheLaterOneOfAPlaceAboveTheOther)
{
    auto *banner = new Patch(Qt::green);
    auto *firstShade = new Patch(Qt::blue);
    auto *secondShade = new Patch(Qt::red);
    content->put(banner, WindowContent::Place::belowHeader);
    content->put(firstShade, WindowContent::Place::coveringPicture);
    content->put(secondShade, WindowContent::Place::coveringPicture);
    for (auto *overlay : {banner, firstShade, secondShade})
        overlay->show();
    show(*content);
    const auto image = content->grab().toImage();
    const double scale = content->devicePixelRatioF();
    const auto colorAt = [&](double x, double y) { return image.pixelColor((QPointF(x, y) * scale).toPoint()); };
    EXPECT_EQ(colorAt(200, 60), QColor(Qt::green));
    EXPECT_EQ(colorAt(5, 60), QColor(Qt::red));
    EXPECT_EQ(colorAt(200, 500), QColor(Qt::red));
}

TEST_F(WindowContentTest, anOverlayMayGoAtAnyTime)
{
    auto *gone = new Patch(Qt::blue);
    auto *stays = new Patch(Qt::red);
    content->put(gone, WindowContent::Place::coveringPicture);
    content->put(stays, WindowContent::Place::coveringPicture);
    delete gone;
    show(*content);
    content->resize(300, 400);
    fakes.settle();
    content->put(new Patch(Qt::green), WindowContent::Place::belowHeader);
    stays->show();
    EXPECT_EQ(stays->geometry(), QRect(0, 36, 300, 364));
}

TEST_F(WindowContentTest, whatLiesOverThePictureStaysThereWhenTheNextPictureComes)
{
    show(*content);
    showPicture(Qt::red);
    auto *banner = new Patch(Qt::green);
    content->put(banner, WindowContent::Place::belowHeader);
    banner->show();
    fakes.settle();
    showPicture(Qt::yellow);
    const auto shown = content->grab().toImage();
    const double scale = content->devicePixelRatioF();
    EXPECT_EQ(shown.pixelColor((QPointF(200, 60) * scale).toPoint()), QColor(Qt::green));
    EXPECT_EQ(shown.pixelColor((QPointF(200, 500) * scale).toPoint()), QColor(Qt::yellow));
}

TEST_F(WindowContentTest, controlTabLeavesThePictureForTheHeader)
{
    show(*content);
    content->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(content.get()));
    content->videoView().setFocus();
    QTest::keyClick(&content->videoView(), Qt::Key_Tab);
    EXPECT_TRUE(content->videoView().hasFocus());
    QTest::keyClick(&content->videoView(), Qt::Key_Tab, Qt::ControlModifier);
    EXPECT_FALSE(content->videoView().hasFocus());
    EXPECT_TRUE(content->header().isAncestorOf(QApplication::focusWidget()));
}

// Round corners, where the desktop blends windows.

TEST_F(WindowContentTest, theLowerCornersAreRoundWhateverIsPaintedInThem)
{
    QWidget window;
    window.setAttribute(Qt::WA_TranslucentBackground);
    content->setParent(&window);
    content->setGeometry(0, 0, 160, 160);
    window.resize(160, 160);
    show(window);
    const auto expectRound = [&window](QColor color) {
        const auto grabbed = window.grab().toImage();
        const int right = grabbed.width() - 1;
        const int bottom = grabbed.height() - 1;
        EXPECT_EQ(qAlpha(grabbed.pixel(0, bottom)), 0);
        EXPECT_EQ(qAlpha(grabbed.pixel(right, bottom)), 0);
        EXPECT_EQ(qAlpha(grabbed.pixel(0, grabbed.height() / 2)), 255);
        EXPECT_EQ(qAlpha(grabbed.pixel(right, grabbed.height() / 2)), 255);
        EXPECT_EQ(qAlpha(grabbed.pixel(grabbed.width() / 2, bottom)), 255);
        EXPECT_EQ(grabbed.pixelColor(grabbed.rect().center()), color);
        // Just inside the roundness.
        const double scale = grabbed.devicePixelRatio();
        EXPECT_EQ(grabbed.pixelColor((QPointF(5, 155) * scale).toPoint()), color);
    };
    showPicture(Qt::red);
    expectRound(Qt::red);
    // As they are with the next picture.
    showPicture(Qt::yellow);
    expectRound(Qt::yellow);
    auto *shade = new Patch(Qt::blue);
    content->put(shade, WindowContent::Place::coveringPicture);
    shade->show();
    fakes.settle();
    expectRound(Qt::blue);
    content->setParent(nullptr);
}

TEST_F(WindowContentTest, aWindowThatNothingShowsThroughHasSquareCorners)
{
    show(*content);
    showPicture(Qt::red);
    const auto grabbed = content->grab().toImage();
    EXPECT_EQ(grabbed.pixelColor(0, grabbed.height() - 1), QColor(Qt::red));
    EXPECT_EQ(grabbed.pixelColor(grabbed.width() - 1, grabbed.height() - 1), QColor(Qt::red));
}

TEST_F(WindowContentTest, aPressInACornerIsThePictures)
{
    QWidget window;
    window.setAttribute(Qt::WA_TranslucentBackground);
    content->setParent(&window);
    content->setGeometry(0, 0, 160, 160);
    window.resize(160, 160);
    show(window);
    EXPECT_EQ(window.childAt(3, 157), &content->videoView());
    content->setParent(nullptr);
}
