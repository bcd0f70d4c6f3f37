#include "RuntimeFixture.h"

#include "package/PackageBuilder.h"
#include "runtime/AndroidRuntimeCLI.h"
#include "runtime/AndroidRuntimeError.h"
#include "runtime/InstallRecords.h"
#include "runtime/PackageName.h"

#include <fcntl.h>
#include <sys/stat.h>

using namespace quillnest;

namespace
{
class AppInstallerTest : public RuntimeFixture
{
protected:
    AppInstallerTest()
    {
        device.listed = true;
        device.booted = true;
        fakes.processes->on(QStringLiteral("pm list packages -3"), [this](const ChildCommand &) {
            QByteArray answer;
            for (const auto &name : packages)
                answer += "package:" + name + "\r\n";
            return ScriptedProcesses::Answer{answer};
        });
        fakes.processes->on(QStringLiteral("adb -s emulator-5556 install"), [this](const ChildCommand &) {
            packages += installs;
            return ScriptedProcesses::Answer{"Success\n"};
        });
        fakes.processes->on(QStringLiteral("resolve-activity"), [this](const ChildCommand &) {
            return ScriptedProcesses::Answer{resolved};
        });
        fakes.processes->on(QStringLiteral("pm path"), [this](const ChildCommand &command) {
            const bool there = packages.contains(command.arguments.back().toUtf8());
            return ScriptedProcesses::Answer{there ? "package:/data/app/base.apk\n" : "", there ? 0 : 1};
        });
        setManifestPackage("org.example.app");
    }

    /// Nothing for an APK whose manifest can't be read.
    void setManifestPackage(const std::optional<std::string> &name)
    {
        auto &entries = fakes.archives->packages[apk.toStdString()];
        entries.clear();
        if (name) {
            entries.emplace_back(
                "AndroidManifest.xml",
                build::xmlFile({build::pool({"manifest", "package", *name}), build::startElement(0, {{1, 2}})}));
        }
    }

    QString install() { return runToEnd<QString>(fakes, cli.installAndLaunch(apk)); }
    qsizetype installCount() const { return fakes.processes->count(QStringLiteral(" install --no-streaming -r ")); }
    std::optional<QString> failure()
    {
        try {
            install();
        } catch (const AndroidRuntimeError &error) {
            return error.description();
        }
        return std::nullopt;
    }

    QString apk = fakes.writeFile(QStringLiteral("Apps/some app.apk"), "content");
    QList<QByteArray> packages{"org.other.one", "org.other.two"};
    QList<QByteArray> installs{"org.example.app"};
    QByteArray resolved = "priority=0 preferredOrder=0\norg.example.app/.MainActivity\n";
    AndroidRuntimeCLI cli{fakes.platform, log};
};
} // namespace

TEST_F(AppInstallerTest, installsResolvesRecordsAndReturnsThePackage)
{
    EXPECT_EQ(install(), QStringLiteral("org.example.app"));
    const auto lines = fakes.processes->lines();
    EXPECT_TRUE(
        lines.contains(QStringLiteral("%1 -s emulator-5556 install --no-streaming -r %2").arg(paths.adb(), apk)));
    EXPECT_TRUE(lines.last().endsWith(QStringLiteral("shell cmd package resolve-activity --brief org.example.app")));
    const auto record = fakes.settings->value(QStringLiteral("Quillnest.installed.") + apk).toMap();
    EXPECT_EQ(record.value(QStringLiteral("package")).toString(), QStringLiteral("org.example.app"));
    EXPECT_EQ(record.value(QStringLiteral("fingerprint")).toString(), InstallRecords::fingerprint(apk));
    EXPECT_EQ(
        logLines(),
        (QStringList{
            QStringLiteral("launch begin apk=some app.apk runtimeBooted=true"),
            QStringLiteral("runtime ready after=0.00s"),
            QStringLiteral("installed package=org.example.app install+resolve=0.00s")}));
}

