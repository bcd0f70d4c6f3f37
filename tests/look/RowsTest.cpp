#include "KitFixture.h"
#include "look/Card.h"
#include "look/FieldRow.h"
#include "look/Footnote.h"
#include "look/PopUpPicker.h"
#include "look/PushButton.h"
#include "look/SettingRow.h"
#include "look/ThemeColors.h"

#include <QVBoxLayout>

using namespace quillnest;

namespace
{
class RowsTest : public KitFixture
{
protected:
    /// Where ink of a colour stands.
    static QRect inkOf(const QImage &image, const QColor &color)
    {
        QRect area;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (image.pixel(x, y) == color.rgb())
                    area |= QRect(x, y, 1, 1);
            }
        }
        return area;
    }
};

const QString longWords
    = QStringLiteral("Start Android when the popup opens, so that apps open faster than they otherwise would");
} // namespace

TEST_F(RowsTest, aSwitchIsTurnedByClickReturnAndSpace)
{
    auto &row = put(new SettingRow(look, QStringLiteral("One app at a time")), QRect(20, 20, 350, 0));
    show();
    int changes = 0;
    QObject::connect(&row, &QAbstractButton::clicked, &window, [&] { ++changes; });
    const auto onPixels = [&] { return count(picture(row), look.colors.controlAccent); };
    EXPECT_EQ(onPixels(), 0);
    QTest::mouseClick(&row, Qt::LeftButton, {}, QPoint(30, 10));
    EXPECT_TRUE(row.isChecked());
    EXPECT_GT(onPixels(), 150);
    QTest::keyClick(&row, Qt::Key_Return);
    EXPECT_FALSE(row.isChecked());
    QTest::keyClick(&row, Qt::Key_Space);
    EXPECT_TRUE(row.isChecked());
    EXPECT_EQ(changes, 3);
    EXPECT_EQ(access(row)->role(), QAccessible::CheckBox);
    EXPECT_TRUE(access(row)->state().checked);
    EXPECT_EQ(access(row)->text(QAccessible::Name), QStringLiteral("One app at a time"));
}

TEST_F(RowsTest, theKeyboardsRingTouchesNeitherTheWordsNorTheSwitch)
{
    for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        auto &row = put(new SettingRow(look, QStringLiteral("WWWWWW")), QRect(20, 20, 350, 0));
        row.setLayoutDirection(direction);
        if (!window.isVisible())
            show();
        const auto calm = picture(row);
        focus(row);
        const auto image = picture(row);
        const auto inside = row.rect().adjusted(4, 4, -4, -4);
        EXPECT_EQ(image.copy(inside), calm.copy(inside)) << direction;
        EXPECT_NE(image, calm);
        const auto words = inkOf(image, look.colors.label);
        EXPECT_TRUE(inside.adjusted(2, 2, -2, -2).contains(words)) << direction;
        delete &row;
    }
}

TEST_F(RowsTest, theSwitchStandsAtTheEndOfTheLineAndOnIsTowardsIt)
{
    auto &row = put(new SettingRow(look, QStringLiteral("MMM")), QRect(20, 20, 350, 0));
    row.setChecked(true);
    show();
    auto image = picture(row);
    EXPECT_GT(inkOf(image, look.colors.controlAccent).left(), 300);
    EXPECT_LT(inkOf(image, look.colors.label).right(), 80);
    EXPECT_EQ(image.pixelColor(328, row.height() / 2), QColor(Qt::white)) << "the knob";
    EXPECT_EQ(image.pixelColor(311, row.height() / 2), look.colors.controlAccent);
    row.setLayoutDirection(Qt::RightToLeft);
    image = picture(row);
    EXPECT_LT(inkOf(image, look.colors.controlAccent).right(), 50);
    EXPECT_GT(inkOf(image, look.colors.label).left(), 270);
    EXPECT_EQ(image.pixelColor(21, row.height() / 2), QColor(Qt::white));
}

TEST_F(RowsTest, longWordsTakeAsManyLinesAsTheyNeed)
{
    const SettingRow row(look, longWords);
    EXPECT_EQ(SettingRow(look, QStringLiteral("Short")).heightForWidth(350), 36);
    EXPECT_GT(row.heightForWidth(250), row.heightForWidth(500));
    EXPECT_GT(row.heightForWidth(150), row.heightForWidth(250));
    auto &shown = put(new SettingRow(look, longWords), QRect(20, 20, 200, 0));
    show();
    const auto words = inkOf(picture(shown), look.colors.label);
    EXPECT_GE(words.top(), 4);
    EXPECT_LE(words.bottom(), shown.height() - 4);
    EXPECT_LT(words.right(), 200 - SettingRow::inset - 34) << "not under the switch";
}

TEST_F(RowsTest, aDisabledSwitchIsThinned)
{
    auto &row = put(new SettingRow(look, QStringLiteral("MMM")), QRect(20, 20, 350, 0));
    row.setChecked(true);
    row.setEnabled(false);
    show();
    EXPECT_EQ(count(picture(row), look.colors.controlAccent), 0);
    EXPECT_EQ(count(picture(row), look.colors.label), 0);
    QTest::mouseClick(&row, Qt::LeftButton);
    EXPECT_TRUE(row.isChecked());
}

