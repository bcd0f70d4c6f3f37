#include "launcher/grid/AppTile.h"

#include "PanelFixture.h"
#include "look/Spinner.h"

#include <QAccessible>
#include <QHelpEvent>
#include <QTextDocument>
#include <QToolTip>

using namespace quillnest;

namespace
{
class AppTileTest : public LivePanelFixture
{
protected:
    QString tip(const QString &name) { return grid().tile(indexOf(name)).toolTip(*services); }
    void openMenuOf(const QString &name)
    {
        QContextMenuEvent event(QContextMenuEvent::Mouse, grid().tileRect(indexOf(name)).center(), QPoint(200, 200));
        QApplication::sendEvent(&grid(), &event);
    }
};
} // namespace

TEST_F(AppTileTest, theToolTipNamesTheAppAndPromisesNoKey)
{
    addApp(QStringLiteral("Moon"));
    EXPECT_EQ(tip(QStringLiteral("Moon")), QStringLiteral("Open Moon"));
    set("QuillnestAppShortcuts", true);
    EXPECT_EQ(tip(QStringLiteral("Moon")), QStringLiteral("Open Moon"));
}

TEST_F(AppTileTest, aNameInAToolTipIsShownAsItIsWritten)
{
    addApp(QStringLiteral("Fish & Chips"));
    addApp(QStringLiteral("<b>Bold</b>"));
    const auto shownTip = [this](const char *name) {
        const auto middle = grid().tileRect(indexOf(QLatin1String(name))).center();
        QHelpEvent help(QEvent::ToolTip, middle, grid().mapToGlobal(middle));
        QApplication::sendEvent(&grid(), &help);
        const auto text = QToolTip::text();
        QToolTip::hideText();
        return text;
    };
    EXPECT_EQ(shownTip("Fish & Chips"), QStringLiteral("Open Fish & Chips"));
    QTextDocument document;
    document.setHtml(shownTip("<b>Bold</b>"));
    EXPECT_EQ(document.toPlainText(), QStringLiteral("Open <b>Bold</b>"));
}

TEST_F(AppTileTest, aRunningAppIsShownAndMarkedBelowItsNameAsLongAsItRuns)
{
    deviceIsUp();
    deviceCleaned.finish();
    const auto moon = addApp(QStringLiteral("Moon"));
    const auto isMarked = [this] {
        const auto tile = look(QStringLiteral("Moon"));
        return tile.pixel(tile.width() / 2, tile.height() - 5) == QuillnestTheme::jade().rgb();
    };
    EXPECT_FALSE(isMarked());
    open(moon);
    ASSERT_TRUE(waitFor([this] { return !store->launchingAppID(); }));
    EXPECT_TRUE(isMarked());
    EXPECT_EQ(tip(QStringLiteral("Moon")), QStringLiteral("Show Moon"));
    registry->closeAll();
    EXPECT_TRUE(waitFor([this] { return registry->sessions().empty(); }));
    EXPECT_FALSE(isMarked());
}

TEST_F(AppTileTest, aLaunchDarkensTheIconUnderASpinner)
{
    QImage red(96, 96, QImage::Format_RGB32);
    red.fill(QColor(200, 100, 50));
    packageIcons["Moon"] = red;
    const auto moon = addApp(QStringLiteral("Moon"));
    addApp(QStringLiteral("Star"));
    const auto inIcon = [this] {
        const auto tile = look(QStringLiteral("Moon"));
        return tile.pixelColor(tile.width() / 2 - 22, 8 + 27);
    };
    const auto spins = [this] {
        for (const auto *spinner : grid().findChildren<Spinner *>()) {
            if (spinner->isVisible())
                return true;
        }
        return false;
    };
    look(QStringLiteral("Moon"));
    EXPECT_EQ(inIcon(), QColor(200, 100, 50));
    EXPECT_FALSE(spins());
    const auto star = look(QStringLiteral("Star"));
    const auto still = fakes.clock->pending();
    store->launch(moon);
    EXPECT_NEAR(inIcon().red(), 130, 2);
    EXPECT_NEAR(inIcon().green(), 65, 2);
    EXPECT_TRUE(spins());
    EXPECT_EQ(look(QStringLiteral("Star")), star);
    EXPECT_GT(fakes.clock->pending(), still);
}

