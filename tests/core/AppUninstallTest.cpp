#include "core/AppUninstall.h"

#include "StoreFixture.h"
#include "runtime/InstallRecords.h"

using namespace quillnest;

namespace
{
class AppUninstallTest : public StoreFixture
{
protected:
    AppUninstallTest()
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
} // namespace

TEST_F(AppUninstallTest, theUserIsAskedFirstAndAnythingButTheFirstButtonEndsIt)
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

TEST_F(AppUninstallTest, theAppGoesFromTheDeviceItsRecordsAndTheLibrary)
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

TEST_F(AppUninstallTest, aRefusalByTheDeviceCountsAsDone)
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

TEST_F(AppUninstallTest, anAppThatWasNeverInstalledIsRemovedAtOnceWithoutTheDevice)
{
    const auto app = addApp(QStringLiteral("Moon"));
    fakes.processes->forget();
    store->confirmUninstall(app);
    EXPECT_TRUE(store->apps().empty());
    EXPECT_EQ(status(), QStringLiteral("Removed Moon"));
    fakes.settle();
    EXPECT_TRUE(fakes.processes->lines().isEmpty());
}

TEST_F(AppUninstallTest, theEntrysOwnPackageGoesBeforeTheRecords)
{
    const auto app = installed(QStringLiteral("Moon"), QStringLiteral("org.example.old"));
    store->replaceSource(app.id, QUrl::fromLocalFile(app.sourcePath), QStringLiteral("org.example.renamed"));
    store->confirmUninstall(store->apps()[0]);
    fakes.settle();
    EXPECT_EQ(fakes.processes->count(QStringLiteral("uninstall org.example.renamed")), 1);
    EXPECT_EQ(uninstalls(), 1);
}

TEST_F(AppUninstallTest, aPackageNameThatIsNoneNeverReachesTheDevice)
{
    const auto app = installed(QStringLiteral("Moon"), QStringLiteral("org.example.moon"));
    store->replaceSource(app.id, QUrl::fromLocalFile(app.sourcePath), QStringLiteral("a.b; reboot"));
    fakes.processes->forget();
    store->confirmUninstall(store->apps()[0]);
    fakes.settle();
    EXPECT_TRUE(fakes.processes->lines().isEmpty());
    EXPECT_TRUE(store->apps().empty());
}

TEST_F(AppUninstallTest, aDeviceThatCannotStartKeepsTheEntry)
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

TEST_F(AppUninstallTest, aPackageThatTheProgramPulledItselfIsDeletedAndItsNeighboursAreNot)
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

TEST_F(AppUninstallTest, aStoreMayGoWhileTheUserIsAskedAndWhileTheDeviceWorks)
{
    const auto app = installed(QStringLiteral("Moon"), QStringLiteral("org.example.moon"));
    store->confirmUninstall(app);
    store.reset();
    fakes.settle();
    SUCCEED();
}
