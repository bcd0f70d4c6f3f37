#include "ctl/Ctl.h"
#include "platform/HostServices.h"

#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QSet>

namespace quillnest
{

namespace
{

/// With a session bus that this process is on as well. It is one for the whole process, which can't change its bus.
class ChannelCommandsTest : public Ctl
{
protected:
    ChannelCommandsTest()
    {
        static QProcess bus;
        if (bus.state() == QProcess::NotRunning) {
            bus.start(
                QStringLiteral("dbus-daemon"),
                {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address")});
            EXPECT_TRUE(bus.waitForReadyRead());
            qputenv("DBUS_SESSION_BUS_ADDRESS", bus.readAllStandardOutput().trimmed());
            std::atexit([] {
                bus.kill();
                bus.waitForFinished();
            });
        }
        environment.insert(
            QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"));
        EXPECT_TRUE(channel->listen());
        QObject::connect(
            channel.get(), &CommandChannel::received, [this](const QString &text) { received.append(text); });
    }

    CtlResult post(const QString &text) const { return run({QStringLiteral("post"), text}); }

    const std::shared_ptr<CommandChannel> channel = hostCommandChannel();
    QStringList received;
};

class NoBusTest : public Ctl
{
};

TEST_F(ChannelCommandsTest, aPostReachesWhoListens)
{
    for (const auto *text : {"back", "open:Tide", "add:/a path/Ünïcode.apk"}) {
        const auto result = post(QString::fromUtf8(text));
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.output + result.errors, "");
        EXPECT_TRUE(comesTrue([this] { return !received.isEmpty(); }));
        EXPECT_EQ(received, QStringList{QString::fromUtf8(text)});
        received.clear();
    }
}

TEST_F(ChannelCommandsTest, anUnknownCommandIsMentionedAndPosted)
{
    for (const auto *text : {"opne:Tide", "back ", "backwards", "open"}) {
        const auto result = post(QLatin1String(text));
        EXPECT_EQ(result.status, 0);
        EXPECT_TRUE(result.errors.contains(text)) << result.errors.constData();
        EXPECT_TRUE(comesTrue([this] { return !received.isEmpty(); }));
        EXPECT_EQ(received, QStringList{QLatin1String(text)});
        received.clear();
    }
}

TEST_F(ChannelCommandsTest, stateIsWhatTheInstanceReports)
{
    const auto report = QByteArrayLiteral("{\"apps\": [\"Ünïcode\"]}\n");
    const auto port = hostDiagnostics();
    ASSERT_TRUE(port->serve([report] { return report; }));
    const auto result = run({QStringLiteral("state")});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, report);
}

TEST_F(NoBusTest, nothingCanBePosted)
{
    const auto result = run({QStringLiteral("post"), QStringLiteral("back")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "quillnestctl: no session bus\n");
}

TEST_F(NoBusTest, thereIsNoState)
{
    const auto result = run({QStringLiteral("state")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "quillnestctl: Quillnest isn't running\n");
}

TEST_F(NoBusTest, theListHoldsWhatTheProgramHandles)
{
    // Each row of the table is handled by one room, in words like these.
    static const QRegularExpression handled(QStringLiteral("\\.handle\\(\\s*QStringLiteral\\(\"([^\"]+)\"\\)"));
    QSet<QString> known;
    QDirIterator sources(
        QStringLiteral(QUILLNEST_SOURCES), {QStringLiteral("*.cpp")}, QDir::Files, QDirIterator::Subdirectories);
    while (sources.hasNext()) {
        for (const auto &match : handled.globalMatch(QString::fromUtf8(content(sources.next()))))
            known.insert(match.captured(1));
    }
    ASSERT_FALSE(known.isEmpty());

    const auto result = run({QStringLiteral("post"), QStringLiteral("--list")});
    EXPECT_EQ(result.status, 0);
    QSet<QString> listed;
    for (const auto &line : QString::fromUtf8(result.output).split(u'\n', Qt::SkipEmptyParts))
        listed.insert(line.section(u' ', 0, 0));
    EXPECT_EQ(listed, known);
    EXPECT_TRUE(run({QStringLiteral("post"), QStringLiteral("--help")}).output.endsWith(result.output));
}

} // namespace

} // namespace quillnest
