#include "PanelFixture.h"

#include <QAccessible>
#include <QDragEnterEvent>
#include <QMimeData>

using namespace quillnest;

namespace
{
class PanelAccessTest : public LivePanelFixture
{
protected:
    static QAccessibleInterface *access(QObject *object) { return QAccessible::queryAccessibleInterface(object); }

    /// Looks at everything that can be seen below, and tells of what has no name or no role.
    static void walk(QAccessibleInterface *item, int depth, int &count)
    {
        ASSERT_NE(item, nullptr);
        ASSERT_LT(depth, 30);
        ASSERT_TRUE(item->isValid());
        ++count;
        const auto state = item->state();
        const auto name = item->text(QAccessible::Name);
        const auto path
            = QStringLiteral("%1 “%2” role %3")
                  .arg(
                      item->object() ? QLatin1String(item->object()->metaObject()->className()) : QLatin1String("cell"))
                  .arg(name)
                  .arg(item->role());
        EXPECT_NE(item->role(), QAccessible::NoRole) << path.toStdString();
        if (state.focusable && !state.invisible) {
            EXPECT_FALSE(name.isEmpty()) << path.toStdString();
        }
        const auto role = item->role();
        if ((role == QAccessible::Button || role == QAccessible::CheckBox || role == QAccessible::ListItem
             || role == QAccessible::StaticText || role == QAccessible::Heading)
            && !state.invisible) {
            EXPECT_FALSE(name.isEmpty()) << path.toStdString();
        }
        if (role == QAccessible::Button || role == QAccessible::ListItem) {
            ASSERT_NE(item->actionInterface(), nullptr) << path.toStdString();
            EXPECT_TRUE(item->actionInterface()->actionNames().contains(QAccessibleActionInterface::pressAction()))
                << path.toStdString();
        }
        for (int i = 0; i < item->childCount(); ++i) {
            auto *child = item->child(i);
            ASSERT_NE(child, nullptr) << path.toStdString();
            EXPECT_EQ(item->indexOfChild(child), i) << path.toStdString();
            walk(child, depth + 1, count);
        }
    }
    int walkAll()
    {
        fakes.settle();
        int count = 0;
        walk(access(panel.get()), 0, count);
        return count;
    }
};
} // namespace

TEST_F(PanelAccessTest, everythingHasANameAndARoleInEveryState)
{
    EXPECT_GT(walkAll(), 10) << "empty";
    for (int i = 0; i < 20; ++i)
        addApp(QStringLiteral("App %1").arg(i));
    store->toggleFavorite(store->apps()[3]);
    EXPECT_GT(walkAll(), 30) << "with apps";
    store->setSearch(QStringLiteral("App 1"));
    walkAll();
    store->setSearch(QStringLiteral("nothing at all"));
    walkAll();
    store->setSearch({});
    store->launch(MobileApp(store->apps()[0]));
    walkAll();
    panel->setShowSettings(true);
    walkAll();
    panel->setShowSettings(false);
    QMimeData files;
    files.setUrls({QUrl::fromLocalFile(QStringLiteral("/moon.apk"))});
    QDragEnterEvent enter(QPoint(50, 300), Qt::CopyAction, &files, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(panel.get(), &enter);
    walkAll();
}

TEST_F(PanelAccessTest, aTileTellsItsNameItsStateAndOpens)
{
    deviceIsUp();
    deviceCleaned.finish();
    const auto moon = addApp(QStringLiteral("Moon"));
    addApp(QStringLiteral("Star"));
    auto *list = access(&grid());
    ASSERT_EQ(list->role(), QAccessible::List);
    EXPECT_EQ(list->text(QAccessible::Name), QStringLiteral("Apps"));
    ASSERT_EQ(list->childCount(), 3) << "two tiles and a heading";
    auto *tile = list->child(0);
    EXPECT_EQ(tile->role(), QAccessible::ListItem);
    EXPECT_EQ(tile->text(QAccessible::Name), QStringLiteral("Moon"));
    EXPECT_EQ(tile->text(QAccessible::Description), QString());
    EXPECT_EQ(tile->rect(), QRect(grid().mapToGlobal(grid().tileRect(0).topLeft()), grid().tileRect(0).size()));
    EXPECT_EQ(list->childAt(tile->rect().center().x(), tile->rect().center().y()), tile);
    EXPECT_FALSE(tile->state().busy);
    EXPECT_EQ(list->child(2)->role(), QAccessible::Heading);
    EXPECT_EQ(list->child(2)->text(QAccessible::Name), QStringLiteral("All apps"));

    tile->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_EQ(store->launchingAppID(), moon.id);
    EXPECT_TRUE(tile->state().busy);
    EXPECT_EQ(tile->text(QAccessible::Description), QStringLiteral("Opening"));
    fakes.runUntil([&] { return registry->session(moon.id) != nullptr; });
    ASSERT_TRUE(waitFor([this] { return !store->launchingAppID(); }));
    EXPECT_TRUE(tile->state().active);
    EXPECT_EQ(tile->text(QAccessible::Description), QStringLiteral("Running"));
    registry->setUnread(moon.id, true);
    EXPECT_EQ(tile->text(QAccessible::Description), QStringLiteral("Running, Unread notifications"));
    registry->closeAll();
    ASSERT_TRUE(waitFor([this] { return registry->sessions().empty(); }));
}

TEST_F(PanelAccessTest, theKeyboardsPlaceIsToldAndCanBeSet)
{
    addApp(QStringLiteral("Moon"));
    addApp(QStringLiteral("Star"));
    auto *list = access(&grid());
    list->child(1)->actionInterface()->doAction(QAccessibleActionInterface::setFocusAction());
    EXPECT_EQ(grid().current(), 1);
    EXPECT_TRUE(list->child(1)->state().focused);
    EXPECT_EQ(list->focusChild(), list->child(1));
    store->remove(store->apps()[1]);
    EXPECT_EQ(list->childCount(), 2);
    EXPECT_EQ(list->child(0)->text(QAccessible::Name), QStringLiteral("Moon"));
}
