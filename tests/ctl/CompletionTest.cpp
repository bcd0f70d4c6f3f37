#include "ctl/Ctl.h"

#include <QDir>
#include <QFile>

namespace quillnest
{

namespace
{

/// The completion in a real bash, asked as bash asks it when the tabulator key is pressed at the end of a line.
class CompletionTest : public Ctl
{
protected:
    QStringList completions(const QString &arguments) const
    {
        static const auto script = QStringLiteral(
            "set -u\n"
            "source '" QUILLNEST_COMPLETION "'\n"
            "complete -p quillnestctl >/dev/null || exit 3\n"
            "COMP_LINE=\"quillnestctl $1\" COMP_POINT=$((${#1} + 13)) COMP_WORDS=('" QUILLNESTCTL "') COMP_CWORD=1\n"
            "cd \"$HOME\"\n"
            "_quillnestctl quillnestctl '' ''\n"
            "printf '%s\\n' \"${COMPREPLY[@]}\"\n");
        QDir().mkpath(path(QStringLiteral("home")));
        const auto result = runProgram(
            QStringLiteral("/bin/bash"),
            {QStringLiteral("--norc"), QStringLiteral("-c"), script, QStringLiteral("bash"), arguments});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.errors, "");
        return QString::fromUtf8(result.output).split(u'\n', Qt::SkipEmptyParts);
    }

    static QStringList list(const char *words) { return QString::fromUtf8(words).split(u' ', Qt::SkipEmptyParts); }
};

TEST_F(CompletionTest, commandsAndTheirWords)
{
    EXPECT_EQ(completions(QString()), list("post state settings log"));
    EXPECT_EQ(completions(QStringLiteral("s")), list("state settings"));
    EXPECT_EQ(completions(QStringLiteral("--")), list("--help --version"));
    EXPECT_EQ(completions(QStringLiteral("settings ")), list("list get set unset"));
    EXPECT_EQ(completions(QStringLiteral("settings un")), list("unset"));
    EXPECT_EQ(completions(QStringLiteral("settings set -")), list("--bool --int --float --text --data"));
    EXPECT_EQ(completions(QStringLiteral("log --")), list("--follow --lines --help"));
    EXPECT_EQ(completions(QStringLiteral("foo ")), QStringList());
    EXPECT_EQ(completions(QStringLiteral("settings foo ")), QStringList());
}

TEST_F(CompletionTest, commandTextsAreThoseThatTheProgramLists)
{
    const auto all = completions(QStringLiteral("post "));
    EXPECT_GE(all.size(), 12);
    EXPECT_TRUE(all.contains(QStringLiteral("open:")));
    EXPECT_TRUE(all.contains(QStringLiteral("back")));
    EXPECT_FALSE(all.contains(QStringLiteral("--list")));
    EXPECT_EQ(completions(QStringLiteral("post adblock")), list("adblock-on adblock-off"));
    EXPECT_EQ(completions(QStringLiteral("post back ")), QStringList());
}

TEST_F(CompletionTest, keysAreThoseThatAreSet)
{
    EXPECT_EQ(completions(QStringLiteral("settings get ")), QStringList());
    write(settingsFile(), R"({"Quillnest.one": 1, "Quillnest.two": 2, "other": 3})");
    for (const auto *verb : {"get", "set", "unset"}) {
        EXPECT_EQ(
            completions(QStringLiteral("settings %1 Q").arg(QLatin1String(verb))), list("Quillnest.one Quillnest.two"));
    }
    EXPECT_EQ(completions(QStringLiteral("settings set --int oth")), list("other"));
    // A value and a second key are nobody's business.
    EXPECT_EQ(completions(QStringLiteral("settings set other ")), QStringList());
    EXPECT_EQ(completions(QStringLiteral("settings get other ")), QStringList());
    EXPECT_EQ(completions(QStringLiteral("settings list ")), QStringList());
}

TEST_F(CompletionTest, aKeyIsTextAndNoCommand)
{
    write(settingsFile(), R"json({"$(touch ran)": 1, "`touch ran`": 2, "*": 3})json");
    const auto keys = completions(QStringLiteral("settings get "));
    EXPECT_EQ(
        keys,
        (QStringList{
            QStringLiteral("\\$\\(touch\\ ran\\)"), QStringLiteral("\\*"), QStringLiteral("\\`touch\\ ran\\`")}));
    EXPECT_FALSE(QFile::exists(path(QStringLiteral("home/ran"))));
}

TEST_F(CompletionTest, whatFollowsAColonIsAWordOfItsOwn)
{
    write(settingsFile(), R"({"a:one": 1, "a:two": 2})");
    EXPECT_EQ(completions(QStringLiteral("settings get a:")), list("one two"));
    EXPECT_EQ(completions(QStringLiteral("settings get a:t")), list("two"));
}

TEST_F(CompletionTest, packageFilesFollowAdd)
{
    write(path(QStringLiteral("home/tide.apk")), "");
    write(path(QStringLiteral("home/tide two.apk")), "");
    auto files = completions(QStringLiteral("post add:ti"));
    files.sort();
    EXPECT_EQ(files, (QStringList{QStringLiteral("tide two.apk"), QStringLiteral("tide.apk")}));
}

} // namespace

} // namespace quillnest
