#include "core/AppLibraryStore.h"

#include "StoreFixture.h"

using namespace quillnest;

namespace
{
class AppLibraryStoreTest : public StoreFixture
{
};
} // namespace

// Order and search.

TEST_F(AppLibraryStoreTest, favouritesComeFirstAndEachGroupIsSortedByItsShownName)
{
    for (const auto *label : {"banana", "Cherry", "apple", "Date", "Älpler"})
        addApp(QString::fromUtf8(label));
    store->toggleFavorite(named(QStringLiteral("Date")));
    store->toggleFavorite(named(QStringLiteral("Cherry")));
    auto ordered = names(store->orderedApps());
    // Where a letter with a mark goes is the locale's business.
    ordered.removeAll(QStringLiteral("Älpler"));
    EXPECT_EQ(
        ordered,
        (QStringList{
            QStringLiteral("Cherry"), QStringLiteral("Date"), QStringLiteral("apple"), QStringLiteral("banana")}));
    EXPECT_EQ(store->apps()[0].name, QStringLiteral("banana"));
}

TEST_F(AppLibraryStoreTest, entriesOfTheSameShownNameKeepTheirStoredOrder)
{
    for (const auto *label : {"App 3.0", "app 1.0", "APP 2.0", "Aaa"})
        addApp(QString::fromUtf8(label));
    EXPECT_EQ(
        names(store->orderedApps()),
        (QStringList{
            QStringLiteral("Aaa"), QStringLiteral("App 3.0"), QStringLiteral("app 1.0"), QStringLiteral("APP 2.0")}));
}

TEST_F(AppLibraryStoreTest, aLongLibraryKeepsItsStoredOrderToo)
{
    QStringList expected;
    for (int version = 0; version < 40; ++version) {
        expected.append(QStringLiteral("App %1.0").arg((version * 7) % 40));
        addApp(expected.back());
    }
    EXPECT_EQ(names(store->orderedApps()), expected);
}

TEST_F(AppLibraryStoreTest, anEmptySearchGivesTheStoredOrder)
{
    for (const auto *label : {"Zebra", "Apple", "Moon"})
        addApp(QString::fromUtf8(label));
    store->toggleFavorite(named(QStringLiteral("Moon")));
    EXPECT_EQ(
        names(store->filteredApps()),
        (QStringList{QStringLiteral("Zebra"), QStringLiteral("Apple"), QStringLiteral("Moon")}));
}

TEST_F(AppLibraryStoreTest, aSearchLooksAtTheWholeNameWhateverItsCase)
{
    for (const auto *label : {"Zebra 1.2", "Moon", "apple 1.2"})
        addApp(QString::fromUtf8(label));
    store->setSearch(QStringLiteral("1.2"));
    EXPECT_EQ(names(store->filteredApps()), (QStringList{QStringLiteral("Zebra 1.2"), QStringLiteral("apple 1.2")}));
    store->setSearch(QStringLiteral("MOON"));
    EXPECT_EQ(names(store->filteredApps()), QStringList{QStringLiteral("Moon")});
    store->setSearch(QStringLiteral("nothing"));
    EXPECT_TRUE(store->filteredApps().empty());
}

TEST_F(AppLibraryStoreTest, theFirstMatchIsTheFirstInStoredOrderAndNoneForAnEmptyText)
{
    for (const auto *label : {"Second Moon", "Moon"})
        addApp(QString::fromUtf8(label));
    EXPECT_EQ(store->firstMatch(QStringLiteral("moon"))->name, QStringLiteral("Second Moon"));
    EXPECT_EQ(store->firstMatch(QString()), std::nullopt);
    EXPECT_EQ(store->firstMatch(QStringLiteral("Apps/Moon")), std::nullopt);
    EXPECT_EQ(store->firstMatchInNameOrPath(QStringLiteral("apps/moon"))->name, QStringLiteral("Moon"));
    EXPECT_EQ(store->firstMatchInNameOrPath(QString()), std::nullopt);
}

// Changing.

TEST_F(AppLibraryStoreTest, removeTakesTheEntryOutOfTheLibraryAlone)
{
    const auto app = addApp(QStringLiteral("App 1.0"));
    addApp(QStringLiteral("Other"));
    fakes.processes->forget();
    store->remove(app);
    fakes.settle();
    EXPECT_EQ(names(store->apps()), QStringList{QStringLiteral("Other")});
    EXPECT_EQ(status(), QStringLiteral("Removed App 1.0"));
    EXPECT_TRUE(fakes.readFile(app.sourcePath));
    EXPECT_EQ(storedApps(), store->apps());
    EXPECT_TRUE(fakes.processes->calls().empty());
}

TEST_F(AppLibraryStoreTest, removeMayBeGivenTheEntryItself)
{
    addApp(QStringLiteral("App"));
    store->remove(store->apps()[0]);
    EXPECT_TRUE(store->apps().empty());
    EXPECT_EQ(status(), QStringLiteral("Removed App"));
}

