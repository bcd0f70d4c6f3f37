#include "platform/LeftOverProcesses.h"

#include "platform/Conditions.h"
#include "platform/HostServices.h"

#include <QUuid>

#include <csignal>

#include <gtest/gtest.h>

using namespace quillnest;

namespace
{
/// A process that does nothing and has `text` in its command line.
std::shared_ptr<RunningChild> sleeper(ChildProcesses &processes, const QString &text)
{
    return processes.start(
        {.program = QStringLiteral("/bin/sh"),
         .arguments = {QStringLiteral("-c"), QStringLiteral("while :; do sleep 0.1; done"), text}});
}
} // namespace

TEST(LeftOverProcessesTest, thoseWithTheTextEndAndOthersStay)
{
    const auto processes = hostChildProcesses();
    const auto text = QStringLiteral("left.over+") + QUuid::createUuid().toString();
    const auto meant = sleeper(*processes, text);
    // What a pattern would take for the same.
    const auto other = sleeper(*processes, QString(text).replace(u'.', u'x'));
    // What names it and lacks the rest, or has it the other way round.
    const auto elsewhere = sleeper(*processes, text + QStringLiteral(" elsewhere"));
    endLeftOverProcesses(*processes, {text, QStringLiteral("sleep 0.1")});
    endLeftOverProcesses(*processes, {QStringLiteral("sleep 0.1"), text, QStringLiteral("elsewhere")});
    EXPECT_TRUE(comesTrueWithoutMain([&] { return !elsewhere->isRunning(); }));
    EXPECT_TRUE(meant->isRunning());
    endLeftOverProcesses(*processes, {QStringLiteral("sleep 0.1"), text});
    EXPECT_TRUE(comesTrueWithoutMain([&] { return !meant->isRunning(); }));
    EXPECT_TRUE(other->isRunning());
    other->terminate();
    EXPECT_TRUE(comesTrueWithoutMain([&] { return !other->isRunning(); }));
}

TEST(LeftOverProcessesTest, oneThatStandsStillIsEndedByForce)
{
    const auto processes = hostChildProcesses();
    const auto text = QStringLiteral("@left.over-") + QUuid::createUuid().toString();
    const auto frozen = sleeper(*processes, text);
    ::kill(static_cast<pid_t>(frozen->processId()), SIGSTOP);
    endLeftOverProcesses(*processes, {text}, Ending::byForce);
    EXPECT_TRUE(comesTrueWithoutMain([&] { return !frozen->isRunning(); }));
}

TEST(LeftOverProcessesTest, noneIsFine)
{
    const auto processes = hostChildProcesses();
    endLeftOverProcesses(*processes, {QUuid::createUuid().toString()});
}
