#include "core/AppLibraryStore.h"

#include "CoreFixture.h"
#include "core/LibraryFormat.h"
#include "runtime/InstallRecords.h"

using namespace quillnest;

namespace
{

const auto libraryKey = QStringLiteral("Quillnest.apps.v1");

class AppLibraryStoreTest : public CoreFixture
{
protected:
    QByteArray stored() const { return fakes.settings->value(libraryKey).toByteArray(); }
    std::vector<MobileApp> storedApps() const { return LibraryFormat::decode(stored()).value(); }
    MobileApp named(const QString &name) const
    {
        for (const auto &app : store->apps()) {
            if (app.name == name)
                return app;
        }
        throw std::runtime_error("no such app");
    }
    QString status() const { return store->statusMessage(); }
};

} // namespace

// Adding.

TEST_F(AppLibraryStoreTest, aPackageIsAddedUnderItsLabel)
{
    const auto path = putPackage(QStringLiteral("Apps/some-file-v3.apk"), "org.example.app", "My App");
    add({path});
    ASSERT_EQ(store->apps().size(), 1U);
    const auto &app = store->apps()[0];
    EXPECT_EQ(app.name, QStringLiteral("My App"));
    EXPECT_EQ(app.sourcePath, path);
    EXPECT_EQ(app.platform, MobilePlatform::android);
    EXPECT_EQ(app.bundleIdentifier, std::nullopt);
    EXPECT_EQ(app.addedAt, fakes.clock->wallTime());
    EXPECT_FALSE(app.isFavorite);
    EXPECT_FALSE(app.id.isNull());
    EXPECT_EQ(status(), QStringLiteral("Added some-file-v3.apk"));
    EXPECT_EQ(storedApps(), store->apps());
}

TEST_F(AppLibraryStoreTest, aPackageWithoutALabelIsAddedUnderItsFileName)
{
    add({putPackage(QStringLiteral("Apps/some.file.v3.apk"), "org.example.app", "")});
    EXPECT_EQ(store->apps().at(0).name, QStringLiteral("some.file.v3"));
    // Nor does a file need to be readable.
    add({fakes.writeFile(QStringLiteral("Apps/broken.apk"), "no package")});
    EXPECT_EQ(store->apps().at(1).name, QStringLiteral("broken"));
}

TEST_F(AppLibraryStoreTest, anUpperCaseExtensionPasses)
{
    add({putPackage(QStringLiteral("Apps/A.APK"), "org.example.a", "A"), fakes.path(QStringLiteral("Apps/B.Ipa"))});
    ASSERT_EQ(store->apps().size(), 2U);
    EXPECT_EQ(store->apps()[0].platform, MobilePlatform::android);
    EXPECT_EQ(store->apps()[1].platform, MobilePlatform::ios);
    EXPECT_EQ(store->apps()[1].name, QStringLiteral("B"));
}

TEST_F(AppLibraryStoreTest, aFileOfAnotherTypeIsSkipped)
{
    for (const auto *name : {"notes.txt", "noextension", "a.apk.zip", "apk", ".apk"}) {
        const auto path = fakes.writeFile(QStringLiteral("Apps/") + QLatin1String(name), "content");
        add({path});
        EXPECT_EQ(status(), QStringLiteral("Skipped %1: choose an APK or IPA").arg(QLatin1String(name)));
    }
    EXPECT_TRUE(store->apps().empty());
}

TEST_F(AppLibraryStoreTest, theSamePathIsAddedOnceAndAnotherCopyAgain)
{
    const auto path = putPackage(QStringLiteral("Apps/app.1.apk"), "org.example.app", "App");
    add({path});
    add({path});
    EXPECT_EQ(store->apps().size(), 1U);
    EXPECT_EQ(status(), QStringLiteral("Already in library: app.1"));
    add({putPackage(QStringLiteral("Copies/app.1.apk"), "org.example.app", "App")});
    EXPECT_EQ(store->apps().size(), 2U);
}

TEST_F(AppLibraryStoreTest, theSameFileDroppedTwiceAtOnceIsAddedOnce)
{
    const auto url = QUrl::fromLocalFile(putPackage(QStringLiteral("Apps/app.apk"), "org.example.app", "App"));
    // Both drops look at the file before either has added it.
    store->addFiles({url});
    store->addFiles({url});
    fakes.settle();
    EXPECT_EQ(store->apps().size(), 1U);
    EXPECT_EQ(status(), QStringLiteral("Already in library: app"));
}

