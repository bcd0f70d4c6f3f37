#include "runtime/RuntimeRepository.h"

#include "fakes/FakeNetwork.h"
#include "fakes/FakePlatform.h"
#include "runtime/AndroidRuntimePaths.h"
#include "runtime/RepositoryParser.h"
#include "runtime/RuntimeProvisionError.h"

#include <gtest/gtest.h>

using namespace quillnest;

namespace
{

const QUrl tools(QStringLiteral("https://dl.google.com/android/repository/repository2-3.xml"));
const QUrl images(QStringLiteral("https://dl.google.com/android/repository/sys-img/android/sys-img2-3.xml"));

/// A list in the shape of the vendor's, around these elements.
QByteArray list(const QByteArray &content)
{
    return "<?xml version='1.0' encoding='utf-8'?>\n"
           "<sdk:sdk-repository xmlns:sdk='http://schemas.android.com/sdk/android/repo/repository2/03' "
           "xmlns:common='http://schemas.android.com/repository/android/common/02' "
           "xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'>\n"
           "<license id='android-sdk-license' type='text'> Terms &amp; conditions\n  indented \n</license>\n"
           "<license id='android-sdk-arm-dbt-license' type='text'>Other terms</license>\n"
           "<channel id='channel-0'>stable</channel><channel id='channel-3'>canary</channel>\n"
        + content + "</sdk:sdk-repository>\n";
}

QByteArray archive(const QByteArray &url, const QByteArray &os = {}, const QByteArray &arch = {})
{
    return "<archive><complete><size>1234</size><checksum type='sha1'>ABCDEF" + url.toHex().left(4) + "</checksum><url>"
        + url + "</url></complete>" + (os.isEmpty() ? "" : "<host-os>" + os + "</host-os>")
        + (arch.isEmpty() ? "" : "<host-arch>" + arch + "</host-arch>") + "</archive>";
}

QByteArray package(
    const QByteArray &path, const QByteArray &revision, const QByteArray &archives,
    const QByteArray &channel = "channel-0", const QByteArray &license = "android-sdk-license")
{
    const auto parts = revision.split('.');
    return "<remotePackage path='" + path
        + "'><type-details xsi:type='generic:genericDetailsType' xmlns:generic='urn:x'/><revision><major>"
        + parts.value(0) + "</major>" + (parts.size() > 1 ? "<minor>" + parts[1] + "</minor>" : "")
        + (parts.size() > 2 ? "<micro>" + parts[2] + "</micro>" : "") + "</revision><display-name>The " + path
        + "</display-name><uses-license ref='" + license + "'/>"
        + (channel.isEmpty() ? "" : "<channelRef ref='" + channel + "'/>")
        + "<dependencies><dependency path='patcher;v4'/></dependencies><archives>" + archives
        + "</archives></remotePackage>\n";
}

struct Repository {
    explicit Repository(HostProfile profile = HostProfile::appleSilicon()) : fakes(fakePlatform(std::move(profile)))
    {
        fakes.platform.network = network;
    }

    /// Both lists: what they hold of the tools, and of the image.
    void serve(const QByteArray &toolsContent, const QByteArray &imagesContent)
    {
        network->answers[tools] = {200, list(toolsContent)};
        network->answers[images] = {200, list(imagesContent)};
    }

    /// The other packages as they have to be for a plan, and this in place of the emulator.
    void serveEmulator(const QByteArray &content)
    {
        const auto abi = fakes.platform.profile.imageAbi.toLatin1();
        serve(
            package("platform-tools", "35.0.2", archive("pt.zip")) + content,
            package("system-images;android-35;default;" + abi, "9", archive("image.zip")));
    }

    RuntimePlan plan() { return runToEnd(fakes, RuntimeRepository::plan(fakes.platform)); }

    /// The emulator's archive of the plan.
    RuntimeArchive emulator() { return plan().archives.at(1); }

    QString failure()
    {
        try {
            plan();
        } catch (const RuntimeProvisionError &error) {
            return error.description();
        } catch (const NetworkError &error) {
            return QStringLiteral("network: ") + error.description();
        }
        return {};
    }

    FakePlatform fakes;
    std::shared_ptr<FakeNetwork> network = std::make_shared<FakeNetwork>();
};

QString missing(const char *path)
{
    return QStringLiteral("Google's package list has no download for %1 on Apple Silicon").arg(QLatin1String(path));
}

} // namespace

