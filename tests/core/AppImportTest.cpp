#include "core/AppImport.h"

#include "StoreFixture.h"

using namespace quillnest;

namespace
{
class AppImportTest : public StoreFixture
{
};
} // namespace

TEST_F(AppImportTest, aPackageIsAddedUnderItsLabel)
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

TEST_F(AppImportTest, aPackageWithoutALabelIsAddedUnderItsFileName)
{
    add({putPackage(QStringLiteral("Apps/some.file.v3.apk"), "org.example.app", "")});
    EXPECT_EQ(store->apps().at(0).name, QStringLiteral("some.file.v3"));
    // Nor does a file need to be readable.
    add({fakes.writeFile(QStringLiteral("Apps/broken.apk"), "no package")});
    EXPECT_EQ(store->apps().at(1).name, QStringLiteral("broken"));
}

TEST_F(AppImportTest, anUpperCaseExtensionPasses)
{
    add(
        {putPackage(QStringLiteral("Apps/A.APK"), "org.example.a", "A"),
         fakes.writeFile(QStringLiteral("Apps/B.Ipa"), "")});
    ASSERT_EQ(store->apps().size(), 2U);
    EXPECT_EQ(store->apps()[0].platform, MobilePlatform::android);
    EXPECT_EQ(store->apps()[1].platform, MobilePlatform::ios);
    EXPECT_EQ(store->apps()[1].name, QStringLiteral("B"));
}

TEST_F(AppImportTest, aFileOfAnotherTypeIsSkipped)
{
    for (const auto *name : {"notes.txt", "noextension", "a.apk.zip", "apk", ".apk"}) {
        const auto path = fakes.writeFile(QStringLiteral("Apps/") + QLatin1String(name), "content");
        add({path});
        EXPECT_EQ(status(), QStringLiteral("Skipped %1: choose an APK or IPA").arg(QLatin1String(name)));
    }
    EXPECT_TRUE(store->apps().empty());
}

TEST_F(AppImportTest, theSamePathIsAddedOnce)
{
    const auto path = putPackage(QStringLiteral("Apps/app.1.apk"), "org.example.app", "App");
    add({path});
    add({path});
    EXPECT_EQ(store->apps().size(), 1U);
    EXPECT_EQ(status(), QStringLiteral("Already in library: App"));
}

TEST_F(AppImportTest, anotherFileOfAPackageTakesThePlaceOfTheFirst)
{
    const auto first = addApp(QStringLiteral("Tide"));
    store->rename(first.id, QStringLiteral("My Tide"));
    add({putPackage(QStringLiteral("Apps/tide-2.apk"), "org.example.tide", "Tide 2")});
    EXPECT_EQ(names(store->apps()), QStringList{QStringLiteral("My Tide")});
    EXPECT_EQ(store->apps()[0].id, first.id);
    EXPECT_EQ(store->apps()[0].sourcePath, fakes.path(QStringLiteral("Apps/tide-2.apk")));
    EXPECT_EQ(status(), QStringLiteral("Already in library: My Tide, which now comes from tide-2.apk"));
    // The next start knows it as well, and an entry whose package is told besides.
    makeStore();
    add({putPackage(QStringLiteral("Apps/tide-3.apk"), "org.example.tide", "Tide 3")});
    EXPECT_EQ(store->apps().size(), 1U);
    store->replaceSource(first.id, QUrl::fromLocalFile(first.sourcePath), QStringLiteral("org.example.told"));
    add(
        {putPackage(QStringLiteral("Apps/tide-3.apk"), "org.example.tide", "Tide 3"),
         putPackage(QStringLiteral("Apps/told.apk"), "org.example.told", "Told")});
    EXPECT_EQ(names(store->apps()), (QStringList{QStringLiteral("My Tide"), QStringLiteral("Tide 3")}));
    EXPECT_EQ(store->apps()[0].sourcePath, fakes.path(QStringLiteral("Apps/told.apk")));
}

TEST_F(AppImportTest, filesWithoutAPackageNameAreEachAnAppOfTheirOwn)
{
    add(
        {putPackage(QStringLiteral("Apps/a.apk"), "", "A"), putPackage(QStringLiteral("Apps/b.apk"), "", "B"),
         fakes.writeFile(QStringLiteral("Apps/c.apk"), "none")});
    EXPECT_EQ(store->apps().size(), 3U);
}

TEST_F(AppImportTest, theManifestsOfTheLibraryAreReadOnce)
{
    addApp(QStringLiteral("One"));
    addApp(QStringLiteral("Two"));
    makeStore();
    fakes.archives->opened.clear();
    addApp(QStringLiteral("Three"));
    addApp(QStringLiteral("Four"));
    // The label and the name of each new one, and the names of the two that were there.
    EXPECT_EQ(fakes.archives->opened.size(), 6U);
}