TEST_F(AppLibraryStoreTest, aFavouriteIsToggledSavedAndSaysNothing)
{
    const auto app = addApp(QStringLiteral("App"));
    const auto before = status();
    store->toggleFavorite(app);
    EXPECT_TRUE(store->apps()[0].isFavorite);
    EXPECT_TRUE(storedApps()[0].isFavorite);
    // The state in the library counts, not that of the copy.
    store->toggleFavorite(app);
    EXPECT_FALSE(storedApps()[0].isFavorite);
    EXPECT_EQ(status(), before);
    MobileApp stranger;
    stranger.id = QUuid::createUuid();
    store->toggleFavorite(stranger);
    EXPECT_EQ(store->apps().size(), 1U);
}

TEST_F(AppLibraryStoreTest, aSourceIsReplacedInPlace)
{
    const auto app = addApp(QStringLiteral("App"));
    const auto url = QUrl::fromLocalFile(fakes.path(QStringLiteral("new file.apk")));
    store->replaceSource(app.id, url, QStringLiteral("org.example.app"));
    EXPECT_EQ(storedApps()[0].sourcePath, fakes.path(QStringLiteral("new file.apk")));
    EXPECT_EQ(storedApps()[0].bundleIdentifier, QStringLiteral("org.example.app"));
    EXPECT_EQ(storedApps()[0].id, app.id);
    const auto bytes = stored();
    store->replaceSource(QUuid::createUuid(), url, QStringLiteral("org.example.other"));
    EXPECT_EQ(stored(), bytes);
}

TEST_F(AppLibraryStoreTest, changesAreToldApart)
{
    QStringList told;
    const auto note = [this, &told](auto signal, const char *name) {
        QObject::connect(store.get(), signal, store.get(), [&told, name] { told.append(QLatin1String(name)); });
    };
    note(&AppLibrary::appsChanged, "apps");
    note(&AppLibraryStore::searchChanged, "search");
    note(&AppLibraryStore::statusMessageChanged, "status");
    note(&AppLibraryStore::androidStateChanged, "android");
    note(&AppLibraryStore::launchingAppChanged, "launching");
    note(&AppLibraryStore::runningAppsChanged, "running");
    note(&AppLibraryStore::unreadAppsChanged, "unread");
    note(&AppLibraryStore::nowPlayingChanged, "playing");
    const auto take = [&told] { return std::exchange(told, {}).join(u' '); };
    const auto app = addApp(QStringLiteral("App"));
    EXPECT_EQ(take(), QStringLiteral("apps status"));
    store->toggleFavorite(app);
    EXPECT_EQ(take(), QStringLiteral("apps"));
    store->setSearch(QStringLiteral("a"));
    EXPECT_EQ(take(), QStringLiteral("search"));
    store->setSearch(QStringLiteral("a"));
    EXPECT_EQ(take(), QString()) << "nothing new";
    store->say(QStringLiteral("Hello"));
    EXPECT_EQ(take(), QStringLiteral("status"));
    registry->setUnread(app.id, true);
    EXPECT_EQ(take(), QStringLiteral("unread"));
    registry->setNowPlaying(AndroidMedia{QStringLiteral("Song"), QString(), true}, app.id);
    EXPECT_EQ(take(), QStringLiteral("playing"));
    Q_EMIT notifications->sessionsChanged();
    EXPECT_EQ(take(), QStringLiteral("running"));
    store->remove(app);
    EXPECT_EQ(take(), QStringLiteral("apps status"));
}

// Persistence.

TEST_F(AppLibraryStoreTest, theLibraryComesBackWithTheNextStart)
{
    addApp(QStringLiteral("Zebra"));
    addApp(QStringLiteral("Apple"));
    store->toggleFavorite(named(QStringLiteral("Apple")));
    const auto apps = store->apps();
    makeStore();
    EXPECT_EQ(store->apps(), apps);
    EXPECT_EQ(status(), QStringLiteral("Ready"));
}

TEST_F(AppLibraryStoreTest, aLibraryThatCannotBeReadStartsEmptyAndStaysInTheSettingsUntilTheNextSave)
{
    addApp(QStringLiteral("App"));
    const auto bad = stored().replace("\"Android\"", "\"Windows Phone\"");
    fakes.settings->setValue(libraryKey, bad);
    makeStore();
    EXPECT_TRUE(store->apps().empty());
    EXPECT_EQ(stored(), bad);
    EXPECT_EQ(status(), QStringLiteral("Ready"));
    add({putPackage(QStringLiteral("Apps/new.apk"), "org.example.new", "New")});
    EXPECT_EQ(names(storedApps()), QStringList{QStringLiteral("New")});
}

TEST_F(AppLibraryStoreTest, aLibraryThatIsNoBinaryValueIsNone)
{
    addApp(QStringLiteral("App"));
    fakes.settings->setValue(libraryKey, QString::fromUtf8(stored()));
    makeStore();
    EXPECT_TRUE(store->apps().empty());
}

