#include "launcher/MenuPanel.h"

#include "PanelFixture.h"
#include "launcher/DropOverlay.h"
#include "launcher/EmptyState.h"
#include "launcher/GreetingHeader.h"
#include "launcher/QuillDock.h"
#include "launcher/SearchField.h"
#include "launcher/StatusPill.h"
#include "look/Palette.h"
#include "look/PlainWords.h"

#include <QDropEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QPaintEvent>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>

#include <algorithm>
#include <cmath>
#include <set>

using namespace quillnest;
using namespace std::chrono_literals;

namespace
{
/// What of a widget has been painted.
class PaintedArea : public QObject
{
public:
    explicit PaintedArea(QWidget &widget) { widget.installEventFilter(this); }
    QRegion region;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            region += static_cast<QPaintEvent *>(event)->region();
        return false;
    }
};

class MenuPanelTest : public PanelFixture
{
protected:
    QString status() const
    {
        for (const auto *label : panel->findChildren<QLabel *>()) {
            if (label->toolTip() == plainToolTip(store->statusMessage()) && label->isVisibleTo(panel.get()))
                return label->text();
        }
        return {};
    }
    void drop(const QList<QUrl> &urls)
    {
        QMimeData data;
        data.setUrls(urls);
        // The toolkit lets nothing drop that has not come in.
        QDragEnterEvent enter(QPoint(50, 300), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(panel.get(), &enter);
        QDropEvent event(QPointF(50, 300), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(panel.get(), &event);
        fakes.settle();
    }
};
} // namespace

TEST_F(MenuPanelTest, allAppsStandByTheNamesThatAreShownAndFavouritesAboveThemAsWell)
{
    for (const auto *label : {"Moon 2.1", "apple", "Zebra", "Banana"})
        addApp(QString::fromUtf8(label));
    EXPECT_EQ(shown().join(u' '), QStringLiteral("[All apps] apple Banana Moon Zebra"));
    store->toggleFavorite(*store->firstMatch(QStringLiteral("zebra")));
    store->toggleFavorite(*store->firstMatch(QStringLiteral("banana")));
    EXPECT_EQ(shown().join(u' '), QStringLiteral("[Favourites] Banana Zebra [All apps] apple Banana Moon Zebra"));
}

TEST_F(MenuPanelTest, theIosStyleHasNoHeadingsButThatOfASearch)
{
    set("QuillnestTheme", QStringLiteral("ios"));
    store->toggleFavorite(addApp(QStringLiteral("Moon")));
    addApp(QStringLiteral("Star"));
    EXPECT_EQ(shown().join(u' '), QStringLiteral("Moon Moon Star"));
    store->setSearch(QStringLiteral("o"));
    EXPECT_EQ(shown().join(u' '), QStringLiteral("[Results] Moon"));
}

TEST_F(MenuPanelTest, aSearchHidesTheFavouritesAndShowsWhatMatches)
{
    store->toggleFavorite(addApp(QStringLiteral("Moon")));
    addApp(QStringLiteral("Star"));
    store->setSearch(QStringLiteral("MO"));
    EXPECT_EQ(shown().join(u' '), QStringLiteral("[Results] Moon"));
    store->setSearch(QStringLiteral("x"));
    EXPECT_TRUE(shown().isEmpty());
    EXPECT_TRUE(shows(QStringLiteral("Nothing matches “x”")));
    ASSERT_EQ(grid().headings().size(), 1U);
    EXPECT_EQ(grid().headings()[0].text, QStringLiteral("Results"));
    EXPECT_TRUE(grid().isVisible());
    store->setSearch({});
    EXPECT_EQ(shown().join(u' '), QStringLiteral("[Favourites] Moon [All apps] Moon Star"));
    EXPECT_FALSE(shows(QStringLiteral("Nothing matches “”")));
}

TEST_F(MenuPanelTest, anEmptyLibrarySaysHowToFillItWhateverTheSearchHolds)
{
    EXPECT_TRUE(part<EmptyState>()->isVisible());
    EXPECT_TRUE(shows(QStringLiteral("Add your first app")));
    EXPECT_TRUE(shows(QStringLiteral("Drop an APK file here, or choose one.\nIt opens in its own small window.")));
    store->setSearch(QStringLiteral("x"));
    EXPECT_TRUE(part<EmptyState>()->isVisible());
    EXPECT_FALSE(shows(QStringLiteral("Nothing matches “x”")));
    EXPECT_TRUE(shown().isEmpty());
    store->setSearch({});
    const auto app = addApp(QStringLiteral("Moon"));
    EXPECT_FALSE(part<EmptyState>()->isVisible());
    store->remove(app);
    EXPECT_TRUE(part<EmptyState>()->isVisible());
}

TEST_F(MenuPanelTest, columnsFollowTheWidthFromThreeToSix)
{
    EXPECT_EQ(AppGrid::columns(100), 3);
    EXPECT_EQ(AppGrid::columns(279), 3);
    EXPECT_EQ(AppGrid::columns(280), 3);
    EXPECT_EQ(AppGrid::columns(359), 3);
    EXPECT_EQ(AppGrid::columns(360), 4);
    EXPECT_EQ(AppGrid::columns(390), 4);
    EXPECT_EQ(AppGrid::columns(549), 6);
    EXPECT_EQ(AppGrid::columns(527), 5);
    EXPECT_EQ(AppGrid::columns(528), 6);
    EXPECT_EQ(AppGrid::columns(550), 6);
    EXPECT_EQ(AppGrid::columns(2000), 6);
}

TEST_F(MenuPanelTest, theRowsFollowThePanelsWidthAndNoTileReachesBeyondIt)
{
    for (int i = 0; i < 8; ++i)
        addApp(QStringLiteral("App%1").arg(QChar(u'a' + i)));
    for (const auto &[width, count] : {std::pair(390, 4), std::pair(280, 3), std::pair(760, 6)}) {
        panel->resize(width, 420);
        EXPECT_EQ(perRow(), count);
        for (int i = 0; i < grid().count(); ++i) {
            const auto area = grid().tileRect(i);
            EXPECT_GE(area.left(), 0);
            EXPECT_LE(grid().mapTo(panel.get(), area.topRight()).x(), width);
        }
    }
}

TEST_F(MenuPanelTest, aClickOpensTheAppAndADragOffItsTileDoesNot)
{
    const auto moon = addApp(QStringLiteral("Moon"));
    const auto star = addApp(QStringLiteral("Star"));
    click(1);
    EXPECT_EQ(store->launchingAppID(), star.id);
    QTest::mousePress(&grid(), Qt::LeftButton, {}, grid().tileRect(0).center());
    QTest::mouseRelease(&grid(), Qt::LeftButton, {}, grid().tileRect(1).center());
    EXPECT_EQ(store->launchingAppID(), star.id);
    click(0);
    EXPECT_EQ(store->launchingAppID(), moon.id);
}

TEST_F(MenuPanelTest, aPressThatOutlivesTheTilesOpensNothing)
{
    addApp(QStringLiteral("Moon"));
    QTest::mousePress(&grid(), Qt::LeftButton, {}, grid().tileRect(0).center());
    // Now another app stands where the pointer is.
    addApp(QStringLiteral("Apple"));
    ASSERT_EQ(names().first(), QStringLiteral("Apple"));
    QTest::mouseRelease(&grid(), Qt::LeftButton, {}, grid().tileRect(0).center());
    EXPECT_FALSE(store->launchingAppID());
}

TEST_F(MenuPanelTest, eachDroppedFileIsAddedByItselfSoTheLastOutcomeIsTold)
{
    const auto moon = putPackage(QStringLiteral("Apps/moon.apk"), "org.example.moon", "Moon");
    const auto star = putPackage(QStringLiteral("Apps/star.apk"), "org.example.star", "Star");
    drop(
        {QUrl::fromLocalFile(moon), QUrl::fromLocalFile(star), QUrl(),
         QUrl::fromLocalFile(fakes.writeFile(QStringLiteral("notes.txt"), ""))});
    EXPECT_EQ(names().join(u' '), QStringLiteral("Moon Star"));
    EXPECT_FALSE(store->statusMessage().isEmpty());
    drop({QUrl::fromLocalFile(moon)});
    EXPECT_EQ(status(), QStringLiteral("Already in library: Moon"));
}

TEST_F(MenuPanelTest, filesThatAreHeldOverItBringUpTheOverlayUntilTheyGo)
{
    const auto *overlay = part<DropOverlay>();
    QMimeData files;
    files.setUrls({QUrl::fromLocalFile(QStringLiteral("/moon.apk"))});
    QDragEnterEvent enter(QPoint(50, 300), Qt::CopyAction, &files, Qt::LeftButton, Qt::NoModifier);
    enter.ignore();
    QApplication::sendEvent(panel.get(), &enter);
    EXPECT_TRUE(enter.isAccepted());
    EXPECT_TRUE(overlay->isVisible());
    EXPECT_EQ(overlay->size(), panel->size());
    QDragLeaveEvent leave;
    QApplication::sendEvent(panel.get(), &leave);
    EXPECT_FALSE(overlay->isVisible());
    QApplication::sendEvent(panel.get(), &enter);
    drop({QUrl::fromLocalFile(QStringLiteral("/none.txt"))});
    EXPECT_FALSE(overlay->isVisible());
}

TEST_F(MenuPanelTest, whatHoldsNoFilesIsRefused)
{
    QMimeData data;
    data.setText(QStringLiteral("text"));
    QDragEnterEvent enter(QPoint(50, 300), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    enter.ignore();
    QApplication::sendEvent(panel.get(), &enter);
    EXPECT_FALSE(enter.isAccepted());
    EXPECT_FALSE(part<DropOverlay>()->isVisible());
}

TEST_F(MenuPanelTest, packagesAreChosenInAnOpenPanelFromThreePlaces)
{
    const auto path = putPackage(QStringLiteral("Apps/moon.apk"), "org.example.moon", "Moon");
    fakes.filePanels->chosen = {QUrl::fromLocalFile(path)};
    button(QStringLiteral("Choose APK…"))->click();
    ASSERT_EQ(fakes.filePanels->opened.size(), 1U);
    EXPECT_TRUE(fakes.filePanels->opened[0].allowsSeveral);
    EXPECT_EQ(fakes.filePanels->opened[0].extensions, (QStringList{QStringLiteral("apk"), QStringLiteral("ipa")}));
    EXPECT_EQ(names(), QStringList{QStringLiteral("Moon")});
    fakes.filePanels->chosen = {};
    button(QStringLiteral("Add an APK"))->click();
    EXPECT_EQ(fakes.filePanels->opened.size(), 2U);
    button(QStringLiteral("More"))->click();
    choose(openMenu(), QStringLiteral("Add APK…"));
    EXPECT_EQ(fakes.filePanels->opened.size(), 3U);
    EXPECT_EQ(status(), QStringLiteral("Added moon.apk")) << "a user who thinks better of it is told nothing";
}

TEST_F(MenuPanelTest, theMoreMenuOffersWhatStands)
{
    button(QStringLiteral("More"))->click();
    ASSERT_NE(openMenu(), nullptr);
    EXPECT_EQ(
        entries(openMenu()).join(u'|'), QStringLiteral("Settings|Add APK…|Window size|Close all apps|Quit Quillnest"));
    choose(openMenu(), QStringLiteral("Quit Quillnest"));
    EXPECT_EQ(quits, 1);
}

TEST_F(MenuPanelTest, aWindowSizeIsTickedWithinAPointAndSetByItsEntry)
{
    QuillnestLayout::setSize(*fakes.settings, QSizeF(339, 600 + 36 + 1));
    button(QStringLiteral("More"))->click();
    auto *sizes = openMenu()->actions().at(2)->menu();
    ASSERT_NE(sizes, nullptr);
    const auto titles = entries(sizes);
    ASSERT_EQ(titles.size(), 9);
    EXPECT_EQ(titles[0], QStringLiteral("    Widget — 320 × 420"));
    EXPECT_EQ(titles[1], QStringLiteral("✓ Small — 340 × 600"));
    EXPECT_EQ(titles.filter(QStringLiteral("✓")).size(), 1);
    sizes->actions().at(4)->trigger();
    EXPECT_EQ(QuillnestLayout::size(*fakes.settings), QSizeF(390, 876));
    openMenu()->close();
    QuillnestLayout::setSize(*fakes.settings, QSizeF(342, 636));
    button(QStringLiteral("More"))->click();
    EXPECT_TRUE(entries(openMenu()->actions().at(2)->menu()).filter(QStringLiteral("✓")).isEmpty());
    openMenu()->close();
}

TEST_F(MenuPanelTest, theSettingsTakeThePlaceOfTheAppsUntilOneGoesBack)
{
    addApp(QStringLiteral("Moon"));
    button(QStringLiteral("More"))->click();
    choose(openMenu(), QStringLiteral("Settings"));
    EXPECT_TRUE(panel->showsSettings());
    EXPECT_TRUE(shows(QStringLiteral("Settings")));
    EXPECT_FALSE(grid().isVisible());
    button(QStringLiteral("Back to apps"))->click();
    EXPECT_FALSE(panel->showsSettings());
    EXPECT_TRUE(grid().isVisible());
    panel->setShowSettings(true);
    QTest::keyClick(panel.get(), Qt::Key_Escape);
    EXPECT_FALSE(panel->showsSettings());
    EXPECT_TRUE(panel->isVisible());
}

TEST_F(MenuPanelTest, theSetupStandsInPlaceOfDockAndAppsAndTheSearchStays)
{
    QPointer<QWidget> setup;
    makeSetupView = [&setup](QWidget *parent) { return setup = new QWidget(parent); };
    addApp(QStringLiteral("Moon"));
    makePanel();
    EXPECT_FALSE(setup) << "made when it is needed";
    EXPECT_TRUE(grid().isVisible());
    QFile::remove(paths.systemImage());
    store->refreshAndroidState();
    ASSERT_TRUE(setup);
    EXPECT_TRUE(setup->isVisible());
    EXPECT_FALSE(grid().isVisible());
    EXPECT_FALSE(part<QuillDock>()->isVisible());
    EXPECT_TRUE(part<SearchField>()->isVisible());
    EXPECT_TRUE(part<StatusPill>()->isVisible());
    EXPECT_LT(setup->mapTo(panel.get(), QPoint()).y(), 250) << "it keeps to the top";
    fakes.settle();
    EXPECT_EQ(setup->mapTo(panel.get(), QPoint()).x(), 2) << "nearer to the edges than the rest";
    EXPECT_EQ(setup->width(), panel->width() - 4);
    install(35);
    store->refreshAndroidState();
    fakes.settle();
    EXPECT_FALSE(setup->isVisible());
    EXPECT_TRUE(grid().isVisible());
    set("QuillnestShowRuntimeSetup", true);
    EXPECT_TRUE(setup->isVisible());
}

TEST_F(MenuPanelTest, aSnapshotShowsTheAppsAlthoughAndroidIsNotSetUp)
{
    makeSetupView = [](QWidget *parent) { return new QWidget(parent); };
    addApp(QStringLiteral("Moon"));
    QFile::remove(paths.systemImage());
    makePanel();
    EXPECT_TRUE(panel->showSetup());
    MenuPanel picture(*services, MenuPanel::Mode::snapshot);
    EXPECT_FALSE(picture.showSetup());
    const auto image = MenuPanel::snapshot(*services);
    EXPECT_EQ(image.size(), QSize(780, 1520));
    EXPECT_LT(image.pixelColor(390, 1300).lightness(), 80) << "dark, whatever the desktop is";
}

TEST_F(MenuPanelTest, theStatusIsShownOnOneLineAsItIsWrittenAndWholeInItsToolTip)
{
    add({fakes.writeFile(QStringLiteral("Apps/<b>bold<b>.txt"), "")});
    EXPECT_EQ(status(), QStringLiteral("Skipped <b>bold<b>.txt: choose an APK or IPA"));
}

TEST_F(MenuPanelTest, aLineOfTheStatusBuildsNothingAnew)
{
    addApp(QStringLiteral("Moon"));
    grid().setCurrent(0);
    const auto *before = &grid().tile(0);
    add({fakes.writeFile(QStringLiteral("Apps/notes.txt"), "")});
    EXPECT_EQ(&grid().tile(0), before);
    EXPECT_EQ(grid().current(), 0);
}

TEST_F(MenuPanelTest, theTilesInViewAreTold)
{
    for (int i = 0; i < 60; ++i)
        addApp(QStringLiteral("App%1").arg(i, 2, 10, QLatin1Char('0')));
    fakes.settle();
    const auto tiles = panel->placedTiles();
    ASSERT_GT(tiles.size(), 10U);
    EXPECT_LT(tiles.size(), 30U);
    EXPECT_EQ(tiles[0].name, QStringLiteral("App00"));
    EXPECT_EQ(tiles[0].area.topLeft(), grid().mapToGlobal(grid().tileRect(0).topLeft()));
    panel->setShowSettings(true);
    EXPECT_TRUE(panel->placedTiles().empty());
}

TEST_F(MenuPanelTest, picturesThatComeTogetherArePaintedAFewAtATime)
{
    constexpr int count = 12;
    QImage green(64, 64, QImage::Format_ARGB32);
    green.fill(Qt::green);
    for (int i = 0; i < count; ++i) {
        const auto name = QStringLiteral("App%1").arg(i, 2, 10, QLatin1Char('0'));
        packageIcons[name.toStdString()] = green;
        addApp(name);
    }
    fakes.settle();
    auto &tiles = grid();
    const auto isGreen = [&](const QImage &picture, int index) {
        return picture.pixelColor(tiles.tileRect(index).center() - QPoint(0, 12)) == QColor(Qt::green);
    };
    const auto painted = inPoints(tiles.grab());
    ASSERT_TRUE(isGreen(painted, count - 1));

    PaintedArea area(tiles);
    for (int i = 0; i < count; ++i)
        Q_EMIT icons.imageChanged(tiles.tile(i).app().id);
    std::vector<int> paintedInTurn;
    std::set<int> all;
    for (int turn = 0; turn < 20; ++turn) {
        QCoreApplication::processEvents();
        const auto region = std::exchange(area.region, {});
        int inTurn = 0;
        for (int i = 0; i < count; ++i) {
            if (region.contains(tiles.tileRect(i))) {
                ++inTurn;
                all.insert(i);
            }
        }
        paintedInTurn.push_back(inTurn);
    }
    EXPECT_LE(*std::max_element(paintedInTurn.begin(), paintedInTurn.end()), count / 2);
    EXPECT_EQ(static_cast<int>(all.size()), count);
}

TEST_F(MenuPanelTest, itTakesTheColoursOfTheAppearance)
{
    const auto background = [this] { return inPoints(panel->grab()).pixelColor(5, 400); };
    EXPECT_EQ(background(), Palette::light().windowBackground);
    fakes.appearance->setDark(true);
    EXPECT_EQ(background(), Palette::dark().windowBackground);
}

TEST_F(MenuPanelTest, aPanelMayGoBeforeItsStore)
{
    panel.reset();
    addApp(QStringLiteral("Moon"));
    fakes.appearance->setDark(true);
}

TEST_F(MenuPanelTest, nothingRunsWhileNothingMovesButTheMinute)
{
    addApp(QStringLiteral("Moon"));
    fakes.settle();
    panel->hide();
    const auto hidden = fakes.clock->pending();
    panel->show();
    EXPECT_EQ(fakes.clock->pending(), hidden + 1) << "the header's next minute";
    panel->hide();
    EXPECT_EQ(fakes.clock->pending(), hidden);
}

TEST_F(MenuPanelTest, theSearchOfLastTimeDoesNotHideTheLibrary)
{
    addApp(QStringLiteral("Moon"));
    addApp(QStringLiteral("Star"));
    store->setSearch(QStringLiteral("moon"));
    panel->hide();
    panel->show();
    EXPECT_EQ(store->search(), QString());
    EXPECT_EQ(part<SearchField>()->text(), QString());
    EXPECT_EQ(shown().join(u' '), QStringLiteral("[All apps] Moon Star"));
}

TEST_F(MenuPanelTest, afterTheSetupTheDockStandsWhereItAlwaysDoesAndTheTilesHaveTheKeyboard)
{
    addApp(QStringLiteral("Moon"));
    fakes.settle();
    const auto place = part<QuillDock>()->geometry();
    QPointer<QPushButton> inSetup;
    makeSetupView = [&inSetup](QWidget *parent) {
        auto *setup = new QWidget(parent);
        setup->setMinimumHeight(80);
        inSetup = new QPushButton(setup);
        return setup;
    };
    QFile::remove(paths.systemImage());
    store->refreshAndroidState();
    makePanel();
    fakes.settle();
    ASSERT_TRUE(inSetup);
    inSetup->setFocus();
    ASSERT_TRUE(inSetup->hasFocus());
    install(35);
    store->refreshAndroidState();
    fakes.settle();
    EXPECT_EQ(part<QuillDock>()->geometry(), place);
    EXPECT_TRUE(grid().hasFocus());
}

TEST_F(MenuPanelTest, whatReachesBelowFadesAtTheFooterUntilTheEndIsSeen)
{
    QImage red(96, 96, QImage::Format_RGB32);
    red.fill(Qt::red);
    for (int i = 0; i < 60; ++i) {
        const auto name = QStringLiteral("App%1").arg(i, 2, 10, QLatin1Char('0'));
        packageIcons[name.toStdString()] = red;
        addApp(name);
    }
    grid().grab();
    fakes.settle();
    auto *area = part<QScrollArea>();
    auto *bar = area->verticalScrollBar();
    // An icon's middle comes to the lower edge.
    const auto icon = AppTile::iconArea(grid().tileRect(24)).center().toPoint();
    bar->setValue(icon.y() - area->viewport()->height());
    const auto at = [&](int above) {
        const auto point = area->viewport()->mapTo(panel.get(), QPoint(icon.x(), area->viewport()->height() - above));
        return inPoints(panel->grab()).pixelColor(point);
    };
    EXPECT_GT(at(2).green(), 200) << "nearly the ground";
    EXPECT_LT(at(12).green(), 180);
    EXPECT_LT(at(25).green(), 60) << "nearly the icon";
    bar->setValue(bar->maximum());
    const auto lower = grid().mapFrom(area->viewport(), QPoint(0, area->viewport()->height() - 4)).y();
    const auto seen = inPoints(area->viewport()->grab());
    const auto all = inPoints(grid().grab());
    for (int x = 0; x < grid().width(); x += 7)
        EXPECT_EQ(seen.pixelColor(x, area->viewport()->height() - 4), all.pixelColor(x, lower)) << x;
}

TEST_F(MenuPanelTest, theWordInThePillCanBeReadWhateverAndroidDoes)
{
    const auto luminance = [](const QColor &color) {
        const auto linear
            = [](float part) { return part <= 0.03928F ? part / 12.92F : std::pow((part + 0.055F) / 1.055F, 2.4F); };
        return 0.2126F * linear(color.redF()) + 0.7152F * linear(color.greenF()) + 0.0722F * linear(color.blueF());
    };
    auto &pill = *part<StatusPill>();
    pill.show();
    for (const bool dark : {false, true}) {
        fakes.appearance->setDark(dark);
        for (const auto state :
             {StatusPill::State::ready, StatusPill::State::starting, StatusPill::State::sleeping,
              StatusPill::State::notSetUp}) {
            pill.setState(state);
            pill.show();
            fakes.settle();
            // On the panel's ground, behind the dot.
            const QRect words(pill.mapTo(panel.get(), QPoint(20, 0)), pill.size() - QSize(26, 0));
            const auto image = inPoints(panel->grab(words)).convertToFormat(QImage::Format_RGB32);
            const float ground = luminance(image.pixelColor(image.width() / 2, 1));
            float best = 1;
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x) {
                    const float here = luminance(image.pixelColor(x, y));
                    best = std::max(best, (std::max(here, ground) + 0.05F) / (std::min(here, ground) + 0.05F));
                }
            }
            EXPECT_GE(best, 4.5F) << dark << StatusPill::word(state).toStdString();
        }
    }
}