TEST_F(AppImportTest, whatIsNoFileIsSkippedWithASentence)
{
    QDir().mkpath(fakes.path(QStringLiteral("Apps/folder.apk")));
    for (const auto *name : {"gone.apk", "folder.apk", "gone.ipa"}) {
        add({fakes.path(QStringLiteral("Apps/") + QLatin1String(name))});
        EXPECT_EQ(status(), QStringLiteral("Skipped %1: there is no such file").arg(QLatin1String(name)));
    }
    EXPECT_TRUE(store->apps().empty());
}

TEST_F(AppImportTest, theSameFileDroppedTwiceAtOnceIsAddedOnce)
{
    const auto url = QUrl::fromLocalFile(putPackage(QStringLiteral("Apps/app.apk"), "org.example.app", "App"));
    // Both drops look at the file before either has added it.
    store->addFiles({url});
    store->addFiles({url});
    fakes.settle();
    EXPECT_EQ(store->apps().size(), 1U);
    EXPECT_EQ(status(), QStringLiteral("Already in library: App"));
}

TEST_F(AppImportTest, severalFilesAreAddedInTheirOrderAndTheLastOutcomeStays)
{
    add(
        {putPackage(QStringLiteral("Apps/z.apk"), "org.example.z", "Z"),
         fakes.writeFile(QStringLiteral("Apps/notes.txt"), ""),
         putPackage(QStringLiteral("Apps/a.apk"), "org.example.a", "A")});
    EXPECT_EQ(names(store->apps()), (QStringList{QStringLiteral("Z"), QStringLiteral("A")}));
    EXPECT_EQ(status(), QStringLiteral("Added a.apk"));
}

TEST_F(AppImportTest, noFilesChangeNothing)
{
    add({});
    EXPECT_EQ(status(), QStringLiteral("Ready"));
}

TEST_F(AppImportTest, theFileStaysWhereItIsAndAsItIs)
{
    const auto path = putPackage(QStringLiteral("Apps/app.apk"), "org.example.app", "App");
    const auto before = fakes.readFile(path);
    add({path});
    EXPECT_EQ(fakes.readFile(path), before);
}

TEST_F(AppImportTest, aStoreMayGoWhileAFileIsBeingRead)
{
    const auto path = putPackage(QStringLiteral("Apps/app.apk"), "org.example.app", "App");
    store->addFiles({QUrl::fromLocalFile(path), QUrl::fromLocalFile(path)});
    store.reset();
    fakes.settle();
    EXPECT_TRUE(stored().isEmpty() || storedApps().empty());
}

TEST_F(AppImportTest, aNameThatIsNoValidTextIsSkippedWithASentence)
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

TEST_F(AppImportTest, aNameWithTheReplacementCharacterItselfIsAName)
{
    add({fakes.writeFile(QStringLiteral("Apps/caf\uFFFD.apk"), "")});
    EXPECT_EQ(status(), QStringLiteral("Added caf\uFFFD.apk"));
}

TEST_F(AppImportTest, aPathIsKeptAbsolute)
{
    const auto before = QDir::currentPath();
    fakes.writeFile(QStringLiteral("Apps/-rf.apk"), "");
    ASSERT_TRUE(QDir::setCurrent(fakes.path(QStringLiteral("Apps"))));
    add({QStringLiteral("-rf.apk")});
    QDir::setCurrent(before);
    ASSERT_EQ(store->apps().size(), 1U);
    EXPECT_EQ(store->apps()[0].sourcePath, fakes.path(QStringLiteral("Apps/-rf.apk")));
}

TEST_F(AppImportTest, anAddressThatIsNoFileIsPassedOver)
{
    store->addFiles(
        {QUrl(QStringLiteral("https://example.org/app.apk")), QUrl(QStringLiteral("-x.apk")),
         QUrl(QStringLiteral("relative/app.apk"))});
    fakes.settle();
    EXPECT_TRUE(store->apps().empty());
    EXPECT_EQ(status(), QStringLiteral("Ready"));
}

TEST_F(AppImportTest, whatIsDroppedMeanwhileComesAfterAndItsOutcomeStays)
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

TEST_F(AppImportTest, aLabelIsKeptOnOneShortLineWithoutWhatCommands)
{
    add({putPackage(
        QStringLiteral("Apps/a.apk"), "org.example.a",
        "  Moon\n\x1b[31m \xe2\x80\xae"
        "gpj.exe ")});
    EXPECT_EQ(store->apps().back().name, QStringLiteral("Moon  [31m  gpj.exe"));
    add({putPackage(QStringLiteral("Apps/b.apk"), "org.example.b", QByteArray(1'000'000, '-').toStdString())});
    EXPECT_EQ(store->apps().back().name, QString(200, u'-'));
    // A pair of surrogates is kept or left out as a whole.
    add({putPackage(
        QStringLiteral("Apps/c.apk"), "org.example.c", (QByteArray(199, 'x') + "\xf0\x9f\x98\x80").toStdString())});
    EXPECT_EQ(store->apps().back().name, QString(199, u'x'));
    add({putPackage(QStringLiteral("Apps/d.apk"), "org.example.d", "\x01 \n")});
    EXPECT_EQ(store->apps().back().name, QStringLiteral("d")) << "nothing of it is to be seen";
}
