#include "launcher/settings/PanelSettingsPage.h"

#include "PanelFixture.h"
#include "launcher/wallpaper/Wallpaper.h"
#include "look/Footnote.h"
#include "look/Palette.h"
#include "look/SettingRow.h"

#include <QDir>

using namespace quillnest;

namespace
{
class PanelSettingsPageTest : public PanelFixture
{
protected:
    PanelSettingsPageTest()
    {
        // The fixture has its own wish; here the defaults count.
        fakes.settings->remove(QStringLiteral("QuillnestSingleApp"));
        panel->setShowSettings(true);
    }
    QAbstractButton &row(const char *words) const
    {
        auto *found = button(QString::fromUtf8(words));
        if (!found)
            throw std::runtime_error("no such row");
        return *found;
    }
    QVariant value(const char *key) const { return fakes.settings->value(QLatin1String(key)); }
    QAbstractButton &login() const
    {
        const auto words = QStringLiteral("Open Quillnest when the %1 starts").arg(fakes.platform.profile.machineWord);
        return row(words.toUtf8().constData());
    }
    QString error() const
    {
        const auto *note = part<Footnote>();
        return note->isVisible() ? note->words() : QString();
    }
};

struct Switch {
    const char *words;
    const char *key;
};
constexpr Switch switches[]{
    {"One app at a time", "QuillnestSingleApp"},
    {"Start Android when the Quillnest popup opens (apps open faster)", "QuillnestPrewarm"},
    {"Block ads and trackers in all Android apps", "QuillnestAdBlock"},
};
} // namespace

TEST_F(PanelSettingsPageTest, eachSwitchTurnsItsOwnSettingAndNoOther)
{
    for (const auto &one : switches) {
        EXPECT_TRUE(row(one.words).isChecked()) << one.words << ": on unless told otherwise";
        EXPECT_FALSE(value(one.key).isValid()) << one.key;
    }
    for (const auto &one : switches) {
        QTest::mouseClick(&row(one.words), Qt::LeftButton);
        EXPECT_EQ(value(one.key), QVariant(false)) << one.key;
        for (const auto &other : switches)
            EXPECT_EQ(row(other.words).isChecked(), &other != &one) << one.words << " and " << other.words;
        QTest::keyClick(&row(one.words), Qt::Key_Return);
        EXPECT_EQ(value(one.key), QVariant(true)) << one.key;
        EXPECT_TRUE(row(one.words).isChecked());
    }
}

TEST_F(PanelSettingsPageTest, aSettingThatIsChangedElsewhereIsShownAtOnce)
{
    for (const auto &one : switches) {
        set(one.key, false);
        EXPECT_FALSE(row(one.words).isChecked()) << one.words;
        set(one.key, true);
        EXPECT_TRUE(row(one.words).isChecked()) << one.words;
    }
    set("QuillnestTheme", QStringLiteral("ios"));
    EXPECT_TRUE(row("iOS style").isChecked());
    EXPECT_FALSE(row("Classic").isChecked());
    set("QuillnestWallpaper", QStringLiteral("forest"));
    EXPECT_TRUE(row("Forest").isChecked());
    EXPECT_FALSE(row("None").isChecked());
}

TEST_F(PanelSettingsPageTest, theLoginRowShowsWhatHoldsWheneverThePageIsOpened)
{
    EXPECT_FALSE(login().isChecked());
    panel->setShowSettings(false);
    fakes.loginItems->set(true);
    panel->setShowSettings(true);
    EXPECT_TRUE(login().isChecked());
    QTest::mouseClick(&login(), Qt::LeftButton);
    EXPECT_EQ(fakes.loginItems->status(), LoginItems::Status::notRegistered);
    EXPECT_FALSE(login().isChecked());
    EXPECT_EQ(error(), QString());
}