TEST_F(AppInstallerTest, aRepeatLaunchOfAnUnchangedFileCostsOneCommand)
{
    install();
    fakes.processes->forget();
    EXPECT_EQ(install(), QStringLiteral("org.example.app"));
    const auto lines = fakes.processes->lines();
    // Two looks for the log and the runtime, two more for the runtime, one for the app.
    ASSERT_EQ(lines.size(), 5);
    EXPECT_TRUE(lines.last().endsWith(QStringLiteral("shell pm path org.example.app")));
    EXPECT_EQ(logLines().last(), QStringLiteral("already installed package=org.example.app check=0.00s"));
}

TEST_F(AppInstallerTest, aTouchedFileIsInstalledAgainThoughItsPackageIsKnown)
{
    install();
    QFile file(apk);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.setFileTime(QDateTime::currentDateTimeUtc().addSecs(-3600), QFileDevice::FileModificationTime));
    file.close();
    EXPECT_EQ(cli.knownPackage(apk), QStringLiteral("org.example.app"));
    install();
    EXPECT_EQ(installCount(), 2);
}

TEST_F(AppInstallerTest, anAppThatWasRemovedOnTheDeviceIsInstalledAgain)
{
    install();
    packages.removeAll("org.example.app");
    install();
    EXPECT_EQ(installCount(), 2);
}

TEST_F(AppInstallerTest, anAnswerOfPmPathWithoutAPackageInstallsAgain)
{
    install();
    fakes.processes->on(QStringLiteral("pm path"), QByteArray("\n"));
    install();
    EXPECT_EQ(installCount(), 2);
}

TEST_F(AppInstallerTest, withoutANameTheNewPackageIsTaken)
{
    setManifestPackage(std::nullopt);
    EXPECT_EQ(install(), QStringLiteral("org.example.app"));
}

TEST_F(AppInstallerTest, whatTheDeviceSaysIsNewCountsMoreThanTheManifest)
{
    // Another app that is there, which an uninstall would take.
    setManifestPackage("org.other.one");
    EXPECT_EQ(install(), QStringLiteral("org.example.app"));
    EXPECT_EQ(cli.knownPackage(apk), QStringLiteral("org.example.app"));
    EXPECT_TRUE(
        logLines().contains(QStringLiteral("package name differs manifest=org.other.one device=org.example.app")));
}

TEST_F(AppInstallerTest, amongSeveralNewPackagesTheManifestsIsTaken)
{
    installs = {"org.a.a", "org.example.app", "org.z.z"};
    EXPECT_EQ(install(), QStringLiteral("org.example.app"));
}

TEST_F(AppInstallerTest, anUpdateIsTheManifestsPackage)
{
    packages.append("org.example.app");
    installs = {};
    EXPECT_EQ(install(), QStringLiteral("org.example.app"));
}

TEST_F(AppInstallerTest, anUpdateOfAnAppOfTheSystemIsThatApp)
{
    // Such an app isn't among the listed ones.
    installs = {};
    fakes.processes->on(QStringLiteral("pm path org.example.app"), QByteArray("package:/system/app/app.apk\n"));
    EXPECT_EQ(install(), QStringLiteral("org.example.app"));
}

TEST_F(AppInstallerTest, aPackageThatTheDeviceDoesNotHaveIsNeverRecorded)
{
    installs = {};
    EXPECT_EQ(
        failure(),
        QStringLiteral(
            "Android has no app org.example.app after the installation; the file may be damaged, get it anew"));
    EXPECT_EQ(cli.knownPackage(apk), std::nullopt);
}

TEST_F(AppInstallerTest, anUpdateWithoutANameAmongSeveralPackagesCannotBeTold)
{
    setManifestPackage(std::nullopt);
    packages.append("org.example.app");
    EXPECT_EQ(failure(), QStringLiteral("Could not read the APK package name"));
    EXPECT_EQ(cli.knownPackage(apk), std::nullopt);
}

TEST_F(AppInstallerTest, anUpdateWithoutANameOfTheOnlyPackageIsThatPackage)
{
    setManifestPackage("");
    packages = {"org.example.app"};
    installs = {};
    EXPECT_EQ(install(), QStringLiteral("org.example.app"));
}

