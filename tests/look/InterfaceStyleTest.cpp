#include "look/InterfaceStyle.h"
#include "fakes/InPoints.h"
#include "look/Fonts.h"

#include "look/Palette.h"

#include <QMenu>

#include <gtest/gtest.h>

using namespace quillnest;

namespace
{

class InterfaceStyleTest : public ::testing::TestWithParam<bool>
{
protected:
    InterfaceStyleTest()
    {
        menu.setStyle(&style);
        menu.setPalette(colors.toolkitPalette());
        menu.setFont(interfaceFont(13));
    }

    QImage picture()
    {
        menu.adjustSize();
        return inPoints(menu.grab());
    }

    int pixelsOf(const QColor &color, const QImage &image, QRect area) const
    {
        const double scale = image.devicePixelRatio();
        int count = 0;
        for (int y = qRound(area.top() * scale); y <= qRound(area.bottom() * scale); ++y) {
            for (int x = qRound(area.left() * scale); x <= qRound(area.right() * scale); ++x)
                count += image.pixelColor(x, y) == color ? 1 : 0;
        }
        return count;
    }

    InterfaceStyle style;
    Palette colors = GetParam() ? Palette::dark() : Palette::light();
    QMenu menu;
};

} // namespace

TEST_P(InterfaceStyleTest, aCheckedItemHasATickAndAnUncheckedOneNothing)
{
    auto *action = menu.addAction(QStringLiteral("Tall"));
    action->setCheckable(true);
    const auto column = [this, action] {
        const auto row = menu.actionGeometry(action);
        return QRect(row.left() + 8, row.top() + 2, 16, row.height() - 4);
    };
    auto image = picture();
    EXPECT_EQ(pixelsOf(colors.label, image, column()), 0);
    action->setChecked(true);
    image = picture();
    EXPECT_GT(pixelsOf(colors.label, image, column()), 4);
}

TEST_P(InterfaceStyleTest, theItemUnderThePointerIsHighlightedWithRoundedEnds)
{
    auto *action = menu.addAction(QStringLiteral("Tall"));
    menu.addAction(QStringLiteral("Wide"));
    picture();
    menu.setActiveAction(action);
    const auto image = picture();
    const auto row = menu.actionGeometry(action);
    EXPECT_GT(pixelsOf(colors.controlAccent, image, row), row.width() * row.height() / 2);
    EXPECT_EQ(image.pixelColor((row.topLeft() + QPoint(5, 1)) * image.devicePixelRatio()), colors.field);
}

TEST_P(InterfaceStyleTest, aDisabledItemIsPaleAndNeverHighlighted)
{
    auto *action = menu.addAction(QStringLiteral("Custom"));
    action->setEnabled(false);
    picture();
    menu.setActiveAction(action);
    const auto image = picture();
    const auto row = menu.actionGeometry(action);
    EXPECT_EQ(pixelsOf(colors.controlAccent, image, row), 0);
    EXPECT_EQ(pixelsOf(colors.label, image, row), 0);
    EXPECT_GT(pixelsOf(colors.tertiaryLabel, image, row), 4);
}

TEST_P(InterfaceStyleTest, theWidestItemFits)
{
    menu.addAction(QStringLiteral("A"));
    auto *wide = menu.addAction(QStringLiteral("Extra Large — 440 × 920"));
    picture();
    EXPECT_GE(menu.actionGeometry(wide).width(), QFontMetrics(menu.font()).horizontalAdvance(wide->text()) + 28);
}

TEST_P(InterfaceStyleTest, anEntryThatOpensAMenuIsHighlightedLikeTheOthersAndHasAChevron)
{
    auto *plain = menu.addAction(QStringLiteral("Tall"));
    auto *sizes = menu.addMenu(QStringLiteral("Tall"))->menuAction();
    const auto end = [this](QAction *action) {
        const auto row = menu.actionGeometry(action);
        return QRect(row.right() - 18, row.top() + 2, 14, row.height() - 4);
    };
    auto image = picture();
    EXPECT_EQ(pixelsOf(colors.label, image, end(plain)), 0);
    EXPECT_GT(pixelsOf(colors.label, image, end(sizes)), 2);
    menu.setActiveAction(sizes);
    image = picture();
    const auto row = menu.actionGeometry(sizes);
    EXPECT_GT(pixelsOf(colors.controlAccent, image, row), row.width() * row.height() / 2);
    EXPECT_EQ(image.pixelColor((row.topLeft() + QPoint(5, 1)) * image.devicePixelRatio()), colors.field) << "round";
}

TEST_P(InterfaceStyleTest, fromRightToLeftTheTickIsOnTheRight)
{
    auto *action = menu.addAction(QStringLiteral("Tall"));
    menu.addAction(QStringLiteral("A much longer one"));
    action->setCheckable(true);
    action->setChecked(true);
    menu.setLayoutDirection(Qt::RightToLeft);
    const auto image = picture();
    const auto row = menu.actionGeometry(action);
    EXPECT_GT(pixelsOf(colors.label, image, QRect(row.right() - 24, row.top() + 2, 18, row.height() - 4)), 4);
    EXPECT_EQ(pixelsOf(colors.label, image, QRect(row.left(), row.top(), 40, row.height())), 0);
    const QRect words(row.right() - 60, row.top(), 32, row.height());
    EXPECT_LT(pixelsOf(colors.field, image, words), words.width() * words.height()) << "beside its words";
}

INSTANTIATE_TEST_SUITE_P(LightAndDark, InterfaceStyleTest, ::testing::Bool());
