#include "PanelFixture.h"
#include "launcher/SearchField.h"
#include "look/Palette.h"

#include <QAccessible>
#include <QContextMenuEvent>
#include <QLineEdit>

using namespace quillnest;

namespace
{
class PanelKeyboardTest : public PanelFixture
{
protected:
    PanelKeyboardTest()
    {
        for (int i = 0; i < 10; ++i)
            addApp(QStringLiteral("App%1").arg(QChar(u'a' + i)));
    }
    void press(int key, Qt::KeyboardModifiers modifiers = {}) { QTest::keyClick(focus(), Qt::Key(key), modifiers); }
    QWidget *focus() const { return QApplication::focusWidget() ? QApplication::focusWidget() : panel.get(); }
    QLineEdit &edit() { return part<SearchField>()->edit(); }
    QString current() { return grid().current() ? grid().tile(*grid().current()).name() : QString(); }
};
} // namespace

TEST_F(PanelKeyboardTest, arrowsMoveByRowsAndColumns)
{
    press(Qt::Key_Right);
    EXPECT_EQ(current(), QStringLiteral("Appa")) << "the first one shows where the keyboard is";
    press(Qt::Key_Right);
    EXPECT_EQ(current(), QStringLiteral("Appb"));
    press(Qt::Key_Down);
    EXPECT_EQ(current(), QStringLiteral("Appf"));
    press(Qt::Key_Down);
    EXPECT_EQ(current(), QStringLiteral("Appj"));
    press(Qt::Key_Down);
    EXPECT_EQ(current(), QStringLiteral("Appj"));
    press(Qt::Key_Up);
    EXPECT_EQ(current(), QStringLiteral("Appf"));
    press(Qt::Key_Left);
    press(Qt::Key_Left);
    EXPECT_EQ(current(), QStringLiteral("Appd")) << "on to the row above";
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    EXPECT_EQ(current(), QStringLiteral("Appj")) << "the last row is short";
    press(Qt::Key_Home);
    EXPECT_EQ(current(), QStringLiteral("Appa"));
    press(Qt::Key_End);
    EXPECT_EQ(current(), QStringLiteral("Appj"));
}

TEST_F(PanelKeyboardTest, fromRightToLeftTheArrowsAreMirroredWithTheTiles)
{
    panel->setLayoutDirection(Qt::RightToLeft);
    EXPECT_GT(grid().tileRect(0).x(), grid().tileRect(1).x());
    press(Qt::Key_Left);
    press(Qt::Key_Left);
    EXPECT_EQ(current(), QStringLiteral("Appb"));
    press(Qt::Key_Right);
    EXPECT_EQ(current(), QStringLiteral("Appa"));
    press(Qt::Key_Down);
    EXPECT_EQ(current(), QStringLiteral("Appe"));
}

TEST_F(PanelKeyboardTest, arrowsGoFromSectionToSectionAndUpIntoTheSearch)
{
    store->toggleFavorite(*store->firstMatch(QStringLiteral("Appj")));
    press(Qt::Key_Down);
    EXPECT_EQ(grid().current(), 0);
    press(Qt::Key_Down);
    EXPECT_EQ(grid().current(), 1);
    EXPECT_EQ(current(), QStringLiteral("Appa"));
    press(Qt::Key_Up);
    press(Qt::Key_Up);
    EXPECT_TRUE(edit().hasFocus());
    press(Qt::Key_Down);
    EXPECT_TRUE(grid().hasFocus());
    EXPECT_EQ(grid().current(), 0);
}

TEST_F(PanelKeyboardTest, returnOpensTheTileAndSpaceDoesToo)
{
    press(Qt::Key_Return);
    EXPECT_FALSE(store->launchingAppID()) << "the keyboard is nowhere yet";
    press(Qt::Key_Right);
    press(Qt::Key_Return);
    EXPECT_EQ(store->launchingAppID(), store->firstMatch(QStringLiteral("Appa"))->id);
    press(Qt::Key_Right);
    press(Qt::Key_Space);
    EXPECT_EQ(store->launchingAppID(), store->firstMatch(QStringLiteral("Appb"))->id);
}

TEST_F(PanelKeyboardTest, whatIsTypedAnywhereGoesIntoTheSearchAndReturnOpensTheFirstResult)
{
    QTest::keyClicks(focus(), QStringLiteral("pp"));
    QTest::keyClicks(focus(), QStringLiteral("c"));
    EXPECT_EQ(store->search(), QStringLiteral("ppc"));
    EXPECT_TRUE(edit().hasFocus());
    EXPECT_EQ(shown().join(u' '), QStringLiteral("[Results] Appc"));
    press(Qt::Key_Return);
    EXPECT_EQ(store->launchingAppID(), store->firstMatch(QStringLiteral("Appc"))->id);
}

TEST_F(PanelKeyboardTest, escapeClearsTheSearchFirstAndThenCloses)
{
    QTest::keyClicks(focus(), QStringLiteral("appc"));
    EXPECT_EQ(edit().text(), QStringLiteral("appc"));
    EXPECT_EQ(names(), QStringList{QStringLiteral("Appc")});
    press(Qt::Key_Escape);
    EXPECT_TRUE(panel->isVisible());
    EXPECT_EQ(store->search(), QString());
    EXPECT_EQ(edit().text(), QString());
    press(Qt::Key_Escape);
    EXPECT_FALSE(panel->isVisible());
}