TEST_F(AppLibraryStoreTest, severalFilesAreAddedInTheirOrderAndTheLastOutcomeStays)
{
    add(
        {putPackage(QStringLiteral("Apps/z.apk"), "org.example.z", "Z"),
         fakes.writeFile(QStringLiteral("Apps/notes.txt"), ""),
         putPackage(QStringLiteral("Apps/a.apk"), "org.example.a", "A")});
    EXPECT_EQ(names(store->apps()), (QStringList{QStringLiteral("Z"), QStringLiteral("A")}));
    EXPECT_EQ(status(), QStringLiteral("Added a.apk"));
}

TEST_F(AppLibraryStoreTest, noFilesChangeNothing)
{
    add({});
    EXPECT_EQ(status(), QStringLiteral("Ready"));
}

TEST_F(AppLibraryStoreTest, theFileStaysWhereItIsAndAsItIs)
{
    const auto path = putPackage(QStringLiteral("Apps/app.apk"), "org.example.app", "App");
    const auto before = fakes.readFile(path);
    add({path});
    EXPECT_EQ(fakes.readFile(path), before);
}

TEST_F(AppLibraryStoreTest, aStoreMayGoWhileAFileIsBeingRead)
{
    const auto path = putPackage(QStringLiteral("Apps/app.apk"), "org.example.app", "App");
    store->addFiles({QUrl::fromLocalFile(path), QUrl::fromLocalFile(path)});
    store.reset();
    fakes.settle();
    EXPECT_TRUE(stored().isEmpty() || storedApps().empty());
}

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

// What the interface is told of Android at the start.

TEST_F(AppLibraryStoreTest, atTheStartTheDeviceIsAsked)
{
    EXPECT_EQ(store->androidState(), AppLibraryStore::AndroidState::sleeping);
    device.listed = true;
    device.booted = true;
    makeStore();
    EXPECT_EQ(store->androidState(), AppLibraryStore::AndroidState::ready);
    QFile::remove(paths.systemImage());
    makeStore();
    EXPECT_EQ(store->androidState(), AppLibraryStore::AndroidState::notSetUp);
}

