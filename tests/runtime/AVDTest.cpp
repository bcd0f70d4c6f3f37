#include "RuntimeFixture.h"

#include "runtime/AVDDefinition.h"
#include "runtime/AndroidHardware.h"

#include <QFileInfo>

using namespace quillnest;

namespace
{
class AVDTest : public ::testing::Test
{
protected:
    std::optional<QByteArray> avd(const QString &name) const
    {
        return fakes.readFile(QStringLiteral("Application Support/Quillnest/Runtime/avd/") + name);
    }
    void write(int api) const
    {
        AVDDefinition::write(AndroidRuntimePaths::managed(fakes.platform, api), fakes.platform.profile);
    }
    QByteArray applied(const QByteArray &config) const
    {
        const auto paths = AndroidRuntimePaths::managed(fakes.platform, 35);
        const auto path = fakes.writeFile(
            QStringLiteral("Application Support/Quillnest/Runtime/avd/Quillnest.avd/config.ini"), config);
        AndroidHardware::apply(paths, *fakes.settings, fakes.platform.folders);
        return *fakes.readFile(path);
    }

    FakePlatform fakes = fakePlatform(HostProfile::appleSilicon());
};

const QByteArray defaults = "hw.audioOutput=no\nhw.audioInput=no\nhw.camera.back=none\nhw.camera.front=none\n";
} // namespace

TEST_F(AVDTest, theDefaultVersionGetsItsTwoFiles)
{
    write(35);
    const auto folder = fakes.path(QStringLiteral("Application Support/Quillnest/Runtime/avd/Quillnest.avd"));
    EXPECT_EQ(
        avd(QStringLiteral("Quillnest.ini")),
        "avd.ini.encoding=UTF-8\npath=" + folder.toUtf8() + "\npath.rel=avd/Quillnest.avd\ntarget=android-35\n");
    EXPECT_EQ(
        avd(QStringLiteral("Quillnest.avd/config.ini")),
        "AvdId=Quillnest\n"
        "avd.ini.displayname=Quillnest Android 15\n"
        "avd.ini.encoding=UTF-8\n"
        "PlayStore.enabled=false\n"
        "abi.type=arm64-v8a\n"
        "disk.dataPartition.size=6442450944\n"
        "fastboot.forceColdBoot=no\n"
        "fastboot.forceFastBoot=yes\n"
        "hw.accelerometer=no\n"
        "hw.audioInput=no\n"
        "hw.audioOutput=yes\n"
        "hw.battery=yes\n"
        "hw.camera.back=none\n"
        "hw.camera.front=none\n"
        "hw.cpu.arch=arm64\n"
        "hw.cpu.ncore=4\n"
        "hw.dPad=no\n"
        "hw.gps=no\n"
        "hw.gpu.enabled=yes\n"
        "hw.gpu.mode=host\n"
        "hw.keyboard=yes\n"
        "hw.lcd.density=420\n"
        "hw.lcd.height=2400\n"
        "hw.lcd.width=1080\n"
        "hw.mainKeys=no\n"
        "hw.ramSize=2048\n"
        "hw.sdCard=no\n"
        "hw.sensors.orientation=no\n"
        "hw.sensors.proximity=no\n"
        "hw.trackBall=no\n"
        "image.sysdir.1=system-images/android-35/default/arm64-v8a/\n"
        "tag.display=Default Android System Image\n"
        "tag.id=default\n"
        "vm.heapSize=256\n");
}

TEST_F(AVDTest, anotherVersionAndHostHaveTheirOwnValues)
{
    fakes.platform.profile = HostProfile::linuxX86_64();
    write(33);
    EXPECT_TRUE(
        avd(QStringLiteral("Quillnest-33.ini"))->endsWith("path.rel=avd/Quillnest-33.avd\ntarget=android-33\n"));
    const auto config = *avd(QStringLiteral("Quillnest-33.avd/config.ini"));
    EXPECT_TRUE(config.startsWith("AvdId=Quillnest-33\navd.ini.displayname=Quillnest Android 13\n"));
    EXPECT_TRUE(config.contains("\nabi.type=x86_64\n"));
    EXPECT_TRUE(config.contains("\nhw.cpu.arch=x86_64\n"));
    EXPECT_TRUE(config.contains("\nimage.sysdir.1=system-images/android-33/default/x86_64/\n"));
}