TEST_F(AppTileTest, unreadNotificationsAreADotOnTheIconsCorner)
{
    const auto moon = addApp(QStringLiteral("Moon"));
    const auto dots = [this] {
        const auto tile = look(QStringLiteral("Moon"));
        int count = 0;
        for (int y = 0; y < tile.height(); ++y) {
            for (int x = 0; x < tile.width(); ++x)
                count += tile.pixel(x, y) == QuillnestTheme::ember().rgb();
        }
        return count;
    };
    EXPECT_EQ(dots(), 0);
    registry->setUnread(moon.id, true);
    // The stroke of two points lies half inside the ten.
    EXPECT_NEAR(dots(), 50, 20);
    registry->setUnread(moon.id, false);
    EXPECT_EQ(dots(), 0);
}

TEST_F(AppTileTest, aFailedStartIsMarkedAndToldUntilTheNextSuccess)
{
    deviceIsUp();
    deviceCleaned.finish();
    const auto moon = addApp(QStringLiteral("Moon"));
    const auto reds = [this] {
        const auto tile = look(QStringLiteral("Moon"));
        int count = 0;
        for (int y = 0; y < tile.height(); ++y) {
            for (int x = 0; x < tile.width(); ++x)
                count += tile.pixelColor(x, y) == QColor(0xC9271B);
        }
        return count;
    };
    EXPECT_EQ(reds(), 0);
    QFile::remove(moon.sourcePath);
    store->launch(moon);
    fakes.runUntil([this] { return !store->launchingAppID(); });
    EXPECT_NEAR(reds(), 110, 50);
    EXPECT_TRUE(tip(QStringLiteral("Moon"))
                    .startsWith(QStringLiteral("Open Moon\nDid not start last time: The app's file "
                                               "is gone.")))
        << tip(QStringLiteral("Moon")).toStdString();
    auto *cell = QAccessible::queryAccessibleInterface(&grid())->child(0);
    EXPECT_EQ(cell->text(QAccessible::Description), QStringLiteral("Did not start last time"));
    fakes.writeFile(QStringLiteral("Apps/Moon.apk"), "content");
    open(moon);
    ASSERT_TRUE(waitFor([this] { return !store->launchingAppID(); }));
    EXPECT_EQ(reds(), 0);
    EXPECT_EQ(tip(QStringLiteral("Moon")), QStringLiteral("Show Moon"));
    registry->closeAll();
    EXPECT_TRUE(waitFor([this] { return registry->sessions().empty(); }));
}

TEST_F(AppTileTest, aLockedAppWearsALockAndSaysWhatThatMeans)
{
    packageIcons["Moon"] = QImage(96, 96, QImage::Format_RGB32);
    packageIcons["Moon"].fill(Qt::red);
    const auto moon = addApp(QStringLiteral("Moon"));
    look(QStringLiteral("Moon"));
    const auto open = look(QStringLiteral("Moon"));
    locks->locked.insert(moon.id);
    Q_EMIT store->launchingAppChanged();
    const auto locked = look(QStringLiteral("Moon"));
    const auto icon = AppTile::iconArea(QRectF(open.rect()));
    for (int y = 0; y < open.height(); ++y) {
        for (int x = 0; x < open.width(); ++x) {
            if (open.pixel(x, y) != locked.pixel(x, y)) {
                EXPECT_TRUE(QRectF(icon.left() - 4, icon.bottom() - 18, 22, 22).contains(x, y)) << x << "," << y;
            }
        }
    }
    EXPECT_NE(open, locked);
    EXPECT_EQ(tip(QStringLiteral("Moon")), QStringLiteral("Open Moon\nLocked: asks who you are before it opens"));
}

TEST_F(AppTileTest, aDesktopWithoutAFileManagerSaysWhereTheFileIs)
{
    const auto moon = addApp(QStringLiteral("Moon"));
    fakes.fileManager->isThere = false;
    openMenuOf(QStringLiteral("Moon"));
    choose(openMenu(), QStringLiteral("Show APK in Files"));
    EXPECT_EQ(
        store->statusMessage(),
        QStringLiteral("There is no program that shows files. The APK is %1").arg(moon.sourcePath));
}