TEST(RuntimeRepository, aBareMachineWantsToolsAndImageInTheirOrder)
{
    const Repository repository;
    const QUrl base(QStringLiteral("https://dl.google.com/android/repository/"));
    const QUrl imageBase(QStringLiteral("https://dl.google.com/android/repository/sys-img/android/"));
    EXPECT_EQ(
        RuntimeRepository::wanted(repository.fakes.platform),
        (std::vector<RuntimeRepository::Wanted>{
            {QStringLiteral("platform-tools"), tools, base},
            {QStringLiteral("emulator"), tools, base},
            {QStringLiteral("system-images;android-35;default;arm64-v8a"), images, imageBase}}));
}

TEST(RuntimeRepository, toolsThatAreThereAreNotWantedAndTheImageAlwaysIs)
{
    const Repository repository;
    const auto &fakes = repository.fakes;
    const auto paths = AndroidRuntimePaths::managed(fakes.platform, 33);
    fakes.settings->setValue(QStringLiteral("QuillnestAndroidAPI"), 33);
    fakes.writeFile(paths.adb().mid(fakes.home->path().size() + 1), "#!", true);
    auto wanted = RuntimeRepository::wanted(fakes.platform);
    ASSERT_EQ(wanted.size(), 2U);
    EXPECT_EQ(wanted[0].path, QStringLiteral("emulator"));
    fakes.writeFile(paths.emulator().mid(fakes.home->path().size() + 1), "#!", false);
    EXPECT_EQ(RuntimeRepository::wanted(fakes.platform).size(), 2U);
    fakes.writeFile(paths.emulator().mid(fakes.home->path().size() + 1), "#!", true);
    wanted = RuntimeRepository::wanted(fakes.platform);
    ASSERT_EQ(wanted.size(), 1U);
    EXPECT_EQ(wanted[0].path, QStringLiteral("system-images;android-33;default;arm64-v8a"));
}

TEST(RuntimeRepository, aPlanHoldsWhatTheListsSay)
{
    Repository repository;
    repository.serve(
        package("platform-tools", "35.0.2", archive("pt-mac.zip", "macosx") + archive("pt-win.zip", "windows"))
            + package("emulator", "35.1", archive("emu.zip", "macosx", "aarch64"), "", "android-sdk-arm-dbt-license"),
        package("system-images;android-35;default;arm64-v8a", "9", archive("arm64-v8a-35_r09.zip")));
    const auto plan = repository.plan();
    ASSERT_EQ(plan.archives.size(), 3U);
    EXPECT_EQ(
        plan.archives[0],
        (RuntimeArchive{
            .packagePath = QStringLiteral("platform-tools"),
            .displayName = QStringLiteral("The platform-tools"),
            .revision = QStringLiteral("35.0.2"),
            .url = QUrl(QStringLiteral("https://dl.google.com/android/repository/pt-mac.zip")),
            .size = 1234,
            .sha1 = QStringLiteral("abcdef7074"),
            .licenseID = QStringLiteral("android-sdk-license")}));
    EXPECT_EQ(plan.archives[1].revision, QStringLiteral("35.1.0"));
    EXPECT_EQ(
        plan.archives[2].url,
        QUrl(QStringLiteral("https://dl.google.com/android/repository/sys-img/android/arm64-v8a-35_r09.zip")));
    EXPECT_EQ(
        plan.licenses,
        (std::vector<RuntimeLicense>{
            {QStringLiteral("android-sdk-arm-dbt-license"), QStringLiteral("Other terms")},
            {QStringLiteral("android-sdk-license"), QStringLiteral(" Terms & conditions\n  indented \n")}}));
    EXPECT_EQ(repository.network->fetched.size(), 2);
}

TEST(RuntimeRepository, linuxTakesItsOwnArchives)
{
    Repository repository(HostProfile::linuxX86_64());
    repository.serveEmulator(package(
        "emulator", "35",
        archive("mac.zip", "macosx", "aarch64") + archive("arm.zip", "linux", "aarch64")
            + archive("linux.zip", "linux", "x64")));
    EXPECT_EQ(repository.emulator().url.fileName(), QStringLiteral("linux.zip"));
    EXPECT_EQ(repository.plan().archives[2].packagePath, QStringLiteral("system-images;android-35;default;x86_64"));
}

