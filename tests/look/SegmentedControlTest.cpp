#include "look/SegmentedControl.h"

#include "KitFixture.h"
#include "look/Segment.h"

#include <QSignalSpy>

using namespace quillnest;

namespace
{
class SegmentedControlTest : public KitFixture
{
protected:
    SegmentedControlTest()
    {
        show();
        // The first layout has been worked out.
        fakes.settle();
    }
    void press(Qt::Key key) { QTest::keyClick(QApplication::focusWidget(), key); }
    int checked() const
    {
        int found = -1;
        for (int i = 0; i < pages.count(); ++i) {
            if (pages.segment(i).isChecked())
                found = found < 0 ? i : -2;
        }
        return found;
    }
    QImage pictureOf(int index)
    {
        const auto area = pages.segment(index).geometry().translated(pages.pos());
        return inPoints(window.grab(area));
    }

    SegmentedControl &pages = put(
        new SegmentedControl(
            look, QStringLiteral("Page"),
            {{QStringLiteral("General"), QStringLiteral("gearshape")},
             {QStringLiteral("Android"), QStringLiteral("bolt")},
             {QStringLiteral("Updates"), QStringLiteral("arrow")},
             {QStringLiteral("About"), QStringLiteral("info")}}),
        QRect(20, 20, 380, 0));
    QSignalSpy spy{&pages, &SegmentedControl::chosen};
};
} // namespace

TEST_F(SegmentedControlTest, oneIsChosenAndAClickChoosesAnother)
{
    EXPECT_EQ(pages.current(), 0);
    EXPECT_EQ(checked(), 0);
    QTest::mouseClick(&pages.segment(2), Qt::LeftButton);
    EXPECT_EQ(pages.current(), 2);
    EXPECT_EQ(checked(), 2);
    ASSERT_EQ(spy.size(), 1);
    EXPECT_EQ(spy[0][0].toInt(), 2);
    QTest::mouseClick(&pages.segment(2), Qt::LeftButton);
    EXPECT_EQ(checked(), 2) << "it stays chosen";
    EXPECT_EQ(spy.size(), 1);
    pages.setCurrent(1);
    EXPECT_EQ(checked(), 1);
    EXPECT_EQ(spy.size(), 1) << "the program's own choice isn't told";
    pages.setCurrent(4);
    pages.setCurrent(-1);
    EXPECT_EQ(checked(), 1);
}

TEST_F(SegmentedControlTest, theArrowsGoFromOneToTheNextAndStopAtTheEnds)
{
    focus(pages.segment(0));
    press(Qt::Key_Right);
    EXPECT_EQ(checked(), 1);
    EXPECT_TRUE(pages.segment(1).hasFocus());
    press(Qt::Key_Left);
    press(Qt::Key_Left);
    EXPECT_EQ(checked(), 0);
    press(Qt::Key_End);
    EXPECT_EQ(checked(), 3);
    press(Qt::Key_Right);
    EXPECT_EQ(checked(), 3);
    press(Qt::Key_Home);
    EXPECT_EQ(checked(), 0);
    EXPECT_EQ(spy.size(), 4);
}

TEST_F(SegmentedControlTest, aDisabledPageIsPassedOver)
{
    pages.setPageEnabled(1, false);
    pages.setPageEnabled(3, false);
    focus(pages.segment(0));
    press(Qt::Key_Right);
    EXPECT_EQ(checked(), 2);
    press(Qt::Key_Right);
    EXPECT_EQ(checked(), 2);
    press(Qt::Key_Left);
    EXPECT_EQ(checked(), 0);
    press(Qt::Key_End);
    EXPECT_EQ(checked(), 2);
    QTest::mouseClick(&pages.segment(1), Qt::LeftButton);
    EXPECT_EQ(checked(), 2);
}

TEST_F(SegmentedControlTest, fromRightToLeftAllIsMirrored)
{
    pages.setLayoutDirection(Qt::RightToLeft);
    fakes.settle();
    EXPECT_GT(pages.segment(0).x(), pages.segment(3).x());
    focus(pages.segment(0));
    press(Qt::Key_Left);
    EXPECT_EQ(checked(), 1);
    press(Qt::Key_Right);
    EXPECT_EQ(checked(), 0);
    press(Qt::Key_End);
    EXPECT_EQ(checked(), 3);
}

TEST_F(SegmentedControlTest, itIsOneStopOfTheTabKey)
{
    pages.setCurrent(2);
    for (int i = 0; i < pages.count(); ++i)
        EXPECT_EQ(bool(pages.segment(i).focusPolicy() & Qt::TabFocus), i == 2) << i;
}

TEST_F(SegmentedControlTest, theChosenOneStandsOutAndTheSymbolsAreAboveTheTitles)
{
    for (const bool dark : {false, true}) {
        setDark(dark);
        pages.setCurrent(1);
        const auto corner = [&](int index) { return pictureOf(index).pixelColor(8, 22); };
        EXPECT_EQ(corner(0), corner(2));
        EXPECT_GT(corner(1).lightness(), corner(0).lightness()) << dark;
        const auto image = pictureOf(1);
        EXPECT_EQ(image.pixelColor(image.width() / 2, 14), look.colors.controlAccent) << "the symbol";
        EXPECT_GT(count(image, look.colors.label, QRect(0, 24, image.width(), 18)), 10);
        EXPECT_EQ(count(image, look.colors.label, QRect(0, 0, image.width(), 23)), 0);
        EXPECT_EQ(count(pictureOf(2), look.colors.label), 0) << "the others are quiet";
    }
}

TEST_F(SegmentedControlTest, allAreOfOneWidthOrAsWideAsTheirTitles)
{
    for (int i = 1; i < pages.count(); ++i)
        EXPECT_NEAR(pages.segment(i).width(), pages.segment(0).width(), 1);
    pages.resize(pages.minimumSizeHint().width(), pages.height());
    fakes.settle();
    for (int i = 0; i < pages.count(); ++i) {
        const auto &segment = pages.segment(i);
        EXPECT_GE(segment.width(), segment.fontMetrics().horizontalAdvance(segment.name())) << i;
    }
}

TEST_F(SegmentedControlTest, screenReadersSeeTabs)
{
    pages.setCurrent(1);
    auto *list = access(pages);
    EXPECT_EQ(list->role(), QAccessible::PageTabList);
    EXPECT_EQ(list->text(QAccessible::Name), QStringLiteral("Page"));
    ASSERT_EQ(list->childCount(), 4);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(list->child(i)->role(), QAccessible::PageTab);
        EXPECT_EQ(list->child(i)->text(QAccessible::Name), pages.segment(i).name());
        EXPECT_EQ(bool(list->child(i)->state().selected), i == 1) << i;
        EXPECT_TRUE(list->child(i)->state().selectable);
    }
    list->child(3)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_EQ(pages.current(), 3);
    EXPECT_EQ(spy.size(), 1);
}