TEST_F(AppTileTest, anAppForAnotherPlatformWearsABadge)
{
    const auto iosPath = fakes.writeFile(QStringLiteral("Apps/Moon.ipa"), "x");
    add({iosPath});
    const auto badged = look(QStringLiteral("Moon"));
    store->remove(store->apps().front());
    addApp(QStringLiteral("Moon"));
    EXPECT_NE(look(QStringLiteral("Moon")), badged);
}

TEST_F(AppTileTest, theContextMenuOffersWhatCanBeDoneNow)
{
    addApp(QStringLiteral("Moon"));
    openMenuOf(QStringLiteral("Moon"));
    ASSERT_NE(openMenu(), nullptr);
    EXPECT_EQ(
        entries(openMenu()).join(u'|'),
        QStringLiteral("Open|Add to favourites|Show APK in Files|Remove from Quillnest|Uninstall from Android…"));
    choose(openMenu(), QStringLiteral("Add to favourites"));
    EXPECT_TRUE(store->apps().front().isFavorite);
    openMenuOf(QStringLiteral("Moon"));
    EXPECT_EQ(entries(openMenu()).at(1), QStringLiteral("Remove from favourites"));
    choose(openMenu(), QStringLiteral("Show APK in Files"));
    EXPECT_EQ(fakes.fileManager->revealed, QStringList{store->apps().front().sourcePath});
    openMenuOf(QStringLiteral("Moon"));
    choose(openMenu(), QStringLiteral("Open"));
    EXPECT_EQ(store->launchingAppID(), store->apps().front().id);
    openMenuOf(QStringLiteral("Moon"));
    choose(openMenu(), QStringLiteral("Uninstall from Android…"));
    ASSERT_EQ(fakes.alerts->asked.size(), 1U);
    openMenuOf(QStringLiteral("Moon"));
    choose(openMenu(), QStringLiteral("Remove from Quillnest"));
    EXPECT_TRUE(store->apps().empty());
}

TEST_F(AppTileTest, theContextMenuOfARunningAppShowsAndClosesIt)
{
    deviceIsUp();
    deviceCleaned.finish();
    open(addApp(QStringLiteral("Moon")));
    ASSERT_TRUE(waitFor([this] { return !store->launchingAppID(); }));
    openMenuOf(QStringLiteral("Moon"));
    EXPECT_EQ(entries(openMenu()).mid(0, 2).join(u'|'), QStringLiteral("Show|Close"));
    choose(openMenu(), QStringLiteral("Close"));
    EXPECT_TRUE(waitFor([this] { return registry->sessions().empty(); }));
}

TEST_F(AppTileTest, aTileShowsItsIconAsSoonAsItIsThere)
{
    QImage red(96, 96, QImage::Format_RGB32);
    red.fill(QColor(0xC01020));
    packageIcons["Moon"] = red;
    addApp(QStringLiteral("Moon"));
    addApp(QStringLiteral("Star"));
    look(QStringLiteral("Moon"));
    const auto middle = [this](const char *name) {
        const auto tile = look(QLatin1String(name));
        return tile.pixelColor(tile.width() / 2, 8 + 12);
    };
    EXPECT_EQ(middle("Moon"), QColor(0xC01020));
    EXPECT_NE(middle("Star"), QColor(0xC01020));
}

TEST_F(AppTileTest, namesOfAnyKindArePaintedWithinTheirTile)
{
    for (const auto *name :
         {"Interplanetary Weather Station Deluxe", "😀", "تطبيق الطقس", "天気予報と地図のアプリケーション"})
        addApp(QString::fromUtf8(name));
    for (const auto *style : {"classic", "oneui", "ios", "pixel"}) {
        set("QuillnestTheme", QLatin1String(style));
        for (int i = 0; i < grid().count(); ++i) {
            const auto area = grid().tileRect(i);
            const auto tile = inPoints(grid().grab(area));
            for (int y = 66; y < tile.height(); ++y) {
                EXPECT_GT(qGray(tile.pixel(1, y)), 200) << style << i;
                EXPECT_GT(qGray(tile.pixel(tile.width() - 2, y)), 200) << style << i;
            }
        }
    }
}