TEST_F(PanelKeyboardTest, theClearButtonIsThereWhileThereIsText)
{
    EXPECT_EQ(button(QStringLiteral("Clear search")), nullptr);
    store->setSearch(QStringLiteral("x"));
    auto *clear = button(QStringLiteral("Clear search"));
    ASSERT_NE(clear, nullptr);
    clear->click();
    EXPECT_EQ(store->search(), QString());
    EXPECT_EQ(button(QStringLiteral("Clear search")), nullptr);
}

TEST_F(PanelKeyboardTest, theMenuKeyOpensTheTilesMenu)
{
    press(Qt::Key_Right);
    QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(), QPoint());
    QApplication::sendEvent(&grid(), &event);
    ASSERT_NE(openMenu(), nullptr);
    EXPECT_EQ(entries(openMenu()).front(), QStringLiteral("Open"));
    openMenu()->close();
}

TEST_F(PanelKeyboardTest, theTileWithTheKeyboardIsInViewAndLooksIt)
{
    for (int i = 10; i < 60; ++i)
        addApp(QStringLiteral("App%1").arg(i));
    press(Qt::Key_Home);
    const auto calm = look(grid().tile(1).name());
    press(Qt::Key_Right);
    EXPECT_NE(look(grid().tile(1).name()), calm);
    press(Qt::Key_End);
    const auto last = grid().tileRect(grid().count() - 1);
    EXPECT_TRUE(grid().visibleRegion().boundingRect().contains(last));
    press(Qt::Key_Home);
    EXPECT_TRUE(grid().visibleRegion().boundingRect().contains(grid().tileRect(0)));
}

TEST_F(PanelKeyboardTest, tabGoesThroughTheTitleTheSearchTheTilesAndTheStatus)
{
    button(QStringLiteral("Add an APK"))->setFocus();
    QStringList order;
    for (int i = 0; i < 5; ++i) {
        order.append(QAccessible::queryAccessibleInterface(focus())->text(QAccessible::Name));
        press(Qt::Key_Tab);
    }
    EXPECT_EQ(order.join(u'|'), QStringLiteral("Add an APK|More|Search apps|Apps|") + store->statusMessage());
}

TEST_F(PanelKeyboardTest, aPageUpInTheFirstRowStaysThereWhereAnArrowWouldLeave)
{
    press(Qt::Key_Right);
    press(Qt::Key_Right);
    ASSERT_EQ(current(), QStringLiteral("Appb"));
    press(Qt::Key_PageUp);
    EXPECT_EQ(current(), QStringLiteral("Appb"));
    EXPECT_TRUE(grid().hasFocus());
    press(Qt::Key_PageDown);
    EXPECT_EQ(current(), QStringLiteral("Appj")) << "the last row";
    press(Qt::Key_PageUp);
    EXPECT_EQ(current(), QStringLiteral("Appb"));
    press(Qt::Key_Up);
    EXPECT_TRUE(edit().hasFocus());
}

TEST_F(PanelKeyboardTest, inASearchThatHoldsTextTheSidewaysArrowsMoveTheCursor)
{
    QTest::keyClicks(focus(), QStringLiteral("ap"));
    ASSERT_TRUE(edit().hasFocus());
    press(Qt::Key_Left);
    EXPECT_TRUE(edit().hasFocus());
    EXPECT_EQ(edit().cursorPosition(), 1);
    press(Qt::Key_Right);
    EXPECT_TRUE(edit().hasFocus());
    EXPECT_EQ(edit().cursorPosition(), 2);
    press(Qt::Key_Right);
    EXPECT_TRUE(edit().hasFocus()) << "at its end as well";
    press(Qt::Key_Down);
    EXPECT_TRUE(grid().hasFocus());
    edit().setFocus();
    store->setSearch({});
    press(Qt::Key_Right);
    EXPECT_TRUE(grid().hasFocus()) << "an empty one has nothing to move in";
}

TEST_F(PanelKeyboardTest, theRingStaysWhereItWasWhenATileBecomesAFavouriteAndCeasesToBe)
{
    const auto ring = [this] {
        fakes.settle();
        const auto current = *grid().current();
        return inPoints(grid().grab(grid().tileRect(current))).pixelColor(grid().tileRect(current).width() / 2, 0)
            == Palette::light().controlAccent;
    };
    press(Qt::Key_Right);
    press(Qt::Key_Right);
    ASSERT_TRUE(ring());
    const auto toggle = [this](const char *entry) {
        QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(), QPoint());
        QApplication::sendEvent(&grid(), &event);
        choose(openMenu(), QLatin1String(entry));
        fakes.settle();
    };
    toggle("Add to favourites");
    EXPECT_TRUE(grid().hasFocus());
    EXPECT_EQ(current(), QStringLiteral("Appb"));
    EXPECT_EQ(grid().current(), 2) << "among all the apps, where it was";
    EXPECT_TRUE(ring());
    press(Qt::Key_Home);
    ASSERT_EQ(grid().current(), 0) << "the favourite above";
    addApp(QStringLiteral("Another"));
    EXPECT_EQ(grid().current(), 0) << "of two tiles the one that it was on";
    toggle("Remove from favourites");
    EXPECT_EQ(current(), QStringLiteral("Appb"));
    EXPECT_TRUE(ring());
}

TEST_F(PanelKeyboardTest, aPanelThatOpensAnewShowsNoRing)
{
    press(Qt::Key_Right);
    panel->hide();
    panel->show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(panel.get()));
    fakes.settle();
    const auto tile = grid().tileRect(*grid().current());
    EXPECT_NE(inPoints(grid().grab(tile)).pixelColor(tile.width() / 2, 0), Palette::light().controlAccent);
}