TEST_F(AppInstallerTest, aNameThatIsNoPackageNameNeverReachesTheDevice)
{
    setManifestPackage("org.example.app; rm -rf /sdcard");
    EXPECT_EQ(install(), QStringLiteral("org.example.app"));
    EXPECT_EQ(fakes.processes->count(QStringLiteral("rm -rf")), 0);

    packages = {"org.other.one"};
    installs = {"a;reboot"};
    EXPECT_EQ(failure(), QStringLiteral("Could not read the APK package name"));
    EXPECT_EQ(fakes.processes->count(QStringLiteral("reboot")), 0);
}

TEST_F(AppInstallerTest, aRecordWithANameThatIsNoPackageNameIsPassedOver)
{
    InstallRecords::write(*fakes.settings, apk, InstallRecords::fingerprint(apk), QStringLiteral("x;reboot"));
    EXPECT_EQ(install(), QStringLiteral("org.example.app"));
    EXPECT_EQ(fakes.processes->count(QStringLiteral("reboot")), 0);
}

TEST_F(AppInstallerTest, aFailedInstallSaysWhatAdbSaid)
{
    fakes.processes->on(
        QStringLiteral(" install --no-streaming"),
        ScriptedProcesses::Answer{"\nadb: failed to install: INSTALL_FAILED_NO_MATCHING_ABIS\n", 1});
    EXPECT_EQ(
        failure(),
        QStringLiteral("The app is made for another kind of processor. Look for a universal file, or one for this "
                       "processor. (adb: failed to install: INSTALL_FAILED_NO_MATCHING_ABIS)"));
    EXPECT_EQ(cli.knownPackage(apk), std::nullopt);
}

TEST_F(AppInstallerTest, anAppWithoutAnActivityGetsNoRecordAndIsInstalledAgain)
{
    resolved = "No activity found\n";
    EXPECT_EQ(failure(), QStringLiteral("No launchable activity found for org.example.app"));
    EXPECT_EQ(failure(), QStringLiteral("No launchable activity found for org.example.app"));
    EXPECT_EQ(installCount(), 2);
    EXPECT_EQ(cli.knownPackage(apk), std::nullopt);
}

TEST_F(AppInstallerTest, aFailedBootIsTheLaunchsFailure)
{
    device = {.looksUntilBooted = 1000000};
    EXPECT_EQ(failure(), QStringLiteral("Quillnest Android did not finish starting"));
    EXPECT_EQ(installCount(), 0);
}

TEST_F(AppInstallerTest, aFailedListBeforeOrAfterIsTheLaunchsFailure)
{
    fakes.processes->on(QStringLiteral("pm list packages -3"), ScriptedProcesses::Answer{"device offline", 1});
    EXPECT_EQ(failure(), QStringLiteral("device offline"));
    EXPECT_EQ(installCount(), 0);
}

TEST_F(AppInstallerTest, thirdPartyPackagesTakesPrefixedLinesOnly)
{
    fakes.processes->on(
        QStringLiteral("pm list packages -3"),
        QByteArray("WARNING: linker\npackage:org.a.b\r\n  package:org.c.d  \n\npackages:no\n"));
    EXPECT_EQ(
        cli.commands()->thirdPartyPackages(), (QSet<QString>{QStringLiteral("org.a.b"), QStringLiteral("org.c.d")}));
}

TEST_F(AppInstallerTest, withoutAManifestTheAnalyzerIsAsked)
{
    setManifestPackage(std::nullopt);
    EXPECT_THROW(cli.packageIdentifier(apk), AndroidRuntimeError);
    QFile tool(paths.apkanalyzer());
    QDir().mkpath(QFileInfo(tool).path());
    ASSERT_TRUE(tool.open(QIODevice::WriteOnly));
    tool.setPermissions(tool.permissions() | QFileDevice::ExeOwner | QFileDevice::ExeUser);
    tool.close();
    const auto identifier = [this](const QByteArray &answer) {
        fakes.processes->on(QStringLiteral("apkanalyzer manifest application-id ") + apk, answer);
        return cli.packageIdentifier(apk);
    };
    EXPECT_EQ(identifier(" org.analyzed.app \n"), QStringLiteral("org.analyzed.app"));
    EXPECT_THROW(identifier("\n"), AndroidRuntimeError);
    EXPECT_THROW(identifier("two words"), AndroidRuntimeError);
}

