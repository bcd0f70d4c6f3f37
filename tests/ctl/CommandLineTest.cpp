#include "ctl/Ctl.h"

namespace quillnest
{

namespace
{

QStringList words(const char *line)
{
    return QString::fromUtf8(line).split(u' ', Qt::SkipEmptyParts);
}

using CommandLineTest = Ctl;

struct Wrong {
    const char *line;
    const char *message;
};

class WrongCommandLineTest : public Ctl, public ::testing::WithParamInterface<Wrong>
{
};

TEST_P(WrongCommandLineTest, isNamedOnStandardErrorWithStatusTwo)
{
    const auto result = run(words(GetParam().line));
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_TRUE(result.errors.startsWith(QByteArray("quillnestctl: ") + GetParam().message + '\n'))
        << result.errors.constData();
    EXPECT_TRUE(result.errors.endsWith("--help\" tells more\n")) << result.errors.constData();
    EXPECT_FALSE(QFile::exists(settingsFile())) << "something was written all the same";
}

INSTANTIATE_TEST_SUITE_P(
    , WrongCommandLineTest,
    ::testing::Values(
        Wrong{"", "missing COMMAND"}, Wrong{"foo", "unknown command \"foo\""},
        Wrong{"--foo", "unknown command \"--foo\""}, Wrong{"post", "missing TEXT"},
        Wrong{"post back home", "\"home\" is one argument too many"},
        Wrong{"post --list back", "\"back\" is one argument too many"},
        Wrong{"post --all back", "unknown option \"--all\""}, Wrong{"state x", "\"x\" is one argument too many"},
        Wrong{"settings", "missing list, get, set or unset"}, Wrong{"settings foo", "unknown command \"settings foo\""},
        Wrong{"settings list x", "\"x\" is one argument too many"}, Wrong{"settings get", "missing KEY"},
        Wrong{"settings get a b", "\"b\" is one argument too many"},
        Wrong{"settings get --int a", "unknown option \"--int\""}, Wrong{"settings set", "missing KEY"},
        Wrong{"settings set k", "missing VALUE"}, Wrong{"settings set k 1 2", "\"2\" is one argument too many"},
        Wrong{"settings set k tru", "\"tru\" is not JSON; --text takes it as text"},
        Wrong{"settings set k 1,2", "\"1,2\" is not JSON; --text takes it as text"},
        Wrong{"settings set k null", "null is no value; \"settings unset\" takes a setting away"},
        Wrong{"settings set k {\"$data\":\"?\"}", "\"?\" is not base64"},
        Wrong{"settings set k [{\"$data\":5}]", "\"$data\" takes base64 as text"},
        Wrong{"settings set --bool k 1", "\"1\" is not true or false"},
        Wrong{"settings set --int k 1.5", "\"1.5\" is not a whole number of 64 bits"},
        Wrong{"settings set --int k 9223372036854775808", "\"9223372036854775808\" is not a whole number of 64 bits"},
        Wrong{"settings set --float k x", "\"x\" is not a number"},
        Wrong{"settings set --float k inf", "\"inf\" is not a number"},
        Wrong{"settings set --data k A?==", "\"A?==\" is not base64"},
        Wrong{"settings set --int --float k 1", "--int and --float are two types"},
        Wrong{"settings set --text k --x", "unknown option \"--x\""}, Wrong{"settings unset", "missing KEY"},
        Wrong{"log x", "\"x\" is one argument too many"}, Wrong{"log -x", "unknown option \"-x\""},
        Wrong{"log -n", "-n needs a value"}, Wrong{"log -n many", "\"many\" is no number of lines"},
        Wrong{"log --lines=-1", "\"-1\" is no number of lines"}));

TEST_F(CommandLineTest, anEmptyOperandIsMissing)
{
    EXPECT_EQ(run({QStringLiteral("post"), QString()}).status, 2);
    EXPECT_EQ(run({QStringLiteral("settings"), QStringLiteral("get"), QString()}).status, 2);
    EXPECT_EQ(run({QStringLiteral("settings"), QStringLiteral("set"), QString(), QStringLiteral("1")}).status, 2);
    EXPECT_EQ(run({QStringLiteral("settings"), QStringLiteral("unset"), QString()}).status, 2);
}

TEST_F(CommandLineTest, helpIsForTheWholeOrForOneCommand)
{
    const auto overall = run({QStringLiteral("--help")});
    EXPECT_EQ(overall.status, 0);
    EXPECT_EQ(overall.errors, "");
    EXPECT_TRUE(overall.output.startsWith("usage: quillnestctl COMMAND")) << overall.output.constData();
    EXPECT_EQ(run({QStringLiteral("-h")}).output, overall.output);
    for (const auto *command : {"post", "state", "settings", "log"}) {
        const auto help = run({QLatin1String(command), QStringLiteral("--help")});
        EXPECT_EQ(help.status, 0);
        EXPECT_EQ(help.errors, "");
        EXPECT_TRUE(help.output.startsWith(QByteArray("usage: quillnestctl ") + command)) << help.output.constData();
        EXPECT_TRUE(overall.output.contains(QByteArray("\n  ") + command + ' ')) << command;
    }
    EXPECT_EQ(
        run({QStringLiteral("settings"), QStringLiteral("set"), QStringLiteral("-h")}).output,
        run({QStringLiteral("settings"), QStringLiteral("--help")}).output);
}

TEST_F(CommandLineTest, helpBehindTwoDashesIsAnOperand)
{
    const auto set = run(words("settings set --text -- k --help"));
    EXPECT_EQ(set.status, 0);
    EXPECT_EQ(run(words("settings get k")).output, "\"--help\"\n");
}

TEST_F(CommandLineTest, theVersionIsTheProjects)
{
    const auto version = run({QStringLiteral("--version")});
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.output, "quillnestctl " QUILLNEST_VERSION "\n");
}

TEST_F(CommandLineTest, outputThatCannotBeWrittenIsAFailure)
{
    const auto full = runProgram(
        QStringLiteral("/bin/sh"),
        {QStringLiteral("-c"), QStringLiteral("\"$0\" --help >/dev/full"), QStringLiteral(QUILLNESTCTL)});
    EXPECT_EQ(full.status, 1);
    EXPECT_TRUE(full.errors.startsWith("quillnestctl: can't write: ")) << full.errors.constData();
}

TEST_F(CommandLineTest, aReaderThatGoesAwayIsNoFailure)
{
    // The reader is gone for certain before anything is written.
    const auto gone = runProgram(
        QStringLiteral("/bin/bash"),
        {QStringLiteral("-c"), QStringLiteral("{ sleep 0.2; \"$0\" --help; echo $? >&2; } | true"),
         QStringLiteral(QUILLNESTCTL)});
    EXPECT_EQ(gone.errors, "0\n");
}

} // namespace

} // namespace quillnest