TEST_F(PanelSettingsPageTest, aRefusalIsToldUnderTheLoginRowUntilItSucceeds)
{
    fakes.loginItems->failure = QStringLiteral("no such folder");
    QTest::mouseClick(&login(), Qt::LeftButton);
    EXPECT_EQ(error(), QStringLiteral("%1 did not allow this: no such folder").arg(fakes.platform.profile.systemName));
    EXPECT_FALSE(login().isChecked()) << "the real state again";
    fakes.loginItems->failure.reset();
    QTest::mouseClick(&login(), Qt::LeftButton);
    EXPECT_EQ(error(), QString());
    EXPECT_TRUE(login().isChecked());
}

TEST_F(PanelSettingsPageTest, wordsStandInOneLineWithTheHeadingsAndTheRingTouchesNone)
{
    auto &one = row("One app at a time");
    QLabel *heading = nullptr;
    for (auto *label : panel->findChildren<QLabel *>()) {
        if (label->text() == QStringLiteral("General"))
            heading = label;
    }
    ASSERT_TRUE(heading);
    EXPECT_EQ(one.mapTo(panel.get(), QPoint(SettingRow::inset, 0)).x(), heading->mapTo(panel.get(), QPoint()).x());
    EXPECT_EQ(heading->mapTo(panel.get(), QPoint()).x(), 16);
    const auto inside = one.rect().adjusted(SettingRow::inset - 2, 3, 2 - SettingRow::inset, -3);
    one.clearFocus();
    const auto calm = inPoints(one.grab(inside));
    one.setFocus(Qt::TabFocusReason);
    EXPECT_EQ(inPoints(one.grab(inside)), calm);
}

TEST_F(PanelSettingsPageTest, aSampleShowsTheWallpaperAsThePanelWillHaveIt)
{
    for (const bool dark : {false, true}) {
        fakes.appearance->setDark(dark);
        set("QuillnestWallpaper", QStringLiteral("midnight"));
        auto &midnight = row("Midnight");
        const auto sample = inPoints(midnight.grab()).pixelColor(midnight.width() / 2, (midnight.height() - 18) / 2);
        const auto shown = inPoints(panel->grab()).pixelColor(2, panel->height() / 2);
        EXPECT_NEAR(sample.lightness(), shown.lightness(), 25) << dark;
    }
}

TEST_F(PanelSettingsPageTest, theSampleOfNoWallpaperCanBeSeenOnItsOwnGround)
{
    for (const bool dark : {false, true}) {
        fakes.appearance->setDark(dark);
        set("QuillnestWallpaper", QStringLiteral("ocean"));
        set("QuillnestWallpaper", QStringLiteral("none"));
        row("Ocean").setChecked(true);
        auto &none = row("None");
        const auto image = inPoints(none.grab());
        const auto ground = Palette::current(fakes.platform).windowBackground;
        int most = 0;
        for (int y = 0; y < image.height() - 24; ++y)
            most = std::max(most, std::abs(image.pixelColor(none.width() / 2, y).lightness() - ground.lightness()));
        EXPECT_GT(most, 60) << dark;
    }
}

TEST_F(PanelSettingsPageTest, thePhotosSampleIsReadOnceAndInTheBackground)
{
    const auto file = Wallpaper::customFile(fakes.platform.folders);
    QDir().mkpath(QFileInfo(file).path());
    QImage red(64, 48, QImage::Format_RGB32);
    red.fill(Qt::red);
    ASSERT_TRUE(red.save(file, "JPEG"));
    set("QuillnestWallpaper", QStringLiteral("custom"));
    auto &photo = row("My photo");
    const auto middle
        = [&photo] { return inPoints(photo.grab()).pixelColor(photo.width() / 2, (photo.height() - 18) / 2); };
    middle();
    fakes.settle();
    const auto seen = middle();
    EXPECT_GT(seen.red(), seen.blue() + 40);
    // What has been read is shown, whatever happens to the file, until another photo is chosen.
    QFile::remove(file);
    EXPECT_EQ(middle(), seen);
    fakes.settle();
    EXPECT_EQ(middle(), seen);
}