TEST_F(AVDTest, withoutAnAvdFolderNothingIsWritten)
{
    AVDDefinition::write(AndroidRuntimePaths::developerSDK(fakes.platform), fakes.platform.profile);
    EXPECT_EQ(
        QDir(fakes.home->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
        QStringList{QStringLiteral("tmp")});
}

TEST_F(AVDTest, aFolderThatCannotBeMadeIsThrown)
{
    fakes.writeFile(QStringLiteral("Application Support/Quillnest/Runtime/avd"), "in the way");
    EXPECT_THROW(write(35), std::runtime_error);
}

TEST_F(AVDTest, aFirstFileThatCannotBeWrittenKeepsTheSecondFromBeingWritten)
{
    QDir().mkpath(fakes.path(QStringLiteral("Application Support/Quillnest/Runtime/avd/Quillnest.ini")));
    EXPECT_THROW(write(35), std::runtime_error);
    EXPECT_FALSE(avd(QStringLiteral("Quillnest.avd/config.ini")));
}

TEST_F(AVDTest, theStreamsSoundTurnsTheEmulatorsOff)
{
    EXPECT_EQ(applied("hw.audioOutput=yes\n" + defaults.mid(18)), defaults);
    fakes.settings->setValue(QStringLiteral("QuillnestForwardAudio"), true);
    EXPECT_TRUE(applied(defaults).contains("hw.audioOutput=no\n"));
    fakes.settings->setValue(QStringLiteral("QuillnestForwardAudio"), false);
    EXPECT_TRUE(applied(defaults).contains("hw.audioOutput=yes\n"));
    fakes.settings->setValue(QStringLiteral("QuillnestForwardAudio"), QStringLiteral("false"));
    EXPECT_TRUE(applied(defaults).contains("hw.audioOutput=no\n"));
}

TEST_F(AVDTest, microphoneAndCamerasFollowTheirSetting)
{
    fakes.settings->setValue(QStringLiteral("QuillnestMicCamera"), true);
    EXPECT_EQ(
        applied(defaults), "hw.audioOutput=no\nhw.audioInput=yes\nhw.camera.back=webcam0\nhw.camera.front=webcam0\n");
}

TEST_F(AVDTest, missingLinesAreInsertedAtTheTop)
{
    EXPECT_EQ(
        applied("a=1\nhw.audioOutput=no\nhw.audioInput=no\nhw.camera.back=none"),
        "hw.camera.front=none\na=1\nhw.audioOutput=no\nhw.audioInput=no\nhw.camera.back=none");
    EXPECT_EQ(applied(""), "hw.camera.front=none\nhw.camera.back=none\nhw.audioInput=no\nhw.audioOutput=no\n");
}

TEST_F(AVDTest, onlyTheFirstOfTwoLinesChanges)
{
    EXPECT_EQ(
        applied("hw.audioInput=yes\n\nhw.audioInput=yes\n" + defaults),
        "hw.audioInput=no\n\nhw.audioInput=yes\n" + defaults);
}

TEST_F(AVDTest, aLongerKeyIsAnotherKey)
{
    EXPECT_EQ(applied("hw.audioInput.extra=1\n" + defaults), "hw.audioInput.extra=1\n" + defaults);
}

TEST_F(AVDTest, aSecondRunDoesNotWrite)
{
    const auto path = fakes.path(QStringLiteral("Application Support/Quillnest/Runtime/avd/Quillnest.avd/config.ini"));
    applied("a=1\n");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    const auto longAgo = QDateTime::fromSecsSinceEpoch(1000000000, Qt::UTC);
    ASSERT_TRUE(file.setFileTime(longAgo, QFileDevice::FileModificationTime));
    file.close();
    AndroidHardware::apply(AndroidRuntimePaths::managed(fakes.platform, 35), *fakes.settings, fakes.platform.folders);
    EXPECT_EQ(QFileInfo(path).lastModified().toUTC(), longAgo);
}

TEST_F(AVDTest, aMissingOrUnreadableConfigurationIsLeftAlone)
{
    AndroidHardware::apply(AndroidRuntimePaths::managed(fakes.platform, 35), *fakes.settings, fakes.platform.folders);
    EXPECT_FALSE(avd(QStringLiteral("Quillnest.avd/config.ini")));
    EXPECT_EQ(applied("a=\xff\n"), "a=\xff\n");
}

TEST_F(AVDTest, theDevelopersAvdLiesInTheEmulatorsOwnFolder)
{
    const auto path = fakes.writeFile(QStringLiteral(".android/avd/Quillnest_Android35.avd/config.ini"), "a=1\n");
    AndroidHardware::apply(AndroidRuntimePaths::developerSDK(fakes.platform), *fakes.settings, fakes.platform.folders);
    EXPECT_TRUE(fakes.readFile(path)->contains("hw.audioOutput=no\n"));
}
