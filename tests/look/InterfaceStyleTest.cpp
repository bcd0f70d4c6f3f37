#include "look/InterfaceStyle.h"
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
        return menu.grab().toImage();
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

INSTANTIATE_TEST_SUITE_P(LightAndDark, InterfaceStyleTest, ::testing::Bool());
