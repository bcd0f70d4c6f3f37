#include "RuntimeFixture.h"

#include "platform/HostServices.h"
#include "runtime/AndroidRuntimeError.h"

#include <QDir>

using namespace quillnest;

namespace
{
/// Real child processes: scripts that play the tools.
class AndroidCommandsTest : public RuntimeFixture
{
protected:
    AndroidCommandsTest() { fakes.platform.processes = hostChildProcesses(); }

    QString tool(const QByteArray &script)
    {
        return fakes.writeFile(QStringLiteral("bin/tool"), "#!/bin/sh\n" + script + "\n", true);
    }
    QString run(const QByteArray &script)
    {
        const auto path = tool(script);
        return commands().run(path, {});
    }
    std::optional<QString> failure(const QByteArray &script)
    {
        try {
            run(script);
        } catch (const AndroidRuntimeError &error) {
            return error.description();
        }
        return std::nullopt;
    }
    AndroidCommands commands() const { return AndroidCommands(fakes.platform, log); }
    QStringList temporaryFiles() const { return QDir(fakes.platform.folders.temporary).entryList(QDir::Files); }
};
} // namespace

TEST_F(AndroidCommandsTest, outputAndErrorsComeTogetherUntrimmed)
{
    EXPECT_EQ(run("echo one; echo two >&2; echo ' three '"), QStringLiteral("one\ntwo\n three \n"));
    EXPECT_TRUE(temporaryFiles().isEmpty());
}

TEST_F(AndroidCommandsTest, noOutputIsTheEmptyText)
{
    EXPECT_EQ(run("exit 0"), QString());
}

TEST_F(AndroidCommandsTest, aFailureSpeaksInTheToolsOwnWordsTrimmed)
{
    EXPECT_EQ(failure("echo; echo ' first '; echo second >&2; exit 3"), QStringLiteral("first \nsecond"));
    EXPECT_EQ(failure("printf ' \\n\\t\\n'; exit 3"), QStringLiteral("Android command failed"));
    EXPECT_TRUE(temporaryFiles().isEmpty());
}

TEST_F(AndroidCommandsTest, outputThatIsNotUtf8CountsAsEmpty)
{
    EXPECT_EQ(run("printf 'ab\\377'"), QString());
    EXPECT_EQ(failure("printf 'ab\\377'; exit 1"), QStringLiteral("Android command failed"));
}

TEST_F(AndroidCommandsTest, aMissingToolIsNamedByItsFile)
{
    try {
        commands().run(QStringLiteral("/nowhere/platform-tools/adb"), {});
        FAIL();
    } catch (const AndroidRuntimeError &error) {
        EXPECT_EQ(error.errorCase(), AndroidRuntimeError::Case::toolMissing);
        EXPECT_EQ(error.description(), QStringLiteral("Android tool missing: adb"));
    }
    const auto plain = fakes.writeFile(QStringLiteral("bin/plain"), "");
    EXPECT_THROW(commands().run(plain, {}), AndroidRuntimeError);
}

TEST_F(AndroidCommandsTest, aToolThatCannotBeLaunchedLeavesNoFileBehind)
{
    const auto broken = fakes.writeFile(QStringLiteral("bin/broken"), "#!/nowhere/interpreter\n", true);
    EXPECT_THROW(commands().run(broken, {}), LaunchError);
    EXPECT_TRUE(temporaryFiles().isEmpty());
}

TEST_F(AndroidCommandsTest, withoutATemporaryFolderTheCommandIsNotRun)
{
    fakes.platform.folders.temporary = fakes.path(QStringLiteral("nowhere"));
    EXPECT_EQ(failure("touch \"$0.ran\""), QStringLiteral("Could not create command output"));
    EXPECT_FALSE(fakes.readFile(QStringLiteral("bin/tool.ran")));
}

TEST_F(AndroidCommandsTest, standardInputIsEmpty)
{
    EXPECT_EQ(run("cat; echo end"), QStringLiteral("end\n"));
}

TEST_F(AndroidCommandsTest, theFirstJavaHomeThatHasAJavaIsGiven)
{
    const auto first = fakes.path(QStringLiteral("java1"));
    const auto second = fakes.path(QStringLiteral("java2"));
    fakes.platform.profile.javaHomes = {first, second};
    fakes.writeFile(QStringLiteral("java2/bin/java"), "");
    EXPECT_EQ(run("echo $JAVA_HOME"), second + QLatin1Char('\n'));
    fakes.writeFile(QStringLiteral("java1/bin/java"), "");
    EXPECT_EQ(run("echo $JAVA_HOME"), first + QLatin1Char('\n'));
}

TEST_F(AndroidCommandsTest, withoutOneAnInheritedJavaHomeSurvives)
{
    fakes.platform.profile.javaHomes = {fakes.path(QStringLiteral("none"))};
    const auto before = qgetenv("JAVA_HOME");
    qputenv("JAVA_HOME", "/inherited");
    EXPECT_EQ(run("echo $JAVA_HOME"), QStringLiteral("/inherited\n"));
    before.isNull() ? qunsetenv("JAVA_HOME") : qputenv("JAVA_HOME", before);
}

TEST_F(AndroidCommandsTest, theQuickRunnerAnswersStandardOutputWhateverTheStatus)
{
    const auto adb = [this](const QByteArray &script) {
        fakes.writeFile(paths.adb().mid(fakes.home->path().size() + 1), "#!/bin/sh\n" + script + "\n", true);
        return commands().runADB({QStringLiteral("shell"), QStringLiteral("a b")});
    };
    EXPECT_EQ(adb("echo \"$1|$2|$3|$4\"; echo no >&2; exit 7"), QStringLiteral("-s|emulator-5556|shell|a b\n"));
    EXPECT_EQ(adb("printf '\\377'"), QString());
}

TEST_F(AndroidCommandsTest, theQuickRunnerOfAMissingAdbIsSilent)
{
    fakes.settings->setValue(QStringLiteral("QuillnestAndroidAPI"), 33);
    QFile::remove(paths.adb());
    EXPECT_EQ(commands().runADB({QStringLiteral("devices")}), QString());
    EXPECT_TRUE(logLines().isEmpty());
}

TEST_F(AndroidCommandsTest, theToolsFollowTheSelectedInstallationAtOnce)
{
    place(AndroidRuntimePaths::developerSDK(fakes.platform));
    EXPECT_EQ(commands().paths().adb(), paths.adb());
    fakes.settings->setValue(QStringLiteral("QuillnestUseDeveloperSDK"), true);
    EXPECT_EQ(commands().paths().adb(), fakes.path(QStringLiteral("Android/Sdk/platform-tools/adb")));
}