TEST_F(AppLibraryStoreTest, whenTheDeviceIsToldToStopItSleeps)
{
    device.listed = true;
    device.booted = true;
    makeStore();
    Q_EMIT notifications->runtimeChanged();
    EXPECT_EQ(store->androidState(), AppLibraryStore::AndroidState::sleeping);
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

// What can't be added.

TEST_F(AppLibraryStoreTest, aNameThatIsNoValidTextIsSkippedWithASentence)
{
    const auto folder = QFile::encodeName(fakes.path(QStringLiteral("Apps")));
    QDir().mkpath(QFile::decodeName(folder));
    const QByteArray native = folder + "/caf\xe9.apk";
    std::fclose(std::fopen(native.constData(), "w"));
    store->addFiles({QUrl::fromEncoded("file://" + native.toPercentEncoding("/"))});
    fakes.settle();
    EXPECT_TRUE(store->apps().empty());
    EXPECT_EQ(status(), QStringLiteral("Skipped caf\uFFFD.apk: its name is not valid text"));
}

TEST_F(AppLibraryStoreTest, aNameWithTheReplacementCharacterItselfIsAName)
{
    add({fakes.writeFile(QStringLiteral("Apps/caf\uFFFD.apk"), "")});
    EXPECT_EQ(status(), QStringLiteral("Added caf\uFFFD.apk"));
}

TEST_F(AppLibraryStoreTest, aPathIsKeptAbsolute)
{
    const auto before = QDir::currentPath();
    fakes.writeFile(QStringLiteral("Apps/-rf.apk"), "");
    ASSERT_TRUE(QDir::setCurrent(fakes.path(QStringLiteral("Apps"))));
    add({QStringLiteral("-rf.apk")});
    QDir::setCurrent(before);
    ASSERT_EQ(store->apps().size(), 1U);
    EXPECT_EQ(store->apps()[0].sourcePath, fakes.path(QStringLiteral("Apps/-rf.apk")));
}

TEST_F(AppLibraryStoreTest, anAddressThatIsNoFileIsPassedOver)
{
    store->addFiles(
        {QUrl(QStringLiteral("https://example.org/app.apk")), QUrl(QStringLiteral("-x.apk")),
         QUrl(QStringLiteral("relative/app.apk"))});
    fakes.settle();
    EXPECT_TRUE(store->apps().empty());
    EXPECT_EQ(status(), QStringLiteral("Ready"));
}

TEST_F(AppLibraryStoreTest, whatIsDroppedMeanwhileComesAfterAndItsOutcomeStays)
{
    const auto first = putPackage(QStringLiteral("Apps/first.apk"), "org.example.first", "First");
    const auto second = putPackage(QStringLiteral("Apps/second.apk"), "org.example.second", "Second");
    const auto third = putPackage(QStringLiteral("Apps/third.apk"), "org.example.third", "Third");
    store->addFiles({QUrl::fromLocalFile(first), QUrl::fromLocalFile(second)});
    store->addFiles({QUrl::fromLocalFile(third), QUrl::fromLocalFile(fakes.path(QStringLiteral("Apps/note.txt")))});
    EXPECT_EQ(fakes.executor->pendingInBackground(), 1U) << "one label is read at a time";
    fakes.settle();
    EXPECT_EQ(
        names(store->apps()),
        (QStringList{QStringLiteral("First"), QStringLiteral("Second"), QStringLiteral("Third")}));
    EXPECT_EQ(status(), QStringLiteral("Skipped note.txt: choose an APK or IPA"));
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

// Uninstalling.

class UninstallTest : public AppLibraryStoreTest
{
protected:
    UninstallTest()
    {
        device.listed = true;
        device.booted = true;
        fakes.alerts->button = 0;
        fakes.processes->on(QStringLiteral("adb -s emulator-5556 uninstall"), ScriptedProcesses::Answer{"Success\n"});
    }

    MobileApp installed(const QString &label, const QString &package)
    {
        auto app = addApp(label);
        InstallRecords::write(*fakes.settings, app.sourcePath, QStringLiteral("1-2"), package);
        return app;
    }

    qsizetype uninstalls() const { return fakes.processes->count(QStringLiteral("uninstall")); }
};

TEST_F(UninstallTest, theUserIsAskedFirstAndAnythingButTheFirstButtonEndsIt)
{
    const auto app = installed(QStringLiteral("Moon 1.2"), QStringLiteral("org.example.moon"));
    fakes.alerts->button = 1;
    store->confirmUninstall(app);
    fakes.settle();
    ASSERT_EQ(fakes.alerts->asked.size(), 1U);
    const auto &alert = fakes.alerts->asked[0];
    EXPECT_EQ(alert.message, QStringLiteral("Uninstall Moon?"));
    EXPECT_EQ(alert.informativeText, QStringLiteral("The app and its data are removed from Quillnest's Android."));
    EXPECT_EQ(alert.buttons, (QStringList{QStringLiteral("Uninstall"), QStringLiteral("Cancel")}));
    EXPECT_EQ(alert.style, Alert::Style::warning);
    EXPECT_EQ(store->apps().size(), 1U);
    EXPECT_EQ(uninstalls(), 0);
}

TEST_F(UninstallTest, theAppGoesFromTheDeviceItsRecordsAndTheLibrary)
{
    const auto app = installed(QStringLiteral("Moon"), QStringLiteral("org.example.moon"));
    const auto icon
        = fakes.writeFile(QStringLiteral("Application Support/Quillnest/Icons/%1.png").arg(uuidText(app.id)), "icon");
    store->confirmUninstall(app);
    EXPECT_EQ(status(), QStringLiteral("Uninstalling Moon…"));
    fakes.settle();
    EXPECT_EQ(fakes.processes->count(QStringLiteral("adb -s emulator-5556 uninstall org.example.moon")), 1);
    EXPECT_TRUE(logLines().contains(QStringLiteral("Uninstall org.example.moon: Success")));
    EXPECT_FALSE(fakes.settings->value(InstallRecords::key(app.sourcePath)).isValid());
    EXPECT_FALSE(QFile::exists(icon));
    EXPECT_TRUE(QFile::exists(app.sourcePath)) << "the file is the user's";
    EXPECT_TRUE(store->apps().empty());
    EXPECT_TRUE(storedApps().empty());
    EXPECT_EQ(status(), QStringLiteral("Uninstalled Moon"));
}

TEST_F(UninstallTest, aRefusalByTheDeviceCountsAsDone)
{
    fakes.processes->on(
        QStringLiteral("adb -s emulator-5556 uninstall"),
        ScriptedProcesses::Answer{" Failure [DELETE_FAILED_INTERNAL_ERROR]\n", 1});
    store->confirmUninstall(installed(QStringLiteral("Moon"), QStringLiteral("org.example.moon")));
    fakes.settle();
    EXPECT_TRUE(
        logLines().contains(QStringLiteral("Uninstall org.example.moon: Failure [DELETE_FAILED_INTERNAL_ERROR]")));
    EXPECT_TRUE(store->apps().empty());
}

TEST_F(UninstallTest, anAppThatWasNeverInstalledIsRemovedAtOnceWithoutTheDevice)
{
    const auto app = addApp(QStringLiteral("Moon"));
    fakes.processes->forget();
    store->confirmUninstall(app);
    EXPECT_TRUE(store->apps().empty());
    EXPECT_EQ(status(), QStringLiteral("Removed Moon"));
    fakes.settle();
    EXPECT_TRUE(fakes.processes->lines().isEmpty());
}

TEST_F(UninstallTest, theEntrysOwnPackageGoesBeforeTheRecords)
{
    const auto app = installed(QStringLiteral("Moon"), QStringLiteral("org.example.old"));
    store->replaceSource(app.id, QUrl::fromLocalFile(app.sourcePath), QStringLiteral("org.example.renamed"));
    store->confirmUninstall(store->apps()[0]);
    fakes.settle();
    EXPECT_EQ(fakes.processes->count(QStringLiteral("uninstall org.example.renamed")), 1);
    EXPECT_EQ(uninstalls(), 1);
}

TEST_F(UninstallTest, aPackageNameThatIsNoneNeverReachesTheDevice)
{
    const auto app = installed(QStringLiteral("Moon"), QStringLiteral("org.example.moon"));
    store->replaceSource(app.id, QUrl::fromLocalFile(app.sourcePath), QStringLiteral("a.b; reboot"));
    fakes.processes->forget();
    store->confirmUninstall(store->apps()[0]);
    fakes.settle();
    EXPECT_TRUE(fakes.processes->lines().isEmpty());
    EXPECT_TRUE(store->apps().empty());
}

TEST_F(UninstallTest, aDeviceThatCannotStartKeepsTheEntry)
{
    const auto app = installed(QStringLiteral("Moon"), QStringLiteral("org.example.moon"));
    device.listed = false;
    device.booted = false;
    QFile::remove(paths.emulator());
    store->confirmUninstall(app);
    fakes.settle();
    EXPECT_EQ(status(), QStringLiteral("Uninstall failed: Android tool missing: Android Emulator"));
    EXPECT_EQ(store->apps().size(), 1U);
    EXPECT_TRUE(fakes.settings->value(InstallRecords::key(app.sourcePath)).isValid());
}

TEST_F(UninstallTest, aPackageThatTheProgramPulledItselfIsDeletedAndItsNeighboursAreNot)
{
    const auto pulled = putPackage(
        QStringLiteral("Application Support/Quillnest/Packages/org.example.moon.apk"), "org.example.moon", "Moon");
    const auto neighbour = putPackage(
        QStringLiteral("Application Support/Quillnest/Packages kept/org.example.sun.apk"), "org.example.sun", "Sun");
    const auto outside
        = putPackage(QStringLiteral("Application Support/Quillnest/star.apk"), "org.example.star", "Star");
    add({pulled, neighbour});
    auto library = store->apps();
    for (const auto &app : library)
        InstallRecords::write(*fakes.settings, app.sourcePath, QStringLiteral("1-2"), QStringLiteral("org.example.x"));
    library[1].sourcePath = neighbour;
    MobileApp astray = library[0];
    astray.sourcePath = fakes.path(QStringLiteral("Application Support/Quillnest/Packages/../star.apk"));
    astray.bundleIdentifier = QStringLiteral("org.example.star");
    for (const auto &app : {library[1], astray, library[0]}) {
        store->confirmUninstall(app);
        fakes.settle();
    }
    EXPECT_FALSE(QFile::exists(pulled));
    EXPECT_TRUE(QFile::exists(neighbour));
    EXPECT_TRUE(QFile::exists(outside));
}

TEST_F(UninstallTest, aStoreMayGoWhileTheUserIsAskedAndWhileTheDeviceWorks)
{
    const auto app = installed(QStringLiteral("Moon"), QStringLiteral("org.example.moon"));
    store->confirmUninstall(app);
    store.reset();
    fakes.settle();
    SUCCEED();
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
