#include "ctl/Ctl.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace quillnest
{

namespace
{

class SettingsCommandTest : public Ctl
{
protected:
    CtlResult settings(const QStringList &arguments) const
    {
        return run(QStringList{QStringLiteral("settings")} + arguments);
    }

    /// Sets without a word and gives what `get` prints.
    QByteArray setAndGet(const QStringList &typeAndValue) const
    {
        auto arguments = typeAndValue;
        arguments.insert(arguments.size() - 1, key);
        const auto set = settings(QStringList{QStringLiteral("set")} + arguments);
        EXPECT_EQ(set.status, 0) << set.errors.constData();
        EXPECT_EQ(set.output + set.errors, "");
        return get();
    }
    QByteArray get() const
    {
        const auto result = settings({QStringLiteral("get"), key});
        EXPECT_EQ(result.status, 0) << result.errors.constData();
        return result.output;
    }
    /// As it stands in the file.
    QJsonValue stored() const { return QJsonDocument::fromJson(content(settingsFile())).object().value(key); }

    const QString key = QStringLiteral("Some.key");
};

TEST_F(SettingsCommandTest, jsonComesBackAsItWas)
{
    for (const QByteArray text :
         {"true", "false", "0", "5", "-5", "0.5", "9007199254740993", "-9223372036854775808", "\"text\"", "\"\"",
          "\"5\"", "[]", "[\"a\",[true,1.5]]", "{}", "{\"a\":{\"b\":[1]}}", "\"Ünïcode \\\"quoted\\\" 天気\\n\"",
          "{\"$data\":\"AP8Q\"}", "[{\"$data\":\"\"}]"}) {
        EXPECT_EQ(setAndGet({QString::fromUtf8(text)}), text + '\n');
    }
}

TEST_F(SettingsCommandTest, allListsEverySettingWithTypeDefaultValueAndMeaning)
{
    EXPECT_EQ(settings({QStringLiteral("set"), QStringLiteral("QuillnestAdBlock"), QStringLiteral("false")}).status, 0);
    EXPECT_EQ(
        settings({QStringLiteral("set"), QStringLiteral("Quillnest.window.org.example"), QStringLiteral("{\"x\":1}")})
            .status,
        0);
    EXPECT_EQ(
        settings(
            {QStringLiteral("set"), QStringLiteral("--text"), QStringLiteral("QuillnestTheme"), QString(500, u'x')})
            .status,
        0);
    const auto result = settings({QStringLiteral("list"), QStringLiteral("--all")});
    EXPECT_EQ(result.status, 0);
    const auto lines = result.output.split('\n');
    EXPECT_EQ(lines.first(), "key\ttype\tdefault\tvalue\tmeaning");
    const auto row = [&lines](const QByteArray &wanted) {
        for (const auto &line : lines) {
            if (line.startsWith(wanted + '\t'))
                return line.split('\t').mid(1);
        }
        return QList<QByteArray>{};
    };
    using Row = QList<QByteArray>;
    EXPECT_EQ(row("QuillnestAdBlock").mid(0, 3), (Row{"boolean", "true", "false"}));
    EXPECT_EQ(row("QuillnestAndroidAPI").mid(0, 3), (Row{"integer", "35", "-"}));
    EXPECT_EQ(row("QuillnestIdleShutdownMinutes").mid(0, 3), (Row{"number", "5", "-"}));
    EXPECT_EQ(row("QuillnestTheme").mid(0, 2), (Row{"text", "\"classic\""}));
    EXPECT_LT(row("QuillnestTheme").value(2).size(), 100) << "a long value shows its beginning";
    EXPECT_EQ(row("Quillnest.window.org.example").mid(0, 3), (Row{"record", "-", "{\"x\":1}"}));
    EXPECT_EQ(row("Quillnest.apps.v1").mid(0, 3), (Row{"data", "-", "-"}));
    for (const auto &line : lines.mid(1, lines.size() - 2))
        EXPECT_EQ(line.count('\t'), 4) << line.constData();
    EXPECT_EQ(settings({QStringLiteral("list"), QStringLiteral("--all"), QStringLiteral("--keys")}).status, 2);
}

TEST_F(SettingsCommandTest, explicitTypesArePlainText)
{
    EXPECT_EQ(setAndGet({QStringLiteral("--bool"), QStringLiteral("true")}), "true\n");
    EXPECT_TRUE(stored().isBool());
    EXPECT_EQ(setAndGet({QStringLiteral("--int"), QStringLiteral("-12")}), "-12\n");
    EXPECT_TRUE(stored().isDouble());
    EXPECT_EQ(setAndGet({QStringLiteral("--int"), QStringLiteral("9007199254740993")}), "9007199254740993\n");
    EXPECT_EQ(setAndGet({QStringLiteral("--float"), QStringLiteral("1e-3")}), "0.001\n");
    EXPECT_TRUE(stored().isDouble());
    EXPECT_EQ(setAndGet({QStringLiteral("--text"), QStringLiteral("true")}), "\"true\"\n");
    EXPECT_TRUE(stored().isString());
    EXPECT_EQ(setAndGet({QStringLiteral("--text"), QString()}), "\"\"\n");
    EXPECT_EQ(setAndGet({QStringLiteral("--data"), QStringLiteral("AAECAw==")}), "{\"$data\":\"AAECAw==\"}\n");
    EXPECT_TRUE(stored().isObject());
}

TEST_F(SettingsCommandTest, theTypeMayStandAnywhere)
{
    EXPECT_EQ(
        run({QStringLiteral("settings"), QStringLiteral("set"), key, QStringLiteral("--text"), QStringLiteral("5")})
            .status,
        0);
    EXPECT_EQ(get(), "\"5\"\n");
    EXPECT_EQ(
        run({QStringLiteral("settings"), QStringLiteral("set"), key, QStringLiteral("6"), QStringLiteral("--text")})
            .status,
        0);
    EXPECT_EQ(get(), "\"6\"\n");
}

TEST_F(SettingsCommandTest, everyByteGoesInAndComesOut)
{
    QByteArray bytes;
    for (int i = 0; i < 256; ++i)
        bytes.append(static_cast<char>(i));
    const auto base64 = QString::fromLatin1(bytes.toBase64());
    const auto printed = setAndGet({QStringLiteral("--data"), base64});
    EXPECT_EQ(printed, QStringLiteral("{\"$data\":\"%1\"}\n").arg(base64).toUtf8());
    EXPECT_EQ(settings({QStringLiteral("get"), QStringLiteral("--raw"), key}).output, bytes);
    // What was printed sets the same value again.
    EXPECT_EQ(settings({QStringLiteral("unset"), key}).status, 0);
    EXPECT_EQ(setAndGet({QString::fromUtf8(printed)}), printed);
    EXPECT_EQ(settings({QStringLiteral("get"), QStringLiteral("--raw"), key}).output, bytes);
}

TEST_F(SettingsCommandTest, rawTextHasNoQuotesAndOtherValuesStayJson)
{
    setAndGet({QStringLiteral("--text"), QStringLiteral("a \"b\"")});
    EXPECT_EQ(settings({QStringLiteral("get"), QStringLiteral("--raw"), key}).output, "a \"b\"");
    setAndGet({QStringLiteral("[1]")});
    EXPECT_EQ(settings({QStringLiteral("get"), QStringLiteral("--raw"), key}).output, "[1]\n");
}

TEST_F(SettingsCommandTest, listShowsKeysWithTheirValues)
{
    EXPECT_EQ(settings({QStringLiteral("list")}).output, "");
    write(settingsFile(), R"({"b": [1, {"$data": "AAE="}], "a": "x"})");
    EXPECT_EQ(settings({QStringLiteral("list")}).output, "a\t\"x\"\nb\t[1,{\"$data\":\"AAE=\"}]\n");
    EXPECT_EQ(settings({QStringLiteral("list"), QStringLiteral("--keys")}).output, "a\nb\n");
}

TEST_F(SettingsCommandTest, unsetTakesTheKeyAwayAndNothingElse)
{
    write(settingsFile(), R"({"Some.key": 1, "other": 2})");
    EXPECT_EQ(settings({QStringLiteral("unset"), key}).status, 0);
    EXPECT_EQ(settings({QStringLiteral("list")}).output, "other\t2\n");
    EXPECT_EQ(settings({QStringLiteral("unset"), key}).status, 0);
}

TEST_F(SettingsCommandTest, anAbsentKeyIsAFailureThatNamesIt)
{
    const auto result = settings({QStringLiteral("get"), key});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "quillnestctl: no setting \"Some.key\"\n");
}

TEST_F(SettingsCommandTest, whatCannotBeWrittenIsAFailureThatTellsWhy)
{
    // A file where the folder should be.
    write(path(QStringLiteral("config")), "");
    const auto result = settings({QStringLiteral("set"), key, QStringLiteral("1")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "quillnestctl: \"Some.key\" can't be written: Not a directory\n");
}

TEST_F(SettingsCommandTest, damagedSettingsAreMentioned)
{
    write(settingsFile(), "{\"a\": 1, ");
    const auto result = settings({QStringLiteral("list")});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "");
    const auto aside = settingsFile() + QStringLiteral(".damaged-");
    EXPECT_TRUE(
        result.errors.startsWith("quillnestctl: the settings could not be read and are now at " + aside.toUtf8()))
        << result.errors.constData();
}

} // namespace

} // namespace quillnest
