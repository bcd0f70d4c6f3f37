#include "KitFixture.h"
#include "look/HeaderIconButton.h"
#include "look/PushButton.h"

#include <QTextDocument>

using namespace quillnest;

namespace
{
class ButtonsTest : public KitFixture, public ::testing::WithParamInterface<bool>
{
protected:
    ButtonsTest() { setDark(GetParam()); }
};

/// How strongly two opaque colours stand off from each other, from 1 to 21.
double contrast(const QColor &a, const QColor &b)
{
    const auto luminance = [](const QColor &color) {
        const auto linear
            = [](double part) { return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4); };
        return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
    };
    const double first = luminance(a);
    const double second = luminance(b);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}
} // namespace

TEST_P(ButtonsTest, aPlainButtonHasItsTitleInTheLabelsColourAndADestructiveOneInItsOwn)
{
    const auto &plain = put(new PushButton(look, QStringLiteral("HHHH")));
    const auto &destructive
        = put(new PushButton(look, QStringLiteral("HHHH"), PushButton::Kind::destructive), QRect(20, 80, 0, 0));
    show();
    EXPECT_GT(count(picture(plain), look.colors.label), 20);
    EXPECT_EQ(count(picture(plain), look.colors.destructive), 0);
    EXPECT_GT(count(picture(destructive), look.colors.destructive), 20);
    EXPECT_EQ(count(picture(destructive), look.colors.label), 0);
    EXPECT_EQ(picture(plain).pixelColor(6, 15), look.colors.field);
}

TEST_P(ButtonsTest, theProminentOneIsFilledAndItsRingIsNotOfItsColour)
{
    auto &button = put(new PushButton(look, QStringLiteral("Go"), PushButton::Kind::prominent));
    show();
    const auto calm = picture(button);
    EXPECT_EQ(calm.pixelColor(6, 15), look.colors.controlAccent);
    pointAt(button);
    EXPECT_GT(picture(button).pixelColor(6, 15).lightness(), calm.pixelColor(6, 15).lightness());
    button.setDown(true);
    EXPECT_LT(picture(button).pixelColor(6, 15).lightness(), calm.pixelColor(6, 15).lightness());
    button.setDown(false);
    focus(button);
    EXPECT_EQ(picture(button).pixelColor(button.width() / 2, 0), look.colors.label);
}

TEST_P(ButtonsTest, aTitleFitsWhateverItHolds)
{
    auto &button = put(new PushButton(look, QStringLiteral("Accept & Download")));
    show();
    const auto metrics = button.fontMetrics();
    EXPECT_GE(button.width(), metrics.horizontalAdvance(QStringLiteral("Accept & Download")) + 20);
    EXPECT_EQ(access(button)->text(QAccessible::Name), QStringLiteral("Accept & Download"));
}

TEST_P(ButtonsTest, aSymbolIsQuietUntilThePointerComesOrItIsAccented)
{
    auto &button = put(new SymbolButton(look, QStringLiteral("pin"), QStringLiteral("Pin")));
    show();
    const auto color = [&] { return picture(button).pixelColor(11, 14); };
    EXPECT_EQ(button.size(), QSize(22, 28));
    EXPECT_EQ(color(), look.colors.secondaryLabel);
    pointAt(button);
    EXPECT_EQ(color(), look.colors.label);
    button.setSymbol(QStringLiteral("pin.fill"), true);
    symbols->asked.clear();
    EXPECT_EQ(color(), look.colors.controlAccent);
    EXPECT_EQ(symbols->asked, QStringList{QStringLiteral("pin.fill")});
    button.setEnabled(false);
    EXPECT_NE(color(), look.colors.controlAccent);
}

TEST_P(ButtonsTest, theSymbolsGroundIsASquareInTheMiddle)
{
    auto &slim = put(new SymbolButton(look, QStringLiteral("pin"), QStringLiteral("Pin")));
    auto &wide = put(new HeaderIconButton(look, QStringLiteral("plus"), QStringLiteral("Add")), QRect(80, 20, 0, 0));
    show();
    const auto slimCalm = picture(slim);
    pointAt(slim);
    EXPECT_EQ(difference(slimCalm, picture(slim)), QRect(0, 3, 22, 22));
    const auto wideCalm = picture(wide);
    pointAt(wide);
    EXPECT_EQ(difference(wideCalm, picture(wide)), QRect(0, 0, 28, 28));
    focus(slim);
    EXPECT_EQ(difference(slimCalm, picture(slim)), QRect(0, 3, 22, 22)) << "and the ring goes around it";
}

TEST_P(ButtonsTest, aToolTipIsShownAsItIsWritten)
{
    const SymbolButton button(look, QStringLiteral("pin"), QStringLiteral("Show <i>Fish</i> & Chips"));
    QTextDocument shown;
    shown.setHtml(button.toolTip());
    EXPECT_EQ(shown.toPlainText(), QStringLiteral("Show <i>Fish</i> & Chips"));
    const SymbolButton plain(look, QStringLiteral("pin"), QStringLiteral("Fish & Chips"));
    EXPECT_EQ(plain.toolTip(), QStringLiteral("Fish & Chips"));
}

TEST_P(ButtonsTest, wordsCanBeReadOnEveryGround)
{
    const auto &colors = look.colors;
    for (const auto &ground : {colors.windowBackground, colors.tile, colors.field, colors.headerBackground}) {
        EXPECT_GT(contrast(colors.label, ground), 7);
        EXPECT_GT(contrast(colors.secondaryLabel, ground), 4.5);
        EXPECT_GT(contrast(colors.destructive, ground), 4.5);
        EXPECT_GT(contrast(colors.controlAccent, ground), 3) << "what is no more than a mark";
    }
}

INSTANTIATE_TEST_SUITE_P(LightAndDark, ButtonsTest, ::testing::Bool());