TEST_F(RowsTest, aFieldRowHasItsControlAtTheEndAndGivesItItsWordsForAName)
{
    auto *picker = new PopUpPicker(look, {});
    picker->setEntries({{QStringLiteral("Never"), 0}, {QStringLiteral("After 5 minutes"), 5}});
    picker->setCurrent(5);
    auto &row = put(new FieldRow(look, QStringLiteral("MMM"), picker), QRect(20, 20, 350, 0));
    show();
    EXPECT_EQ(picker->accessibleName(), QStringLiteral("MMM"));
    EXPECT_EQ(picker->width(), picker->sizeHint().width());
    EXPECT_EQ(picker->geometry().right() + 1, 350 - SettingRow::inset);
    EXPECT_NEAR(picker->geometry().center().y(), row.height() / 2, 1);
    auto image = picture(row);
    EXPECT_GE(inkOf(image.copy(0, 0, picker->x(), row.height()), look.colors.label).left(), SettingRow::inset);
    row.setLayoutDirection(Qt::RightToLeft);
    EXPECT_EQ(picker->x(), SettingRow::inset);
    image = picture(row);
    const int beyond = picker->geometry().right() + 1;
    EXPECT_GT(count(image, look.colors.label, QRect(beyond, 0, 350 - beyond, row.height())), 10);
    row.setEnabled(false);
    EXPECT_EQ(count(picture(row), look.colors.label), 0) << "with its control";
}

TEST_F(RowsTest, aWideControlLeavesTheWordsTheirRoom)
{
    auto *picker = new PopUpPicker(look, QStringLiteral("List"));
    picker->setEntries({{QString(60, u'M'), 0}});
    picker->setCurrent(0);
    auto &row = put(new FieldRow(look, longWords, picker), QRect(20, 20, 300, 0));
    show();
    EXPECT_EQ(picker->accessibleName(), QStringLiteral("List"));
    EXPECT_LT(picker->width(), picker->sizeHint().width());
    EXPECT_GE(picker->x(), SettingRow::inset + 72);
    EXPECT_GT(row.height(), 60) << "the words go on below";
}

TEST_F(RowsTest, aFootnoteIsSmallQuietAndWraps)
{
    auto &note = put(new Footnote(look, longWords), QRect(20, 20, 200, 0));
    auto &warning = put(new Footnote(look, QStringLiteral("MMMM"), Footnote::Tone::attention), QRect(20, 200, 200, 0));
    show();
    EXPECT_EQ(note.font().pixelSize(), 11);
    EXPECT_GT(note.heightForWidth(200), 2 * note.fontMetrics().height());
    EXPECT_GT(count(picture(note), look.colors.secondaryLabel), 100);
    EXPECT_GT(count(picture(warning), QuillnestTheme::ember()), 20);
    EXPECT_LT(inkOf(picture(warning), QuillnestTheme::ember()).right(), 60);
    warning.setLayoutDirection(Qt::RightToLeft);
    EXPECT_GT(inkOf(picture(warning), QuillnestTheme::ember()).left(), 140);
    EXPECT_EQ(access(note)->role(), QAccessible::StaticText);
    EXPECT_EQ(access(note)->text(QAccessible::Name), longWords);
    note.setWords(QStringLiteral("Other"));
    EXPECT_EQ(access(note)->text(QAccessible::Name), QStringLiteral("Other"));
    EXPECT_LT(note.heightForWidth(200), 2 * note.fontMetrics().height());
}

TEST_F(RowsTest, aCardIsARoundedSurfaceWithItsTitleAboveItsContent)
{
    auto &card = put(new Card(look, QStringLiteral("MMMM")), QRect(20, 20, 300, 120));
    auto *inside = new QWidget(&card);
    card.content().addWidget(inside);
    show();
    auto image = picture(card);
    EXPECT_EQ(image.pixelColor(1, 1), look.colors.windowBackground) << "the corner is cut";
    EXPECT_EQ(image.pixelColor(150, 60), look.colors.tile);
    const auto title = inkOf(image, look.colors.secondaryLabel);
    EXPECT_GE(title.top(), 14);
    EXPECT_LT(title.bottom(), inside->y());
    EXPECT_EQ(title.left(), std::clamp(title.left(), 14, 17));
    EXPECT_EQ(inside->x(), 14);
    card.setSymbol(QStringLiteral("bell"));
    symbols->asked.clear();
    image = picture(card);
    EXPECT_EQ(symbols->asked, QStringList{QStringLiteral("bell")});
    card.setLayoutDirection(Qt::RightToLeft);
    EXPECT_GT(inkOf(picture(card), look.colors.secondaryLabel).left(), 200);
    EXPECT_EQ(access(card)->role(), QAccessible::Grouping);
    EXPECT_EQ(access(card)->text(QAccessible::Name), QStringLiteral("MMMM"));
}

TEST_F(RowsTest, aCardWithoutATitleGivesItsRoomToTheContentAndAnyFormIsPossible)
{
    auto &card
        = put(new Card(look, {}, {.radius = 22, .padding = 16, .spacing = 10}, nullptr), QRect(20, 20, 300, 120));
    auto *inside = new QWidget(&card);
    card.content().addWidget(inside);
    show();
    picture(card);
    EXPECT_EQ(inside->geometry().topLeft(), QPoint(16, 16));
    EXPECT_EQ(picture(card).pixelColor(4, 4), look.colors.windowBackground);
    look = look.onWallpaper();
    const auto image = picture(card);
    EXPECT_EQ(image.pixelColor(150, 1), image.pixelColor(150, 60)) << "no outline on a picture";
}
