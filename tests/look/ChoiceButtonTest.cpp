#include "look/ChoiceButton.h"

#include "KitFixture.h"

#include <QPainter>

using namespace quillnest;

namespace
{
class ChoiceButtonTest : public KitFixture
{
protected:
    static void fill(QPainter &painter, const QRectF &area) { painter.fillRect(area, Qt::darkGreen); }
    ChoiceButton &add(const char *name, int x)
    {
        return put(new ChoiceButton(look, QLatin1String(name), fill), QRect(x, 20, 80, 76));
    }
};
} // namespace

TEST_F(ChoiceButtonTest, theChosenOneHasATickAndTheKeyboardsARingAroundItsNameAsWell)
{
    auto &plain = add("Plain", 20);
    auto &chosen = add("Plain", 120);
    auto &focused = add("Plain", 220);
    chosen.setChecked(true);
    show();
    focus(focused);
    const auto accent = look.colors.controlAccent;
    // On the sample's corner, beside the white of the tick.
    const QRect tick(60, 40, 14, 14);
    const QRect edge(20, 74, 40, 2);
    EXPECT_EQ(count(picture(plain), accent), 0);
    EXPECT_GT(count(picture(chosen), accent, tick), 30);
    EXPECT_EQ(count(picture(chosen), accent, edge), 0);
    EXPECT_EQ(count(picture(focused), accent, tick), 0);
    EXPECT_EQ(count(picture(focused), accent, edge), 80);
    EXPECT_EQ(count(picture(focused), accent, QRect(8, 6, 64, 46)), 0) << "the sample itself is not marked";
}

TEST_F(ChoiceButtonTest, oneOfAGroupIsChosenByClickReturnOrTheArrows)
{
    auto &first = add("First", 20);
    auto &second = add("Second", 120);
    first.setChecked(true);
    show();
    QTest::mouseClick(&second, Qt::LeftButton);
    EXPECT_TRUE(second.isChecked());
    EXPECT_FALSE(first.isChecked());
    first.setFocus(Qt::TabFocusReason);
    QTest::keyClick(&first, Qt::Key_Return);
    EXPECT_TRUE(first.isChecked());
    EXPECT_EQ(access(first)->role(), QAccessible::RadioButton);
    EXPECT_TRUE(access(first)->state().checked);
    EXPECT_FALSE(access(second)->state().checked);
}

TEST_F(ChoiceButtonTest, aLongNameStaysInside)
{
    auto &choice = add("Choose a photo that is long", 20);
    show();
    const auto image = picture(choice);
    EXPECT_EQ(count(image, look.colors.windowBackground, QRect(0, 54, 2, 22)), 44);
    EXPECT_EQ(count(image, look.colors.windowBackground, QRect(78, 54, 2, 22)), 44);
}
