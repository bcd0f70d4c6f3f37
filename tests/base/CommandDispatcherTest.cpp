#include "base/CommandDispatcher.h"

#include "base/CommandTable.h"
#include "fakes/ManualClock.h"

#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quillnest;

namespace
{
class CommandDispatcherTest : public ::testing::Test
{
protected:
    QStringList run(const QString &text)
    {
        ran.clear();
        dispatcher.run(text);
        return ran;
    }

    void handle(const char *command)
    {
        dispatcher.handle(QLatin1String(command), [this, command](const QString &argument) {
            ran.append(QLatin1String(command) + QLatin1Char('|') + argument);
        });
    }

    QTemporaryDir folder;
    std::shared_ptr<QuillnestLog> log
        = std::make_shared<QuillnestLog>(std::make_shared<ManualClock>(), folder.path(), QStringLiteral("log"), false);
    CommandDispatcher dispatcher{log};
    QStringList ran;
};
} // namespace

TEST_F(CommandDispatcherTest, whatFollowsTheColonIsTheArgument)
{
    handle("open:");
    EXPECT_EQ(run(QStringLiteral("open:a: b")), QStringList{QStringLiteral("open:|a: b")});
    EXPECT_EQ(run(QStringLiteral("open:")), QStringList{QStringLiteral("open:|")});
    EXPECT_EQ(run(QStringLiteral("open")), QStringList());
}

TEST_F(CommandDispatcherTest, oneWithoutAColonMatchesAsAWhole)
{
    handle("hide");
    EXPECT_EQ(run(QStringLiteral("hide")), QStringList{QStringLiteral("hide|")});
    for (const auto *text : {"hide:", "hides", "Hide", " hide", "hide ", "hid", ""})
        EXPECT_EQ(run(QLatin1String(text)), QStringList()) << text;
}

TEST_F(CommandDispatcherTest, everyTextIsLoggedAndOneThatNobodyHandlesDoesNothingElse)
{
    run(QStringLiteral("home"));
    run(QStringLiteral("no command"));
    run(QString());
    EXPECT_EQ(log->tail(3), QStringLiteral("command home\ncommand no command\ncommand "));
}

TEST_F(CommandDispatcherTest, aCommandThatIsInNoTableOrHandledTwiceEndsTheProgram)
{
    ::testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH(handle("no command"), "no command");
    EXPECT_DEATH(handle("open"), "open");
    handle("home");
    EXPECT_DEATH(handle("home"), "handled already");
}

TEST_F(CommandDispatcherTest, noCommandOfTheTableHidesAnother)
{
    for (std::size_t i = 0; i < commandTable.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            const QLatin1String earlier(commandTable[j].text);
            const QLatin1String later(commandTable[i].text);
            EXPECT_FALSE(earlier.endsWith(u':') && QString(later).startsWith(earlier)) << later.data();
            EXPECT_NE(earlier, later);
        }
    }
}