TEST_F(AppLibraryStoreTest, withoutALibraryNothingIsWritten)
{
    EXPECT_EQ(fakes.settings->value(libraryKey), QVariant());
}

TEST_F(AppLibraryStoreTest, unreadMarksAreCopied)
{
    const auto app = addApp(QStringLiteral("App"));
    registry->setUnread(app.id, true);
    EXPECT_EQ(store->unreadAppIDs(), QSet<QUuid>{app.id});
    registry->setUnread(app.id, false);
    EXPECT_TRUE(store->unreadAppIDs().isEmpty());
}

TEST_F(AppLibraryStoreTest, aRequestForAnAppThatIsNoneIsIgnored)
{
    addApp(QStringLiteral("App"));
    fakes.processes->forget();
    for (const auto &id : {QStringLiteral("no id"), QString(), uuidText(QUuid::createUuid())})
        Q_EMIT notifications->openAppRequest(id);
    fakes.settle();
    EXPECT_EQ(store->launchingAppID(), std::nullopt);
    EXPECT_TRUE(fakes.processes->calls().empty());
}

TEST_F(AppLibraryStoreTest, aLibraryThatCannotBeWrittenStaysAsItWasAndTheUserIsTold)
{
    add({putPackage(QStringLiteral("Apps/moon.apk"), "org.example.moon", "Moon")});
    const auto before = store->apps();
    const auto bytes = stored();
    fakes.settings->failure = QStringLiteral("No space left on device");
    const auto refused = QStringLiteral("Could not save the library: No space left on device");

    add({putPackage(QStringLiteral("Apps/sun.apk"), "org.example.sun", "Sun")});
    EXPECT_EQ(status(), refused);
    store->toggleFavorite(before[0]);
    EXPECT_EQ(store->apps(), before);
    store->replaceSource(before[0].id, QUrl::fromLocalFile(QStringLiteral("/elsewhere.apk")), QStringLiteral("a.b"));
    EXPECT_EQ(store->apps(), before);
    store->remove(before[0]);
    EXPECT_EQ(store->apps(), before);
    EXPECT_EQ(status(), refused);
    EXPECT_EQ(stored(), bytes);

    fakes.settings->failure.reset();
    store->toggleFavorite(before[0]);
    EXPECT_TRUE(storedApps().at(0).isFavorite);
}

TEST_F(AppLibraryStoreTest, oneUnknownPlatformStartsEmptyAndTheNextAppOverwrites)
{
    add({putPackage(QStringLiteral("Apps/moon.apk"), "org.example.moon", "Moon")});
    auto bytes = stored();
    fakes.settings->setValue(libraryKey, bytes.replace("\"Android\"", "\"Palm OS\""));
    makeStore();
    EXPECT_TRUE(store->apps().empty());
    EXPECT_TRUE(stored().contains("Palm OS"));
    add({putPackage(QStringLiteral("Apps/sun.apk"), "org.example.sun", "Sun")});
    EXPECT_EQ(names(storedApps()), QStringList{QStringLiteral("Sun")});
}

// Diagnostic pictures.

TEST_F(AppLibraryStoreTest, theSnapshotLiesBesideTheLog)
{
    store->paintPanel = [] { return QImage(30, 20, QImage::Format_RGB32); };
    store->paintGlyph = [] { return QImage(8, 8, QImage::Format_RGB32); };
    store->writeMenuSnapshot();
    EXPECT_EQ(QImage(fakes.path(QStringLiteral("Logs/Quillnest/snapshots/menu-panel.png"))).size(), QSize(30, 20));
    EXPECT_EQ(QImage(fakes.path(QStringLiteral("Logs/Quillnest/snapshots/glyph.png"))).size(), QSize(8, 8));
}

TEST_F(AppLibraryStoreTest, aSnapshotThatFailsEndsSilentlyAndWhatWasWrittenStays)
{
    store->paintPanel = [] { return QImage(30, 20, QImage::Format_RGB32); };
    store->paintGlyph = [] { return QImage(); };
    store->writeMenuSnapshot();
    EXPECT_TRUE(QFile::exists(fakes.path(QStringLiteral("Logs/Quillnest/snapshots/menu-panel.png"))));
    EXPECT_FALSE(QFile::exists(fakes.path(QStringLiteral("Logs/Quillnest/snapshots/glyph.png"))));
}

TEST_F(AppLibraryStoreTest, whatPlaysIsCopiedAndCleared)
{
    const auto id = QUuid::createUuid();
    const AndroidMedia song{QStringLiteral("Song"), QStringLiteral("Singer"), true};
    registry->setNowPlaying(song, id);
    EXPECT_EQ(store->nowPlaying(), song);
    EXPECT_EQ(store->nowPlayingAppID(), id);
    registry->setNowPlaying(std::nullopt, id);
    EXPECT_FALSE(store->nowPlaying());
    EXPECT_FALSE(store->nowPlayingAppID());
}
