#include "support/StandinDevice.h"

#include <QFile>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using test::Outcome;
using test::StandinDevice;

namespace
{

class Packages : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(device.boot()); }

    Outcome install(const QString &file) { return device.adb({u"install"_s, u"--no-streaming"_s, u"-r"_s, file}); }

    StandinDevice device;
};

} // namespace

TEST_F(Packages, EverySampleInstallsResolvesAndUninstalls)
{
    for (const char *name : {"tide", "ember", "lantern"}) {
        const QString package = u"app.quillnest.samples."_s + QLatin1StringView(name);
        const Outcome installed = install(test::sampleApk(name));
        ASSERT_EQ(installed.status, 0) << installed.all().constData();
        EXPECT_TRUE(installed.all().contains("Success"));
        const QByteArray path = device.shell(u"pm path "_s + package).out.trimmed();
        EXPECT_TRUE(path.startsWith("package:/data/app/") && path.endsWith("/base.apk")) << path.constData();
        const QByteArray resolved = device.shell(u"cmd package resolve-activity --brief "_s + package).out;
        EXPECT_TRUE(resolved.startsWith("priority=0 ")) << resolved.constData();
        EXPECT_TRUE(resolved.contains(package.toUtf8() + "/.MainActivity\n")) << resolved.constData();
        EXPECT_EQ(device.shell(u"pm list packages -3"_s).out.trimmed(), "package:" + package.toUtf8());
        EXPECT_EQ(device.adb({u"uninstall"_s, package}).status, 0);
        const Outcome gone = device.shell(u"pm path "_s + package);
        EXPECT_EQ(gone.status, 1);
        EXPECT_EQ(gone.out, "");
    }
}

TEST_F(Packages, LabelsAndVersionsComeFromTheApk)
{
    install(test::sampleApk("lantern"));
    const QString dump = QString::fromUtf8(device.shell(u"dumpsys package app.quillnest.samples.lantern"_s).out);
    EXPECT_TRUE(dump.contains(u"versionCode=12 "_s)) << qPrintable(dump);
    EXPECT_TRUE(dump.contains(u"versionName=3.4.5"_s)) << qPrintable(dump);
    const QJsonObject package = device.state()[u"packages"].toObject()[u"app.quillnest.samples.lantern"].toObject();
    EXPECT_EQ(package[u"label"].toString(), u"Lantern"_s);
}

TEST_F(Packages, AStreamedInstallWorksToo)
{
    const Outcome outcome = device.adb({u"install"_s, u"-r"_s, test::sampleApk("tide")});
    EXPECT_EQ(outcome.status, 0) << outcome.all().constData();
    EXPECT_EQ(device.shell(u"pm path app.quillnest.samples.tide"_s).status, 0);
}

TEST_F(Packages, AnInstallOfSeveralFilesWorksToo)
{
    const Outcome outcome = device.adb({u"install-multiple"_s, u"-r"_s, test::sampleApk("ember")});
    EXPECT_EQ(outcome.status, 0) << outcome.all().constData();
    EXPECT_EQ(device.shell(u"pm path app.quillnest.samples.ember"_s).status, 0);
}

TEST_F(Packages, InstallingAgainReplacesTheFileAndKeepsPermissions)
{
    install(test::sampleApk("lantern"));
    const QByteArray before = device.shell(u"pm path app.quillnest.samples.lantern"_s).out;
    device.shell(u"pm grant app.quillnest.samples.lantern android.permission.CAMERA"_s);
    ASSERT_EQ(install(test::sampleApk("lantern")).status, 0);
    EXPECT_NE(device.shell(u"pm path app.quillnest.samples.lantern"_s).out, before);
    EXPECT_EQ(device.shell(u"ls -d /data/app/*"_s).out.count('\n'), 1);
    EXPECT_TRUE(device.shell(u"dumpsys package app.quillnest.samples.lantern"_s)
                    .out.contains("android.permission.CAMERA: granted=true"));
}

TEST_F(Packages, TheInstalledFileIsThePackageThatWasGiven)
{
    install(test::sampleApk("tide"));
    const QString path = QString::fromUtf8(device.shell(u"pm path app.quillnest.samples.tide"_s).out.trimmed()).mid(8);
    const QString local = device.folder() + u"/base.apk"_s;
    ASSERT_EQ(device.adb({u"pull"_s, path, local}).status, 0);
    QFile pulled(local);
    QFile original(test::sampleApk("tide"));
    ASSERT_TRUE(pulled.open(QFile::ReadOnly) && original.open(QFile::ReadOnly));
    EXPECT_TRUE(pulled.readAll() == original.readAll());
}

