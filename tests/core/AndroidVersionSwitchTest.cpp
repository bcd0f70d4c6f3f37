#include "LaunchFixture.h"
#include "base/CommandDispatcher.h"
#include "core/CoreCommands.h"
#include "runtime/AndroidVersions.h"

#include <QDir>

using namespace quillnest;

namespace
{

using State = AppLibraryStore::AndroidState;

class AndroidVersionSwitchTest : public LaunchFixture
{
protected:
    AndroidRuntimePaths version(int api) const { return AndroidRuntimePaths::managed(fakes.platform, api); }
    int stored() const { return fakes.settings->value(QStringLiteral("QuillnestAndroidAPI")).toInt(); }
    QString logText() const { return QString::fromUtf8(fakes.readFile(log->path()).value_or(QByteArray())); }
};

} // namespace

TEST_F(AndroidVersionSwitchTest, theSelectedCompleteVersionIsLeftAloneWithItsWindows)
{
    deviceIsUp();
    const auto app = addApp(QStringLiteral("Tide"));
    open(app);
    const auto status = store->statusMessage();
    store->switchAndroidVersion(35);
    fakes.settle();
    EXPECT_NE(registry->session(app.id), nullptr);
    EXPECT_EQ(store->statusMessage(), status);
    EXPECT_FALSE(fakes.settings->value(QStringLiteral("QuillnestAndroidAPI")).isValid());
    EXPECT_FALSE(logText().contains(QStringLiteral("android version")));
}

TEST_F(AndroidVersionSwitchTest, aVersionThatIsThereTakesOver)
{
    install(33);
    deviceIsUp();
    const auto app = addApp(QStringLiteral("Tide"));
    open(app);
    store->switchAndroidVersion(33);
    EXPECT_EQ(store->androidState(), State::sleeping);
    EXPECT_EQ(store->statusMessage(), QStringLiteral("Switched to Android 13"));
    EXPECT_EQ(stored(), 33);
    EXPECT_TRUE(logText().contains(QStringLiteral("android version: switching to API 33")));
    EXPECT_TRUE(logText().contains(QStringLiteral("stopping Android runtime (Android version changed)")));
    EXPECT_EQ(store->apps().size(), 1U);
    ASSERT_TRUE(waitFor([this] { return registry->sessions().empty(); }));
    EXPECT_GE(fakes.processes->count(QStringLiteral("emu kill")), 1);
}

TEST_F(AndroidVersionSwitchTest, aVersionThatIsNotDownloadedClosesAllAndAsksForItsDownload)
{
    deviceIsUp();
    open(addApp(QStringLiteral("Tide")));
    store->switchAndroidVersion(36);
    EXPECT_EQ(store->androidState(), State::notSetUp);
    EXPECT_EQ(store->statusMessage(), QStringLiteral("Android 16 needs a one-time download"));
    EXPECT_TRUE(waitFor([this] { return registry->sessions().empty(); }));
    EXPECT_GE(fakes.processes->count(QStringLiteral("emu kill")), 1);
}

TEST_F(AndroidVersionSwitchTest, aPlanForTheOldVersionIsForgotten)
{
    QDir(version(35).sdkRoot).removeRecursively();
    provisioner->prepare();
    fakes.settle();
    EXPECT_TRUE(std::holds_alternative<AndroidRuntimeProvisioner::Failed>(provisioner->phase()));
    store->switchAndroidVersion(36);
    EXPECT_TRUE(std::holds_alternative<AndroidRuntimeProvisioner::Idle>(provisioner->phase()));
}

TEST_F(AndroidVersionSwitchTest, theSelectedVersionIsRepairedIfItIsNotComplete)
{
    QFile::remove(version(35).systemImage());
    store->switchAndroidVersion(35);
    EXPECT_EQ(store->statusMessage(), QStringLiteral("Android 15 needs a one-time download"));
    EXPECT_EQ(stored(), 35);
}

TEST_F(AndroidVersionSwitchTest, thereAndBackAgain)
{
    install(33);
    store->switchAndroidVersion(33);
    store->switchAndroidVersion(35);
    EXPECT_EQ(store->statusMessage(), QStringLiteral("Switched to Android 15"));
    EXPECT_EQ(AndroidRuntimePaths::current(fakes.platform), version(35));
}

TEST_F(AndroidVersionSwitchTest, theCommandTakesAnyNumberAndAnUnknownOneCountsAsTheDefault)
{
    CommandDispatcher commands(log);
    handleCoreCommands(commands, *store, *registry);
    install(33);
    commands.run(QStringLiteral("android-version:33"));
    EXPECT_EQ(store->statusMessage(), QStringLiteral("Switched to Android 13"));
    commands.run(QStringLiteral("android-version:99"));
    EXPECT_EQ(stored(), 99);
    EXPECT_EQ(AndroidVersions::selected(*fakes.settings), 35);
    EXPECT_EQ(store->androidState(), State::sleeping);
    EXPECT_EQ(store->statusMessage(), QStringLiteral("Switched to Android (API 99)"));
    commands.run(QStringLiteral("android-version:abc"));
    EXPECT_EQ(stored(), 99);
}

