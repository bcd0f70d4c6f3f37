#include "launcher/MenuPanel.h"

#include "LaunchFixture.h"
#include "launcher/AppTile.h"
#include "launcher/Glyph.h"
#include "windows/Palette.h"

#include <QApplication>
#include <QBuffer>
#include <QDropEvent>
#include <QFileInfo>
#include <QLabel>
#include <QMimeData>
#include <QTest>

using namespace quillnest;
using namespace std::chrono_literals;

namespace
{

/// The panel on a store whose launches wait, so that what a click begins stays on show.
class MenuPanelTest : public LaunchFixture
{
protected:
    MenuPanelTest()
    {
        *cleaning = true;
        panel = std::make_unique<MenuPanel>(fakes.platform, *store, icons);
        panel->setWindowFlag(Qt::FramelessWindowHint);
        panel->setGeometry(100, 100, 390, 760);
        panel->show();
    }
    ~MenuPanelTest() override { panel.reset(); }

    /// The tiles as they stand, row by row.
    std::vector<AppTile *> tiles()
    {
        fakes.settle();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        const auto found = panel->findChildren<AppTile *>();
        std::vector<AppTile *> result(found.begin(), found.end());
        std::sort(result.begin(), result.end(), [](const AppTile *a, const AppTile *b) {
            return std::pair(a->y(), a->x()) < std::pair(b->y(), b->x());
        });
        return result;
    }
    QStringList tileNames()
    {
        QStringList result;
        for (const auto *tile : tiles())
            result.append(tile->accessibleName());
        return result;
    }
    bool shows(const QString &text) const
    {
        for (const auto *label : panel->findChildren<QLabel *>()) {
            if (label->text() == text && label->isVisibleTo(panel.get()))
                return true;
        }
        return false;
    }
    /// How the tile of an app looks.
    QImage look(const QString &name)
    {
        for (auto *tile : tiles()) {
            if (tile->accessibleName() == name)
                return tile->grab().toImage();
        }
        throw std::runtime_error("no such tile");
    }

    /// The icons that packages have, by the name of their app; what reading them out costs isn't this test's concern.
    std::map<std::string, QImage> packageIcons;
    AppIconStore icons{fakes.platform, log, [this](const APKIconExtractor::IconTools &, const std::string &path) {
                           return iconOf(path);
                       }};
    std::unique_ptr<MenuPanel> panel;

private:
    std::optional<std::vector<std::uint8_t>> iconOf(const std::string &path) const
    {
        const auto found = packageIcons.find(QFileInfo(QString::fromStdString(path)).baseName().toStdString());
        if (found == packageIcons.end())
            return std::nullopt;
        QByteArray png;
        QBuffer buffer(&png);
        buffer.open(QIODevice::WriteOnly);
        found->second.save(&buffer, "PNG");
        return std::vector<std::uint8_t>(png.begin(), png.end());
    }
};

} // namespace

TEST_F(MenuPanelTest, tilesStandInTheLibrarysOrderUnderTheNamesThatAreShown)
{
    for (const auto *label : {"Moon 2.1", "apple", "Zebra", "Banana", "Cherry"})
        addApp(QString::fromUtf8(label));
    store->toggleFavorite(*store->firstMatch(QStringLiteral("zebra")));
    EXPECT_EQ(tileNames().join(QLatin1Char(' ')), QStringLiteral("Zebra apple Banana Cherry Moon"));
    EXPECT_EQ(tiles().back()->toolTip(), QStringLiteral("Moon 2.1"));
}

TEST_F(MenuPanelTest, theRowsFollowTheWidth)
{
    for (int i = 0; i < 8; ++i)
        addApp(QStringLiteral("App%1").arg(QChar(u'a' + i)));
    const auto perRow = [this] {
        const auto all = tiles();
        return std::count_if(
            all.begin(), all.end(), [&all](const AppTile *tile) { return tile->y() == all.front()->y(); });
    };
    EXPECT_EQ(perRow(), 4);
    panel->resize(280, 760);
    EXPECT_EQ(perRow(), 2);
    panel->resize(760, 760);
    EXPECT_EQ(perRow(), 8);
    EXPECT_EQ(tileNames().size(), 8);
    EXPECT_EQ(tileNames().front(), QStringLiteral("Appa"));
}