TEST_F(Packages, ABadApkIsRefusedWithWords)
{
    const QString file = device.folder() + u"/bad.apk"_s;
    QFile bad(file);
    ASSERT_TRUE(bad.open(QFile::WriteOnly));
    bad.write("this is no package");
    bad.close();
    const Outcome outcome = install(file);
    EXPECT_NE(outcome.status, 0);
    EXPECT_TRUE(outcome.all().contains("Failure [INSTALL_PARSE_FAILED_NOT_APK: ")) << outcome.all().constData();
    ASSERT_TRUE(bad.open(QFile::WriteOnly));
    bad.write(QByteArray("PK\x03\x04", 4) + QByteArray(200, 'x'));
    bad.close();
    EXPECT_TRUE(install(file).all().contains("Failure [INSTALL_PARSE_FAILED_"));
    EXPECT_EQ(device.shell(u"pm list packages -3"_s).out, "");
}

TEST_F(Packages, ABadPackageNameIsRefusedWithWordsUnlessAnyIsAskedFor)
{
    const auto run = [](const QString &program, const QStringList &arguments) {
        QProcess process;
        process.start(program, arguments);
        process.waitForFinished();
        EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().constData();
        return process.readAllStandardOutput();
    };
    const auto bytes
        = [](QStringView text) { return QByteArray(reinterpret_cast<const char *>(text.utf16()), 2 * text.size()); };
    const auto installNamed = [&](QStringView name) {
        const QString apk = device.folder() + u"/bad.apk"_s;
        QFile::remove(apk);
        EXPECT_TRUE(QFile::copy(test::sampleApk("tide"), apk));
        QFile manifest(device.folder() + u"/AndroidManifest.xml"_s);
        EXPECT_TRUE(manifest.open(QFile::WriteOnly));
        manifest.write(run(u"unzip"_s, {u"-p"_s, apk, u"AndroidManifest.xml"_s})
                           .replace(bytes(u"app.quillnest.samples.tide"), bytes(name)));
        manifest.close();
        run(u"zip"_s, {u"-q"_s, u"-j"_s, apk, manifest.fileName()});
        return install(apk);
    };
    const auto isRefused = [&](QStringView name) {
        return installNamed(name).all().contains("Failure [INSTALL_PARSE_FAILED_BAD_PACKAGE_NAME: ");
    };
    EXPECT_TRUE(isRefused(u"a.b;touch /data/local/pwne"));
    EXPECT_TRUE(isRefused(u"../../../../../../tmp/tide"));
    EXPECT_EQ(device.shell(u"pm list packages -3"_s).out, "");
    device.control({u"fault"_s, u"any-package-name"_s});
    EXPECT_EQ(installNamed(u"a.b;touch /data/local/pwne").status, 0);
    EXPECT_TRUE(isRefused(u"../../../../../../tmp/tide")) << "out of the device";
    EXPECT_EQ(device.shell(u"pm list packages -3"_s).out, "package:a.b;touch /data/local/pwne\n");
}

TEST_F(Packages, WithoutAnActivityNothingResolves)
{
    EXPECT_TRUE(device.shell(u"cmd package resolve-activity --brief no.such.app"_s).out.contains("No activity found"));
}

TEST_F(Packages, StartedAppsAreResumedUntilTheyAreStopped)
{
    install(test::sampleApk("tide"));
    EXPECT_EQ(device.shell(u"am start -n app.quillnest.samples.tide/.MainActivity"_s).status, 0);
    const QString resumed = u"dumpsys activity activities | grep ResumedActivity"_s;
    EXPECT_TRUE(device.shell(resumed).out.contains(" app.quillnest.samples.tide/.MainActivity "));
    const QString stopAll
        = u"for p in $(pm list packages -3 | sed 's/package://'); do am force-stop $p; echo $p; done"_s;
    EXPECT_EQ(device.shell(stopAll).out, "app.quillnest.samples.tide\n");
    EXPECT_FALSE(device.shell(resumed).out.contains("tide"));
    EXPECT_EQ(device.state()[u"forceStopped"].toObject()[u"app.quillnest.samples.tide"].toInt(), 1);
}