TEST(RuntimeRepository, otherChannelsAreIgnoredWhateverTheirRevision)
{
    Repository repository;
    repository.serveEmulator(
        package("emulator", "34.9.9", archive("stable.zip"))
        + package("emulator", "36.0.0", archive("canary.zip"), "channel-3"));
    EXPECT_EQ(repository.emulator().url.fileName(), QStringLiteral("stable.zip"));
    repository.serveEmulator(package("emulator", "36.0.0", archive("canary.zip"), "channel-3"));
    EXPECT_EQ(repository.failure(), missing("emulator"));
}

TEST(RuntimeRepository, aPackageWithoutAChannelCountsAsStable)
{
    Repository repository;
    repository.serveEmulator(package("emulator", "36.0.0", archive("plain.zip"), ""));
    EXPECT_EQ(repository.emulator().url.fileName(), QStringLiteral("plain.zip"));
}

TEST(RuntimeRepository, revisionsCompareAsIntegers)
{
    Repository repository;
    repository.serveEmulator(
        package("emulator", "35.1.2", archive("two.zip")) + package("emulator", "35.1.10", archive("ten.zip"))
        + package("emulator", "35.1.10", archive("later.zip")) + package("emulator", "4.20.30", archive("four.zip")));
    EXPECT_EQ(repository.emulator().url.fileName(), QStringLiteral("ten.zip"));
    EXPECT_EQ(repository.emulator().revision, QStringLiteral("35.1.10"));
}

TEST(RuntimeRepository, anArchiveThatNamesNoHostIsTheFallBack)
{
    Repository repository;
    repository.serveEmulator(package(
        "emulator", "35",
        archive("x86.zip", "macosx", "x86_64") + archive("any.zip") + archive("any-mac.zip", "macosx")));
    EXPECT_EQ(repository.emulator().url.fileName(), QStringLiteral("any.zip"));
    repository.serveEmulator(package(
        "emulator", "35",
        archive("any.zip") + archive("arm.zip", "", "arm64") + archive("late.zip", "macosx", "aarch64")));
    EXPECT_EQ(repository.emulator().url.fileName(), QStringLiteral("arm.zip"));
}

TEST(RuntimeRepository, anArchiveForAnotherProcessorIsNeverChosen)
{
    Repository repository;
    repository.serveEmulator(package("emulator", "35", archive("x86.zip", "macosx", "x86_64")));
    EXPECT_EQ(repository.failure(), missing("emulator"));
}

TEST(RuntimeRepository, anArchiveOutsideAnyPackageLeavesNoTrace)
{
    Repository repository;
    repository.serveEmulator(
        archive("stray.zip") + package("emulator", "35", archive("real.zip")) + archive("stray2.zip"));
    EXPECT_EQ(repository.emulator().url.fileName(), QStringLiteral("real.zip"));
    repository.serveEmulator(archive("stray.zip") + package("emulator", "35", ""));
    EXPECT_EQ(repository.failure(), missing("emulator"));
}

TEST(RuntimeRepository, licenceTextsKeepTheirWhiteSpace)
{
    const auto parsed = parseRepository("<r><license id='a'>\n  one\n  two \n</license><license>lost</license></r>");
    EXPECT_EQ(parsed.licenses.size(), 1);
    EXPECT_EQ(parsed.licenses[QStringLiteral("a")], QStringLiteral("\n  one\n  two \n"));
}

TEST(RuntimeRepository, aRevisionInsideAnArchiveIsNotThePackages)
{
    Repository repository;
    repository.serveEmulator(package(
        "emulator", "35.2.1",
        "<archive><revision><major>99</major></revision><complete><url>a.zip</url></complete>"
        "<patches><patch><based-on><major>34</major></based-on><size>1</size></patch></patches></archive>"));
    EXPECT_EQ(repository.emulator().revision, QStringLiteral("35.2.1"));
}