TEST_F(MenuPanelTest, noTileReachesBeyondThePanelAtItsLeastSize)
{
    for (int i = 0; i < 30; ++i)
        addApp(QStringLiteral("App%1").arg(i));
    panel->resize(280, 420);
    for (const auto *tile : tiles())
        EXPECT_LE(tile->mapTo(panel.get(), QPoint(tile->width(), 0)).x(), 280);
}

TEST_F(MenuPanelTest, aClickOrReturnOrSpaceOpensTheApp)
{
    const auto moon = addApp(QStringLiteral("Moon"));
    const auto star = addApp(QStringLiteral("Star"));
    QTest::mouseClick(tiles().at(1), Qt::LeftButton);
    EXPECT_EQ(store->launchingAppID(), star.id);
    QTest::keyClick(tiles().at(0), Qt::Key_Return);
    EXPECT_EQ(store->launchingAppID(), moon.id);
    QTest::keyClick(tiles().at(1), Qt::Key_Space);
    EXPECT_EQ(store->launchingAppID(), star.id);
    QTest::keyClick(tiles().at(0), Qt::Key_Enter);
    EXPECT_EQ(store->launchingAppID(), moon.id);
}

TEST_F(MenuPanelTest, everyTileIsReachedByTheKeyboard)
{
    addApp(QStringLiteral("Moon"));
    for (const auto *tile : tiles())
        EXPECT_EQ(tile->focusPolicy(), Qt::StrongFocus);
}

TEST_F(MenuPanelTest, anEmptyLibrarySaysHowToFillIt)
{
    const auto hint = QStringLiteral("Drop an APK here to add it");
    EXPECT_TRUE(shows(hint));
    const auto app = addApp(QStringLiteral("Moon"));
    EXPECT_FALSE(shows(hint));
    store->remove(app);
    EXPECT_TRUE(shows(hint));
    EXPECT_TRUE(tiles().empty());
}

