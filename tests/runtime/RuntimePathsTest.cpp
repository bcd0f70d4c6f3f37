#include "RuntimeFixture.h"

#include "runtime/AndroidVersions.h"

using namespace quillnest;

namespace
{
const auto apiKey = QStringLiteral("QuillnestAndroidAPI");
const auto developerKey = QStringLiteral("QuillnestUseDeveloperSDK");

/// Begins with a managed installation of API 35 alone.
class RuntimePathsTest : public RuntimeFixture
{
protected:
    AndroidRuntimePaths current() const { return AndroidRuntimePaths::current(fakes.platform); }
    AndroidRuntimePaths managed(int api) const { return AndroidRuntimePaths::managed(fakes.platform, api); }
    AndroidRuntimePaths developer() const { return AndroidRuntimePaths::developerSDK(fakes.platform); }
    void select(const QVariant &api) { fakes.settings->setValue(apiKey, api); }
    void removeManaged() { QDir(AndroidRuntimePaths::managedRoot(fakes.platform)).removeRecursively(); }
};
} // namespace

TEST_F(RuntimePathsTest, managedInstallationsShareSdkAndAvdFolder)
{
    const auto root = fakes.path(QStringLiteral("Application Support/Quillnest/Runtime"));
    EXPECT_EQ(
        managed(35),
        (AndroidRuntimePaths{
            root + QStringLiteral("/sdk"), root + QStringLiteral("/avd"), QStringLiteral("Quillnest"), true, 35,
            QStringLiteral("x86_64")}));
    EXPECT_EQ(
        managed(33),
        (AndroidRuntimePaths{
            root + QStringLiteral("/sdk"), root + QStringLiteral("/avd"), QStringLiteral("Quillnest-33"), true, 33,
            QStringLiteral("x86_64")}));
    EXPECT_EQ(
        managed(33).systemImage(), root + QStringLiteral("/sdk/system-images/android-33/default/x86_64/system.img"));
}

TEST_F(RuntimePathsTest, theDevelopersSdkIsAlwaysApi35)
{
    select(33);
    EXPECT_EQ(
        developer(),
        (AndroidRuntimePaths{
            fakes.path(QStringLiteral("Android/Sdk")), std::nullopt, QStringLiteral("Quillnest_Android35"), false, 35,
            QStringLiteral("x86_64")}));
}

TEST(RuntimePaths, appleSiliconHasItsOwnPlaces)
{
    const auto fakes = fakePlatform(HostProfile::appleSilicon());
    const auto developer = AndroidRuntimePaths::developerSDK(fakes.platform);
    EXPECT_EQ(developer.sdkRoot, fakes.path(QStringLiteral("Library/Android/sdk")));
    EXPECT_EQ(
        developer.systemImage(),
        fakes.path(QStringLiteral("Library/Android/sdk/system-images/android-35/default/arm64-v8a/system.img")));
    EXPECT_EQ(developer.adb(), fakes.path(QStringLiteral("Library/Android/sdk/platform-tools/adb")));
    EXPECT_EQ(developer.emulator(), fakes.path(QStringLiteral("Library/Android/sdk/emulator/emulator")));
    EXPECT_EQ(
        developer.apkanalyzer(),
        fakes.path(QStringLiteral("Library/Android/sdk/cmdline-tools/latest/bin/apkanalyzer")));
}

TEST_F(RuntimePathsTest, anyValueOutsideTheTableReadsAs35)
{
    EXPECT_EQ(AndroidVersions::selected(*fakes.settings), 35);
    for (const QVariant &value :
         {QVariant(0), QVariant(29), QVariant(37), QVariant(-1), QVariant(qint64{1} << 40), QVariant(true),
          QVariant(QStringLiteral("33"))}) {
        select(value);
        EXPECT_EQ(AndroidVersions::selected(*fakes.settings), 35) << value.toString().toStdString();
        EXPECT_EQ(current(), managed(35));
    }
    for (const int api : {30, 31, 32, 33, 34, 35, 36}) {
        select(api);
        EXPECT_EQ(AndroidVersions::selected(*fakes.settings), api);
    }
}

TEST_F(RuntimePathsTest, versionsHaveNames)
{
    EXPECT_EQ(AndroidVersions::name(30), QStringLiteral("Android 11"));
    EXPECT_EQ(AndroidVersions::name(32), QStringLiteral("Android 12L"));
    EXPECT_EQ(AndroidVersions::name(36), QStringLiteral("Android 16"));
    EXPECT_EQ(AndroidVersions::name(29), QStringLiteral("Android (API 29)"));
}

TEST_F(RuntimePathsTest, everyPartOfAnInstallationIsNeeded)
{
    ASSERT_TRUE(managed(35).isComplete());
    const QStringList parts{
        managed(35).adb(), managed(35).emulator(), managed(35).systemImage(),
        *managed(35).avdHome + QStringLiteral("/Quillnest.ini")};
    for (const auto &part : parts) {
        QFile::remove(part);
        EXPECT_FALSE(managed(35).isComplete()) << part.toStdString();
        EXPECT_TRUE(AndroidVersions::installed(fakes.platform).empty());
        install(35);
    }
    QFile::setPermissions(managed(35).adb(), QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    EXPECT_FALSE(managed(35).isComplete());
}

TEST_F(RuntimePathsTest, installedVersionsComeInTableOrder)
{
    install(36);
    install(30);
    EXPECT_EQ(AndroidVersions::installed(fakes.platform), (std::vector<int>{30, 35, 36}));
}

TEST_F(RuntimePathsTest, theDevelopersAvdIsNotLookedFor)
{
    place(developer());
    EXPECT_TRUE(developer().isComplete());
}

TEST_F(RuntimePathsTest, theDevelopersSdkIsUsedWhenAskedForAndComplete)
{
    fakes.settings->setValue(developerKey, true);
    EXPECT_EQ(current(), managed(35));
    place(developer());
    EXPECT_EQ(current(), developer());
    select(33);
    EXPECT_EQ(current(), developer());
    fakes.settings->setValue(developerKey, false);
    EXPECT_EQ(current(), managed(33));
}

TEST_F(RuntimePathsTest, aFreshMachineFallsBackForApi35Alone)
{
    removeManaged();
    EXPECT_EQ(current(), developer());
    EXPECT_FALSE(current().isComplete());
    select(33);
    EXPECT_EQ(current(), managed(33));
}
