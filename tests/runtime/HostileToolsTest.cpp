#include "RuntimeFixture.h"

#include "platform/HostServices.h"
#include "runtime/AndroidRuntimeError.h"
#include "runtime/AppInstaller.h"

#include <QDir>

using namespace quillnest;

namespace
{
/// Real child processes, and an adb that may say and do anything.
class HostileToolsTest : public RuntimeFixture
{
protected:
    HostileToolsTest() { fakes.platform.processes = hostChildProcesses(); }

    void makeAdb(const QByteArray &content)
    {
        fakes.writeFile(paths.adb().mid(fakes.home->path().size() + 1), content, true);
    }
    void scriptAdb(const QByteArray &script) { makeAdb("#!/bin/sh\n" + script + "\n"); }

    AndroidCommands commands() const { return AndroidCommands(fakes.platform, log); }
    QString say() const { return commands().runOnDevice({QStringLiteral("shell"), QStringLiteral("anything")}); }
    QString failure() const
    {
        try {
            say();
        } catch (const AndroidRuntimeError &error) {
            return error.description();
        }
        return {};
    }

    /// None of them says yes, whatever adb does.
    void expectNothingIsKnown() const
    {
        EXPECT_FALSE(commands().deviceIsBooted());
        try {
            EXPECT_FALSE(commands().deviceIsListed());
        } catch (const DescribedError &) {
            // It failed, which is no answer.
        }
        EXPECT_FALSE(commands().androidIsHealthy());
        EXPECT_FALSE(commands().internetIsValidated());
        EXPECT_EQ(commands().runningApi(), 0);
        commands().killDevice();
        commands().stopAllApps();
        EXPECT_TRUE(QDir(fakes.platform.folders.temporary).entryList(QDir::Files).isEmpty());
    }

    /// What this process holds in memory of its own, in bytes.
    static qint64 memory()
    {
        QFile file(QStringLiteral("/proc/self/status"));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        const auto status = QString::fromLatin1(file.readAll());
        return status.section(QStringLiteral("RssAnon:"), 1).trimmed().section(QLatin1Char(' '), 0, 0).toLongLong()
            * 1024;
    }
};

const QByteArray fiftyMegabytes = "yes 'far too much' | head -c 50000000; ";
} // namespace

TEST_F(HostileToolsTest, fiftyMegabytesAreReadWholeAndTheirMemoryComesBack)
{
    scriptAdb(fiftyMegabytes);
    say();
    const auto before = memory();
    EXPECT_EQ(say().size(), 50'000'000);
    EXPECT_EQ(commands().runADB({QStringLiteral("shell")}).size(), 50'000'000);
#ifndef __SANITIZE_ADDRESS__ // which keeps for a while what was freed
    EXPECT_LT(memory(), before + 10'000'000);
#else
    Q_UNUSED(before);
#endif
}

TEST_F(HostileToolsTest, aFailureInFiftyMegabytesIsToldByItsBeginningAndItsEnd)
{
    scriptAdb("echo the beginning; " + fiftyMegabytes + "echo; echo the end; exit 1");
    const auto text = failure();
    EXPECT_TRUE(text.startsWith(QStringLiteral("the beginning\n")));
    EXPECT_TRUE(text.endsWith(QStringLiteral("\nthe end")));
    EXPECT_LT(text.size(), 3000);
}

TEST_F(HostileToolsTest, anAdbWithMuchToSayAboutNothingLeavesTheDeviceUnknown)
{
    scriptAdb("head -c 5000000 /dev/zero | tr '\\0' x; exit 1");
    expectNothingIsKnown();
}

TEST_F(HostileToolsTest, anAdbThatSaysNothingLeavesTheDeviceUnknown)
{
    scriptAdb("exit 0");
    expectNothingIsKnown();
}

TEST_F(HostileToolsTest, anAdbThatIsKilledFailsWithTheGeneralSentence)
{
    scriptAdb("kill -KILL $$");
    EXPECT_EQ(failure(), QStringLiteral("Android command failed"));
    expectNothingIsKnown();
}

TEST_F(HostileToolsTest, anAdbThatSpeaksNoUtf8FailsWithTheGeneralSentence)
{
    scriptAdb("printf '1\\n\\377emulator-5556 found VALIDATED\\n'; exit 1");
    EXPECT_EQ(failure(), QStringLiteral("Android command failed"));
    scriptAdb("printf '\\377emulator-5556 found VALIDATED\\n'");
    expectNothingIsKnown();
}

TEST_F(HostileToolsTest, anAdbThatIsNoProgramIsSaidToBeNone)
{
    makeAdb("adb, which was here, has gone\n");
    try {
        say();
        FAIL();
    } catch (const LaunchError &error) {
        EXPECT_EQ(error.description(), QStringLiteral("Exec format error"));
    }
    expectNothingIsKnown();
}

TEST_F(HostileToolsTest, anyFileNameReachesTheInstallAsOneArgument)
{
    const auto seen = fakes.path(QStringLiteral("seen"));
    scriptAdb(
        "case \"$*\" in\n"
        "*' install '*) for word; do printf '%s\\0' \"$word\"; done > '"
        + seen.toUtf8()
        + "'; echo Success;;\n"
          "*'pm list packages'*) [ ! -e '"
        + seen.toUtf8()
        + "' ] || echo package:org.example.app;;\n"
          "*resolve-activity*) echo org.example.app/.Main;;\n"
          "esac");
    for (const auto &name :
         {QStringLiteral("two words.apk"), QStringLiteral("it's \"quoted\".apk"), QStringLiteral("line\nbreak.apk"),
          QStringLiteral("[x]*?.apk"), QStringLiteral("$(touch x).apk"), QStringLiteral("-rf.apk"),
          QStringLiteral("größe \U0001F44D.apk"), QString(251, QLatin1Char('n')) + QStringLiteral(".apk")}) {
        const auto apk = fakes.writeFile(QStringLiteral("Apps/") + name, "no archive");
        QFile::remove(seen);
        const auto shared = std::make_shared<const AndroidCommands>(fakes.platform, log);
        EXPECT_EQ(AppInstaller(shared).install(apk), QStringLiteral("org.example.app"));
        const auto words = QString::fromUtf8(fakes.readFile(seen).value_or(QByteArray())).split(QChar(u'\0'));
        EXPECT_EQ(
            words.mid(2).join(QLatin1Char('|')).toStdString(),
            QStringLiteral("install|--no-streaming|-r|%1|").arg(apk).toStdString());
    }
}
