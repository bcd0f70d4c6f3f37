#include "KitFixture.h"
#include "look/ElidedLabel.h"
#include "look/LiveLook.h"
#include "look/PlainWords.h"
#include "look/ProgressBar.h"
#include "look/SlimScrollBar.h"
#include "look/Spinner.h"

#include <QScrollArea>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTextDocument>

using namespace quillnest;
using namespace std::chrono_literals;

namespace
{
class IndicatorsTest : public KitFixture
{
};
} // namespace

TEST_F(IndicatorsTest, aSpinnerTurnsWhileItCanBeSeenAndOnlyThen)
{
    auto &spinner = put(new Spinner(look, 24));
    const auto still = fakes.clock->pending();
    show();
    EXPECT_EQ(fakes.clock->pending(), still + 1);
    const auto first = picture(spinner);
    EXPECT_EQ(picture(spinner), first) << "it turns with the clock alone";
    fakes.clock->advance(225ms);
    const auto quarter = picture(spinner);
    EXPECT_NE(quarter, first);
    fakes.clock->advance(675ms);
    EXPECT_EQ(picture(spinner), first) << "once around";
    spinner.hide();
    EXPECT_EQ(fakes.clock->pending(), still);
}

TEST_F(IndicatorsTest, aProgressBarIsFilledFromTheStartOfTheLine)
{
    auto &bar = put(new ProgressBar(look), QRect(20, 20, 200, 6));
    show();
    const auto filled = [&](int x) { return picture(bar).pixelColor(x, 3) == look.colors.controlAccent; };
    EXPECT_FALSE(filled(1));
    bar.setFraction(0.25);
    EXPECT_TRUE(filled(40));
    EXPECT_FALSE(filled(60));
    bar.setLayoutDirection(Qt::RightToLeft);
    EXPECT_TRUE(filled(160));
    EXPECT_FALSE(filled(140));
    bar.setFraction(7);
    EXPECT_TRUE(filled(4));
    bar.setFraction(-1);
    EXPECT_FALSE(filled(195));
    EXPECT_EQ(access(bar)->role(), QAccessible::ProgressBar);
}

TEST_F(IndicatorsTest, theScrollBarIsThereWhenThereIsMoreThanFitsAndFollowsThePointer)
{
    auto &area = put(new QScrollArea, QRect(20, 20, 200, 200));
    area.setFrameShape(QFrame::NoFrame);
    area.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area.setWidgetResizable(true);
    auto *content = new QWidget;
    area.setWidget(content);
    auto &bar = *new SlimScrollBar(area, look);
    show();
    EXPECT_FALSE(bar.isVisible());
    content->setMinimumHeight(800);
    fakes.settle();
    ASSERT_TRUE(bar.isVisible());
    EXPECT_EQ(bar.geometry(), QRect(190, 0, 10, 200));
    auto &scrolled = *area.verticalScrollBar();
    QTest::mouseClick(&bar, Qt::LeftButton, {}, QPoint(5, 180));
    EXPECT_EQ(scrolled.value(), scrolled.pageStep()) << "below the thumb: a page";
    QTest::mouseClick(&bar, Qt::LeftButton, {}, QPoint(5, 3));
    EXPECT_EQ(scrolled.value(), 0);
    // The thumb is a quarter of the room.
    QTest::mousePress(&bar, Qt::LeftButton, {}, QPoint(5, 10));
    QTest::mouseMove(&bar, QPoint(5, 10 + 147));
    EXPECT_EQ(scrolled.value(), scrolled.maximum());
    QTest::mouseRelease(&bar, Qt::LeftButton, {}, QPoint(5, 157));
    area.setLayoutDirection(Qt::RightToLeft);
    area.resize(210, 200);
    EXPECT_EQ(bar.x(), 0);
}

TEST_F(IndicatorsTest, aLongLineEndsInAnEllipsis)
{
    auto &label = put(new ElidedLabel(QStringLiteral("WWWWWWWWWWWWWWWWWWWW")), QRect(20, 20, 100, 20));
    show();
    const auto image = picture(label);
    label.setText(QStringLiteral("WWWWWWWWWWWWWWWWWWWWWWWWWWWWWW"));
    EXPECT_EQ(picture(label), image) << "what doesn't fit isn't there";
    EXPECT_LE(label.minimumSizeHint().width(), 20);
}

TEST_F(IndicatorsTest, aLiveLookFollowsTheDesktop)
{
    LiveLook live(fakes.platform);
    QSignalSpy spy(&live, &LiveLook::changed);
    EXPECT_FALSE(live.isDark);
    EXPECT_EQ(live.colors.label, Palette::light().label);
    fakes.appearance->setDark(true);
    EXPECT_EQ(spy.size(), 1);
    EXPECT_TRUE(live.isDark);
    EXPECT_EQ(live.colors.label, Palette::dark().label);
    EXPECT_EQ(live.platform, &fakes.platform);
}

TEST_F(IndicatorsTest, onAPictureWhatIsQuietIsThinnedAndSurfacesLetItThrough)
{
    for (const bool dark : {false, true}) {
        setDark(dark);
        const auto on = look.onWallpaper();
        EXPECT_TRUE(on.hasWallpaper);
        EXPECT_FALSE(look.hasWallpaper);
        EXPECT_EQ(on.isDark, dark);
        EXPECT_EQ(on.colors.label, look.colors.label);
        EXPECT_EQ(on.colors.secondaryLabel.rgb(), look.colors.label.rgb());
        EXPECT_LT(on.colors.secondaryLabel.alpha(), 255);
        EXPECT_LT(on.colors.tertiaryLabel.alpha(), on.colors.secondaryLabel.alpha());
        EXPECT_LT(on.colors.tile.alpha(), 150);
        EXPECT_GT(on.colors.pressed.alpha(), on.colors.hover.alpha());
    }
}

TEST(PlainWords, areShownAsTheyAreWritten)
{
    EXPECT_EQ(plainToolTip(QStringLiteral("Fish & Chips")), QStringLiteral("Fish & Chips"));
    for (const auto *words : {"<b>bold", "a <script>x</script>", "1 &lt; 2", "<!-- x"}) {
        const auto text = QLatin1String(words);
        QTextDocument shown;
        const auto tip = plainToolTip(text);
        ASSERT_TRUE(Qt::mightBeRichText(tip) || tip == text) << words;
        if (Qt::mightBeRichText(tip)) {
            shown.setHtml(tip);
            EXPECT_EQ(shown.toPlainText(), text) << words;
        }
    }
    EXPECT_EQ(plainMenuTitle(QStringLiteral("Fish & Chips")), QStringLiteral("Fish && Chips"));
}
