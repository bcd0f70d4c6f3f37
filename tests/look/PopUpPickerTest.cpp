#include "look/PopUpPicker.h"

#include "KitFixture.h"

#include <QMenu>
#include <QSignalSpy>

using namespace quillnest;

namespace
{
class PopUpPickerTest : public KitFixture
{
protected:
    PopUpPickerTest()
    {
        picker.setEntries(
            {{QStringLiteral("After 5 minutes"), 5},
             {QStringLiteral("After 15 minutes"), 15},
             {QStringLiteral("Now & then"), 30, false},
             {QStringLiteral("Never"), 0}});
        picker.setCurrent(15);
        picker.resize(picker.sizeHint());
        show();
    }
    ~PopUpPickerTest() override
    {
        if (picker.menu())
            picker.menu()->close();
    }
    void open()
    {
        QTest::mouseClick(&picker, Qt::LeftButton);
        ASSERT_TRUE(picker.menu());
        ASSERT_TRUE(QTest::qWaitForWindowExposed(picker.menu()));
    }
    void press(Qt::Key key) { QTest::keyClick(QApplication::activePopupWidget(), key); }
    QStringList picked() const
    {
        QStringList values;
        for (const auto &call : spy)
            values.append(call.at(0).toString());
        return values;
    }

    PopUpPicker &picker = put(new PopUpPicker(look, QStringLiteral("Stop Android")), QRect(150, 150, 0, 0));
    QSignalSpy spy{&picker, &PopUpPicker::picked};
};
} // namespace

TEST_F(PopUpPickerTest, aClickOffersAllValuesWithATickAtTheOneThatHolds)
{
    EXPECT_EQ(picker.currentTitle(), QStringLiteral("After 15 minutes"));
    open();
    const auto actions = picker.menu()->actions();
    ASSERT_EQ(actions.size(), 4);
    EXPECT_EQ(actions[0]->text(), QStringLiteral("After 5 minutes"));
    EXPECT_EQ(actions[2]->text(), QStringLiteral("Now && then"));
    EXPECT_FALSE(actions[2]->isEnabled());
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(actions[i]->isChecked(), i == 1) << i;
    EXPECT_TRUE(picker.isDown());
    const auto entry = picker.menu()->actionGeometry(actions[1]);
    const auto place = QRect(picker.menu()->mapToGlobal(entry.topLeft()), entry.size());
    const auto button = QRect(picker.mapToGlobal(QPoint()), picker.size());
    EXPECT_NEAR(place.center().y(), button.center().y(), 2) << "its own entry lies over it";
    EXPECT_EQ(place.left(), button.left());
    EXPECT_GE(picker.menu()->width(), picker.width());
}

TEST_F(PopUpPickerTest, aClickOnAnEntryChoosesIt)
{
    open();
    QTest::mouseClick(
        picker.menu(), Qt::LeftButton, {}, picker.menu()->actionGeometry(picker.menu()->actions()[3]).center());
    EXPECT_EQ(picked(), QStringList{QStringLiteral("0")});
    EXPECT_EQ(picker.current(), QVariant(0));
    EXPECT_EQ(picker.currentTitle(), QStringLiteral("Never"));
    EXPECT_FALSE(picker.isDown());
}

TEST_F(PopUpPickerTest, anArrowOpensItAndOnlyReturnChoosesWhereTheArrowsWent)
{
    for (const auto key : {Qt::Key_Down, Qt::Key_Up, Qt::Key_Return, Qt::Key_Space}) {
        focus(picker);
        QTest::keyClick(&picker, key);
        ASSERT_TRUE(picker.menu()) << key;
        EXPECT_EQ(picker.current(), QVariant(15)) << key;
        press(Qt::Key_Down);
        EXPECT_EQ(picker.current(), QVariant(15)) << key;
        press(Qt::Key_Escape);
        EXPECT_FALSE(picker.menu() && picker.menu()->isVisible()) << key;
        EXPECT_FALSE(picker.isDown()) << key;
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    EXPECT_TRUE(spy.isEmpty());
    QTest::keyClick(&picker, Qt::Key_Down);
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    EXPECT_EQ(picked(), QStringList{QStringLiteral("0")}) << "past the one that is disabled";
    QTest::keyClick(&picker, Qt::Key_Down);
    press(Qt::Key_Up);
    press(Qt::Key_Return);
    EXPECT_EQ(picked().last(), QStringLiteral("15"));
}

TEST_F(PopUpPickerTest, neitherTheProgramNorTheSameValueIsAChoice)
{
    picker.setCurrent(5);
    EXPECT_EQ(picker.currentTitle(), QStringLiteral("After 5 minutes"));
    open();
    press(Qt::Key_Return);
    EXPECT_TRUE(spy.isEmpty());
    picker.setCurrent(99);
    EXPECT_EQ(picker.currentTitle(), QString());
    open();
    for (const auto *action : picker.menu()->actions())
        EXPECT_FALSE(action->isChecked());
}

TEST_F(PopUpPickerTest, itsMenuGoesWithIt)
{
    open();
    const QPointer<QMenu> menu = picker.menu();
    picker.hide();
    EXPECT_FALSE(menu && menu->isVisible());
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
}

TEST_F(PopUpPickerTest, aDisabledOneOpensNothing)
{
    picker.setEnabled(false);
    QTest::mouseClick(&picker, Qt::LeftButton);
    QTest::keyClick(&picker, Qt::Key_Down);
    EXPECT_FALSE(picker.menu());
    EXPECT_EQ(count(picture(picker), look.colors.label), 0);
    EXPECT_FALSE(
        access(picker)->actionInterface()->actionNames().contains(QAccessibleActionInterface::showMenuAction()));
}

TEST_F(PopUpPickerTest, itsWidestValueFitsAndItsArrowsStandAtTheEnd)
{
    const auto image = picture(picker);
    const int arrows = picker.width() - 20;
    EXPECT_GT(count(image, look.colors.label, QRect(0, 0, arrows, 30)), 30);
    EXPECT_EQ(count(image, look.colors.label, QRect(arrows, 0, 20, 30)), 0);
    EXPECT_GT(count(image, look.colors.secondaryLabel, QRect(arrows, 0, 20, 30)), 2);
    picker.setLayoutDirection(Qt::RightToLeft);
    const auto mirrored = picture(picker);
    EXPECT_GT(count(mirrored, look.colors.secondaryLabel, QRect(0, 0, 20, 30)), 2);
    EXPECT_EQ(count(mirrored, look.colors.label, QRect(0, 0, 20, 30)), 0);
    open();
    EXPECT_EQ(
        picker.menu()->mapToGlobal(QPoint(picker.menu()->width(), 0)).x(),
        picker.mapToGlobal(QPoint(picker.width(), 0)).x());
}

TEST_F(PopUpPickerTest, screenReadersLearnItsValueAndOpenIt)
{
    auto *item = access(picker);
    EXPECT_EQ(item->role(), QAccessible::ComboBox);
    EXPECT_EQ(item->text(QAccessible::Name), QStringLiteral("Stop Android"));
    EXPECT_EQ(item->text(QAccessible::Value), QStringLiteral("After 15 minutes"));
    EXPECT_TRUE(item->state().hasPopup);
    EXPECT_TRUE(item->state().collapsed);
    EXPECT_TRUE(item->state().focusable);
    item->actionInterface()->doAction(QAccessibleActionInterface::showMenuAction());
    ASSERT_TRUE(picker.menu());
    EXPECT_TRUE(item->state().expanded);
}