TEST_F(AppInstallerTest, rememberedPackagesSkipTheInstall)
{
    packages.append("org.updated.app");
    cli.rememberInstalled(apk, QStringLiteral("org.updated.app"));
    EXPECT_EQ(install(), QStringLiteral("org.updated.app"));
    EXPECT_EQ(installCount(), 0);
}

TEST_F(AppInstallerTest, theFacadeMayGoDuringAnInstall)
{
    auto runtime = std::make_unique<AndroidRuntimeCLI>(fakes.platform, log);
    bool cancelled = false;
    [](AndroidRuntimeCLI *owner, QString path, bool *ended) -> Task<> {
        try {
            co_await owner->installAndLaunch(path);
        } catch (const AndroidRuntimeCancelled &) {
            *ended = true;
        }
    }(runtime.get(), apk, &cancelled);
    runtime.reset();
    fakes.runUntil([&cancelled] { return cancelled; });
    EXPECT_EQ(installCount(), 0);
}

TEST(InstallRecords, aFileWithoutAttributesHasAFingerprintOfTheDistantPast)
{
    EXPECT_EQ(InstallRecords::fingerprint(QStringLiteral("/nowhere/at all.apk")), QStringLiteral("-1--62135769600"));
}

TEST(InstallRecords, theFingerprintHoldsSizeAndTimeInItsShortestForm)
{
    const auto fakes = fakePlatform();
    const auto path = fakes.writeFile(QStringLiteral("a.apk"), "1234567");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    const auto fingerprintAt = [&](qint64 milliseconds) {
        EXPECT_TRUE(
            file.setFileTime(QDateTime::fromMSecsSinceEpoch(milliseconds, Qt::UTC), QFileDevice::FileModificationTime));
        return InstallRecords::fingerprint(path);
    };
    EXPECT_EQ(fingerprintAt(1763224428125), QStringLiteral("7-1763224428.125"));
    EXPECT_EQ(fingerprintAt(1760000000000), QStringLiteral("7-1760000000"));
}

TEST(InstallRecords, theTimeIsAsFineAsTheFileSystemKeepsIt)
{
    const auto fakes = fakePlatform();
    const auto path = fakes.writeFile(QStringLiteral("a.apk"), "1234567");
    const auto fingerprintAt = [&path](long nanoseconds) {
        const timespec times[]{{0, UTIME_OMIT}, {1760000000, nanoseconds}};
        EXPECT_EQ(::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, 0), 0);
        return InstallRecords::fingerprint(path);
    };
    EXPECT_EQ(fingerprintAt(123456789), QStringLiteral("7-1760000000.123456789"));
    EXPECT_EQ(fingerprintAt(123456000), QStringLiteral("7-1760000000.123456"));
    EXPECT_EQ(fingerprintAt(1), QStringLiteral("7-1760000000.000000001"));
}

TEST(PackageName, followsAndroidsGrammar)
{
    const auto valid = [](const char *name) { return isValidPackageName(QString::fromUtf8(name)); };
    EXPECT_TRUE(valid("org.example"));
    EXPECT_TRUE(valid("a.b_2.C3"));
    for (const auto *name :
         {"", "android", "org.", ".org.x", "org..x", "org.2x", "org._x", "org.ex ample", "org.x;y", "org.x\n",
          "org.\u00e9", "org.x$(id)", "org-x.y"})
        EXPECT_FALSE(valid(name)) << name;
    const auto padded
        = [](int size) { return isValidPackageName(QStringLiteral("a.") + QString(size - 2, QLatin1Char('b'))); };
    EXPECT_TRUE(padded(255));
    EXPECT_FALSE(padded(256));
}