TEST(RuntimeRepository, addressesAreRelativeToTheListsFolderUnlessTheyAreWhole)
{
    Repository repository;
    repository.serveEmulator(package("emulator", "35", archive("https://example.org/x/emu.zip")));
    EXPECT_EQ(repository.emulator().url, QUrl(QStringLiteral("https://example.org/x/emu.zip")));
    EXPECT_EQ(
        repository.plan().archives[2].url,
        QUrl(QStringLiteral("https://dl.google.com/android/repository/sys-img/android/image.zip")));
    repository.serveEmulator(package("emulator", "35", archive("")));
    EXPECT_EQ(repository.failure(), missing("emulator"));
    repository.serveEmulator(package("emulator", "35", archive("http://[broken")));
    EXPECT_EQ(repository.failure(), missing("emulator"));
}

TEST(RuntimeRepository, aLicenceThatTheListDoesNotHoldAddsNothing)
{
    Repository repository;
    repository.serveEmulator(package("emulator", "35", archive("emu.zip"), "channel-0", "unknown"));
    EXPECT_EQ(repository.emulator().licenseID, QStringLiteral("unknown"));
    EXPECT_EQ(repository.plan().licenses.size(), 1U);
}

TEST(RuntimeRepository, sizesThatDoNotParseAreNothing)
{
    const auto parsed = parseRepository(
        "<r><remotePackage path='p'><revision><major>x</major></revision><archive><size>12 MB</size></archive>"
        "</remotePackage></r>");
    ASSERT_EQ(parsed.packages.size(), 1U);
    EXPECT_EQ(parsed.packages[0].archives[0].size, 0);
    EXPECT_EQ(parsed.packages[0].revision, (std::vector<qint64>{0, 0, 0}));
}

TEST(RuntimeRepository, aRevisionMayCountFurtherThan32Bits)
{
    const auto parsed = parseRepository(
        "<r><remotePackage path='p'><revision><major>20261122003538</major><minor>2</minor></revision>"
        "</remotePackage></r>");
    ASSERT_EQ(parsed.packages.size(), 1U);
    EXPECT_EQ(parsed.packages[0].revision, (std::vector<qint64>{20261122003538, 2, 0}));
}

TEST(RuntimeRepository, prefixesThatNobodyDeclaredDoNotMatter)
{
    const auto parsed = parseRepository(
        "<a:r><b:remotePackage path='p'><c:archive><d:url>u</d:url></c:archive></b:remotePackage></a:r>");
    ASSERT_EQ(parsed.packages.size(), 1U);
    EXPECT_EQ(parsed.packages[0].archives.at(0).url, QStringLiteral("u"));
}

TEST(RuntimeRepository, aListThatIsNotThereSaysSo)
{
    Repository repository;
    repository.serveEmulator(package("emulator", "35", archive("emu.zip")));
    repository.network->answers[images] = {404, "gone"};
    EXPECT_EQ(
        repository.failure(),
        QStringLiteral("Could not read Google's Android package list: HTTP 404 for sys-img2-3.xml"));
    repository.network->answers[images] = {0, ""};
    EXPECT_EQ(
        repository.failure(),
        QStringLiteral("Could not read Google's Android package list: HTTP 0 for sys-img2-3.xml"));
    repository.network->answers.erase(images);
    EXPECT_EQ(repository.failure(), QStringLiteral("network: no answer"));
}

TEST(RuntimeRepository, aGarbledListSaysWhatIsWrongWithIt)
{
    Repository repository;
    repository.serveEmulator(package("emulator", "35", archive("emu.zip")));
    for (const auto *garbage : {"<html><body>Sign in", "", "\x1f\x8b\x08", "<a></b>"}) {
        repository.network->answers[tools].body = garbage;
        const auto failure = repository.failure();
        EXPECT_TRUE(failure.startsWith(QStringLiteral("Could not read Google's Android package list: ")))
            << failure.toStdString();
        EXPECT_GT(failure.size(), 50) << failure.toStdString();
    }
}

TEST(RuntimeRepository, entitiesThatMultiplyEndTheReading)
{
    QByteArray bomb = "<!DOCTYPE r [<!ENTITY a0 'aaaaaaaaaa'>";
    for (int i = 1; i < 12; ++i) {
        const auto name = QByteArray::number(i);
        bomb += "<!ENTITY a" + name + " '" + QByteArray("&a" + QByteArray::number(i - 1) + ";").repeated(10) + "'>";
    }
    bomb += "]><r><license id='x'>&a11;</license></r>";
    EXPECT_THROW(parseRepository(bomb), RuntimeProvisionError);
}