TEST_F(AndroidVersionSwitchTest, deletingTheSelectedVersionDoesNothing)
{
    store->deleteAndroidVersion(35);
    fakes.settle();
    EXPECT_TRUE(version(35).isComplete());
    EXPECT_EQ(store->statusMessage(), QStringLiteral("Ready"));
}

TEST_F(AndroidVersionSwitchTest, aDeletedVersionIsNoLongerInstalledAndTheOthersAre)
{
    install(33);
    EXPECT_EQ(AndroidVersions::installed(fakes.platform), (std::vector{33, 35}));
    store->deleteAndroidVersion(33);
    fakes.settle();
    EXPECT_EQ(AndroidVersions::installed(fakes.platform), std::vector{35});
    EXPECT_EQ(store->statusMessage(), QStringLiteral("Deleted Android 13"));
    EXPECT_TRUE(logText().contains(QStringLiteral("android version: deleted API 33")));
    const auto stem = *version(33).avdHome + QLatin1Char('/') + version(33).avdName;
    EXPECT_FALSE(QFile::exists(stem + QStringLiteral(".ini")));
    EXPECT_FALSE(QFile::exists(stem + QStringLiteral(".avd")));
    EXPECT_FALSE(QFile::exists(version(33).systemImage()));
    EXPECT_TRUE(QFile::exists(version(33).emulator()));
}

TEST_F(AndroidVersionSwitchTest, deletingWhatIsNotThereSaysTheSame)
{
    store->deleteAndroidVersion(30);
    fakes.settle();
    EXPECT_EQ(store->statusMessage(), QStringLiteral("Deleted Android 11"));
}

TEST_F(AndroidVersionSwitchTest, aVersionThatIsBeingDeletedCanNotBeSelected)
{
    install(33);
    store->deleteAndroidVersion(33);
    store->switchAndroidVersion(33);
    EXPECT_EQ(AndroidVersions::selected(*fakes.settings), 35);
    EXPECT_EQ(store->statusMessage(), QStringLiteral("Android 13 is just being deleted"));
    int told = 0;
    QObject::connect(store.get(), &AppLibraryStore::androidVersionsChanged, store.get(), [&told] { ++told; });
    fakes.settle();
    EXPECT_EQ(told, 1) << "the interface hears when it is done";
}

TEST_F(AndroidVersionSwitchTest, aChoiceThatCanNotBeWrittenIsNone)
{
    deviceIsUp();
    install(33);
    fakes.processes->forget();
    fakes.settings->failure = QStringLiteral("No space left on device");
    store->switchAndroidVersion(33);
    fakes.settle();
    EXPECT_EQ(store->statusMessage(), QStringLiteral("Could not switch to Android 13: No space left on device"));
    EXPECT_EQ(fakes.processes->count(QStringLiteral("emu kill")), 0);
    EXPECT_EQ(stored(), 0);
}

TEST_F(AndroidVersionSwitchTest, aChoiceInTheSettingsAloneDoesTheSame)
{
    deviceIsUp();
    install(33);
    fakes.processes->forget();
    fakes.settings->setValue(QStringLiteral("QuillnestAndroidAPI"), qint64{33});
    fakes.settle();
    EXPECT_EQ(store->statusMessage(), QStringLiteral("Switched to Android 13"));
    EXPECT_EQ(fakes.processes->count(QStringLiteral("emu kill")), 1);
    fakes.processes->forget();
    deviceIsUp();
    // No version of this number: the default is in force, as it was before.
    fakes.settings->setValue(QStringLiteral("QuillnestAndroidAPI"), qint64{35});
    fakes.settings->setValue(QStringLiteral("QuillnestAndroidAPI"), qint64{99});
    fakes.settle();
    EXPECT_EQ(fakes.processes->count(QStringLiteral("emu kill")), 1);
}

TEST_F(AndroidVersionSwitchTest, oneThatIsBeingDeletedIsArrivedAtWhenItHasGone)
{
    install(33);
    store->deleteAndroidVersion(33);
    fakes.settings->setValue(QStringLiteral("QuillnestAndroidAPI"), qint64{33});
    EXPECT_EQ(store->statusMessage(), QStringLiteral("Ready")) << "it looks complete and is about to vanish";
    fakes.settle();
    EXPECT_EQ(store->statusMessage(), QStringLiteral("Android 13 needs a one-time download"));
    EXPECT_EQ(store->androidState(), State::notSetUp);
}

TEST_F(AndroidVersionSwitchTest, aSwitchStopsTheDeviceOnce)
{
    deviceIsUp();
    install(33);
    fakes.processes->forget();
    store->switchAndroidVersion(33);
    fakes.settle();
    EXPECT_EQ(fakes.processes->count(QStringLiteral("emu kill")), 1);
    EXPECT_EQ(logText().count(QStringLiteral("android version: switching")), 1);
}
