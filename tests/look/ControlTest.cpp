#include "look/Control.h"

#include "KitFixture.h"
#include "look/PushButton.h"

#include <QPainter>

using namespace quillnest;

namespace
{

/// A control that paints a square of ink in its middle.
class Probe : public Control
{
public:
    Probe(const Look &look, const QString &name) : Control(look, name, nullptr) { setFocusPolicy(Qt::StrongFocus); }
    QSize sizeHint() const override { return {60, 40}; }
    using Control::isHovered;

protected:
    void paint(QPainter &painter) override
    {
        paintWash(painter, rect(), 4);
        painter.fillRect(QRect(25, 15, 10, 10), Qt::black);
    }
};

class ControlTest : public KitFixture
{
protected:
    ControlTest()
    {
        QObject::connect(&probe, &QAbstractButton::clicked, &window, [this] { ++presses; });
        show();
    }
    QColor ink() { return picture(probe).pixelColor(30, 20); }
    QColor ground() { return picture(probe).pixelColor(10, 20); }

    Probe &probe = put(new Probe(look, QStringLiteral("Salt & Pepper")));
    int presses = 0;
};

} // namespace

TEST_F(ControlTest, returnEnterAndSpacePressItAndAHeldKeyPressesOnce)
{
    focus(probe);
    QTest::keyClick(&probe, Qt::Key_Return);
    EXPECT_EQ(presses, 1);
    QTest::keyClick(&probe, Qt::Key_Enter);
    EXPECT_EQ(presses, 2);
    QTest::keyClick(&probe, Qt::Key_Space);
    EXPECT_EQ(presses, 3);
    QKeyEvent held(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"), true);
    QApplication::sendEvent(&probe, &held);
    EXPECT_EQ(presses, 3);
    QTest::keyClick(&probe, Qt::Key_A);
    EXPECT_EQ(presses, 3);
}

TEST_F(ControlTest, aGroundComesUpUnderThePointerAndDarkensUnderAPress)
{
    const auto calm = ground();
    EXPECT_EQ(calm, look.colors.windowBackground);
    pointAt(probe);
    EXPECT_TRUE(probe.isHovered());
    const auto hovered = ground();
    EXPECT_LT(hovered.lightness(), calm.lightness());
    QTest::mousePress(&probe, Qt::LeftButton);
    EXPECT_LT(ground().lightness(), hovered.lightness());
    QTest::mouseRelease(&probe, Qt::LeftButton);
    EXPECT_EQ(presses, 1);
    movePointer(QPoint(300, 300));
    EXPECT_EQ(ground(), calm);
}

TEST_F(ControlTest, aPressThatLeavesItIsNone)
{
    QTest::mousePress(&probe, Qt::LeftButton);
    QTest::mouseMove(&probe, QPoint(200, 200));
    QTest::mouseRelease(&probe, Qt::LeftButton, {}, QPoint(200, 200));
    EXPECT_EQ(presses, 0);
}

TEST_F(ControlTest, theKeyboardsPlaceIsARingInsideItsEdge)
{
    EXPECT_EQ(count(picture(probe), look.colors.controlAccent), 0);
    const auto calm = picture(probe);
    focus(probe);
    const auto image = picture(probe);
    EXPECT_EQ(image.pixelColor(30, 0), look.colors.controlAccent);
    EXPECT_EQ(image.pixelColor(30, 1), look.colors.controlAccent);
    EXPECT_EQ(image.pixelColor(30, 2), look.colors.windowBackground);
    EXPECT_EQ(image.pixelColor(0, 20), look.colors.controlAccent);
    EXPECT_EQ(difference(calm, image), image.rect());
    window.setFocus();
    EXPECT_EQ(picture(probe), calm);
}

TEST_F(ControlTest, aDisabledOneIsThinnedAndTakesNothing)
{
    focus(probe);
    EXPECT_EQ(ink(), QColor(Qt::black));
    probe.setEnabled(false);
    EXPECT_NEAR(ink().lightness(), look.colors.windowBackground.lightness() * (1 - disabledOpacity), 3);
    EXPECT_EQ(count(picture(probe), look.colors.controlAccent), 0) << "no ring";
    pointAt(probe);
    EXPECT_FALSE(probe.isHovered());
    EXPECT_EQ(ground(), look.colors.windowBackground);
    QTest::mouseClick(&probe, Qt::LeftButton);
    QTest::keyClick(&probe, Qt::Key_Return);
    EXPECT_EQ(presses, 0);
    EXPECT_TRUE(access(probe)->state().disabled);
}

TEST_F(ControlTest, screenReadersLearnItsNameItsRoleAndHowToPressIt)
{
    auto *item = access(probe);
    EXPECT_EQ(item->text(QAccessible::Name), QStringLiteral("Salt & Pepper"));
    EXPECT_EQ(item->role(), QAccessible::Button);
    item->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_TRUE(QTest::qWaitFor([this] { return presses == 1; })) << "the toolkit shows the press first";
    probe.setName(QStringLiteral("Mustard"));
    EXPECT_EQ(item->text(QAccessible::Name), QStringLiteral("Mustard"));
}

TEST_F(ControlTest, anAmpersandMarksNoKey)
{
    QTest::keyClick(&window, Qt::Key_P, Qt::AltModifier);
    EXPECT_EQ(presses, 0);
}