TEST_F(MenuPanelTest, filesDroppedOnItJoinTheLibrary)
{
    const auto path = putPackage(QStringLiteral("Apps/moon.apk"), "org.example.moon", "Moon");
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(path)});
    QDragEnterEvent enter(QPoint(50, 300), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    enter.ignore();
    QApplication::sendEvent(panel.get(), &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(50, 300), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(panel.get(), &drop);
    fakes.settle();
    EXPECT_EQ(tileNames(), QStringList{QStringLiteral("Moon")});
    EXPECT_TRUE(shows(QStringLiteral("Added moon.apk")));
}

TEST_F(MenuPanelTest, whatHoldsNoFilesIsRefused)
{
    QMimeData data;
    data.setText(QStringLiteral("text"));
    QDragEnterEvent enter(QPoint(50, 300), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    enter.ignore();
    QApplication::sendEvent(panel.get(), &enter);
    EXPECT_FALSE(enter.isAccepted());
}

TEST_F(MenuPanelTest, theTileOfALaunchIsMarked)
{
    const auto moon = addApp(QStringLiteral("Moon"));
    addApp(QStringLiteral("Star"));
    const auto idle = look(QStringLiteral("Moon"));
    const auto other = look(QStringLiteral("Star"));
    store->launch(moon);
    EXPECT_NE(look(QStringLiteral("Moon")), idle);
    EXPECT_EQ(look(QStringLiteral("Star")), other);
    EXPECT_TRUE(shows(QStringLiteral("Starting Moon…")));
    EXPECT_TRUE(shows(QStringLiteral("Starting…")));
}

TEST_F(MenuPanelTest, theTileOfAnAppIsMarkedAsLongAsItRuns)
{
    deviceIsUp();
    *cleaning = false;
    const auto moon = addApp(QStringLiteral("Moon"));
    // At the lower right corner of the icon.
    const auto isMarked = [this] { return look(QStringLiteral("Moon")).pixelColor(67, 63) == QColor(0x30B858); };
    EXPECT_FALSE(isMarked());
    open(moon);
    ASSERT_TRUE(waitFor([this] { return !store->launchingAppID(); }));
    EXPECT_TRUE(isMarked());
    registry->closeAll();
    EXPECT_TRUE(waitFor([this] { return registry->sessions().empty(); }));
    EXPECT_FALSE(isMarked());
}

TEST_F(MenuPanelTest, aTileShowsWhetherItsAppRunsAndALaunchComesFirst)
{
    MobileApp app;
    app.name = QStringLiteral("Moon");
    AppTile tile(fakes.platform, app);
    const auto marked = [&tile](bool launching, bool running) {
        tile.setMarks({launching, running});
        return tile.grab().toImage();
    };
    const auto idle = marked(false, false);
    const auto running = marked(false, true);
    const auto launching = marked(true, false);
    EXPECT_NE(running, idle);
    EXPECT_NE(launching, idle);
    EXPECT_NE(launching, running);
    EXPECT_EQ(marked(true, true), launching);
    EXPECT_EQ(marked(false, false), idle);
}

TEST_F(MenuPanelTest, aTileShowsItsFirstLetterWholeWhateverItIsMadeOf)
{
    const auto look = [this](const char *name) {
        MobileApp app;
        app.name = QString::fromUtf8(name);
        AppTile tile(fakes.platform, app);
        return tile.grab().toImage();
    };
    // Letters of two code units and of none must not break a tile.
    EXPECT_NE(look("😀 smile"), look("😁 smile"));
    EXPECT_FALSE(look("").isNull());
}

TEST_F(MenuPanelTest, aTileShowsItsIconAsSoonAsItIsThere)
{
    QImage red(96, 96, QImage::Format_RGB32);
    red.fill(QColor(0xC01020));
    packageIcons["Moon"] = red;
    const auto moon = addApp(QStringLiteral("Moon"));
    addApp(QStringLiteral("Star"));
    EXPECT_EQ(look(QStringLiteral("Moon")).pixelColor(42, 20), QColor(0xC01020));
    // Where the placeholder was: its corners are round as that one's were.
    const auto star = look(QStringLiteral("Star"));
    const auto picture = look(QStringLiteral("Moon"));
    for (const auto corner : {QPoint(14, 10), QPoint(69, 10), QPoint(14, 65), QPoint(69, 65)}) {
        EXPECT_EQ(picture.pixelColor(corner), star.pixelColor(corner));
        EXPECT_NE(picture.pixelColor(corner), QColor(0xC01020));
    }
    EXPECT_EQ(picture.pixelColor(14, 38), QColor(0xC01020));
    EXPECT_EQ(picture.pixelColor(69, 38), QColor(0xC01020));
    EXPECT_NE(star.pixelColor(42, 20), QColor(0xC01020));
    // A new panel on the same store has it at once.
    MenuPanel second(fakes.platform, *store, icons);
    ASSERT_EQ(second.findChildren<AppTile *>().size(), 2);
    bool shown = false;
    for (auto *tile : second.findChildren<AppTile *>())
        shown = shown || tile->grab().toImage().pixelColor(42, 20) == QColor(0xC01020);
    EXPECT_TRUE(shown);
    store->launch(moon);
    EXPECT_NE(look(QStringLiteral("Moon")), picture) << "the mark of a launch lies over the icon";
}

TEST_F(MenuPanelTest, onlyTheTileWhoseIconHasComeIsPainted)
{
    struct PaintCounter : QObject {
        bool eventFilter(QObject *object, QEvent *event) override
        {
            if (event->type() == QEvent::Paint)
                painted.insert(static_cast<QWidget *>(object)->accessibleName());
            return false;
        }
        QSet<QString> painted;
    } counter;
    packageIcons["Moon"] = packageIcons["Star"] = QImage(8, 8, QImage::Format_RGB32);
    const auto moon = addApp(QStringLiteral("Moon"));
    addApp(QStringLiteral("Star"));
    ASSERT_TRUE(QTest::qWaitForWindowExposed(panel.get()));
    for (auto *tile : tiles()) {
        tile->installEventFilter(&counter);
        tile->update();
    }
    ASSERT_TRUE(waitFor([&counter] { return counter.painted.size() == 2; }));
    counter.painted.clear();
    Q_EMIT icons.imageChanged(moon.id);
    EXPECT_TRUE(waitFor([&counter] { return counter.painted.contains(QStringLiteral("Moon")); }));
    EXPECT_FALSE(counter.painted.contains(QStringLiteral("Star")));
}

TEST_F(MenuPanelTest, anIconIsAsSharpAsTheDisplay)
{
    // Stripes of one of the display's pixels, which any mixing would make grey.
    for (const double ratio : {1.0, 1.25, 1.5, 2.0, 3.0}) {
        const int side = static_cast<int>(std::lround(56 * ratio));
        QImage stripes(side, side, QImage::Format_RGB32);
        for (int y = 0; y < side; ++y) {
            for (int x = 0; x < side; ++x)
                stripes.setPixel(x, y, x % 2 ? qRgb(255, 255, 255) : qRgb(0, 0, 0));
        }
        AppTile tile(fakes.platform, MobileApp());
        tile.setImage(stripes);
        QImage display(QSize(84, 100) * ratio, QImage::Format_RGB32);
        display.setDevicePixelRatio(ratio);
        display.fill(Qt::gray);
        tile.render(&display, {}, {}, QWidget::DrawChildren);
        int differing = 0;
        const int left = static_cast<int>(std::lround(14 * ratio));
        const int row = static_cast<int>(std::lround(38 * ratio));
        for (int x = 0; x < side; ++x)
            differing += display.pixel(left + x, row) != stripes.pixel(x, side / 2);
        EXPECT_EQ(differing, 0) << ratio;
    }
}

TEST_F(MenuPanelTest, anIconFollowsItsTileToAnotherDisplay)
{
    QImage checks(192, 192, QImage::Format_RGB32);
    for (int y = 0; y < 192; ++y) {
        for (int x = 0; x < 192; ++x)
            checks.setPixel(x, y, (x / 5 + y / 5) % 2 ? qRgb(255, 255, 255) : qRgb(0, 0, 0));
    }
    const auto look = [](AppTile &tile, int ratio) {
        QImage display(QSize(84, 100) * ratio, QImage::Format_RGB32);
        display.setDevicePixelRatio(ratio);
        display.fill(Qt::gray);
        tile.render(&display, {}, {}, QWidget::DrawChildren);
        return display;
    };
    AppTile tile(fakes.platform, MobileApp());
    tile.setImage(checks);
    look(tile, 1);
    AppTile other(fakes.platform, MobileApp());
    other.setImage(checks);
    EXPECT_EQ(look(tile, 2), look(other, 2));
}

TEST_F(MenuPanelTest, theStateOfAndroidIsShown)
{
    EXPECT_TRUE(shows(QStringLiteral("Sleeping")));
    device.listed = true;
    device.booted = true;
    store->refreshAndroidState();
    fakes.settle();
    EXPECT_FALSE(shows(QStringLiteral("Sleeping")));
    QFile::remove(paths.systemImage());
    store->refreshAndroidState();
    EXPECT_TRUE(shows(QStringLiteral("Not set up")));
}

TEST_F(MenuPanelTest, theStatusIsShownAsItIsWritten)
{
    add({fakes.writeFile(QStringLiteral("Apps/<b>bold<b>.txt"), "")});
    EXPECT_TRUE(shows(QStringLiteral("Skipped <b>bold<b>.txt: choose an APK or IPA")));
    for (const auto *label : panel->findChildren<QLabel *>()) {
        if (label->text().startsWith(QStringLiteral("Skipped"))) {
            EXPECT_EQ(label->textFormat(), Qt::PlainText);
        }
    }
}

TEST_F(MenuPanelTest, escapeClosesItsWindow)
{
    QTest::keyClick(panel.get(), Qt::Key_Escape);
    EXPECT_FALSE(panel->isVisible());
}

TEST_F(MenuPanelTest, itTakesTheColoursOfTheAppearance)
{
    const auto background = [this] { return panel->grab().toImage().pixelColor(5, 400); };
    EXPECT_EQ(background(), Palette::light().windowBackground);
    fakes.appearance->setDark(true);
    EXPECT_EQ(background(), Palette::dark().windowBackground);
    const auto *status = panel->findChildren<QLabel *>().back();
    EXPECT_EQ(status->palette().color(QPalette::WindowText), Palette::dark().secondaryLabel);
}

TEST_F(MenuPanelTest, aPanelMayGoBeforeItsStore)
{
    panel.reset();
    addApp(QStringLiteral("Moon"));
    fakes.appearance->setDark(true);
}

TEST(Glyph, isDrawnInOneColourInsideItsArea)
{
    QImage image(64, 64, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    drawGlyph(painter, QRectF(16, 16, 32, 32), Qt::red);
    painter.end();
    int drawn = 0;
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x) {
            const auto color = image.pixelColor(x, y);
            if (color.alpha() == 0)
                continue;
            ++drawn;
            EXPECT_TRUE(QRect(15, 15, 34, 34).contains(x, y)) << x << "," << y;
            EXPECT_EQ(color.blue() + color.green(), 0);
        }
    }
    EXPECT_GT(drawn, 100);
}

TEST(Glyph, anIconHasTheSizesOfStatusBars)
{
    const auto icon = glyphIcon(Qt::white);
    for (const int size : {18, 22, 24, 36, 48, 64})
        EXPECT_TRUE(icon.availableSizes().contains(QSize(size, size))) << size;
}
