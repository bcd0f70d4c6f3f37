#include "platform/linux/DBusCommandChannel.h"
#include "platform/linux/DBusDiagnostics.h"

#include "platform/Conditions.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QProcess>

#include <gtest/gtest.h>

using namespace quillnest;

namespace
{
/// What another program on the bus says, by the bus's own tool.
QByteArray dbusSend(const QStringList &arguments)
{
    QProcess tool;
    tool.start(QStringLiteral("dbus-send"), QStringList{QStringLiteral("--session")} + arguments);
    EXPECT_TRUE(comesTrue([&tool] { return tool.state() == QProcess::NotRunning; }));
    return tool.readAllStandardOutput();
}
} // namespace

TEST(DBusCommandChannelTest, commandReachesEveryListenerTheSenderIncluded)
{
    DBusCommandChannel one;
    DBusCommandChannel two;
    QStringList heard;
    QObject::connect(
        &one, &CommandChannel::received, [&](const QString &text) { heard.append(QStringLiteral("1 ") + text); });
    QObject::connect(
        &two, &CommandChannel::received, [&](const QString &text) { heard.append(QStringLiteral("2 ") + text); });
    ASSERT_TRUE(one.listen());
    ASSERT_TRUE(two.listen());
    ASSERT_TRUE(one.post(QStringLiteral("launch:größe \U0001F44D")));
    EXPECT_TRUE(comesTrue([&] { return heard.size() == 2; }));
    heard.sort();
    EXPECT_EQ(
        heard, (QStringList{QStringLiteral("1 launch:größe \U0001F44D"), QStringLiteral("2 launch:größe \U0001F44D")}));
}

TEST(DBusCommandChannelTest, commandOfAnotherProgramIsHeard)
{
    DBusCommandChannel channel;
    QStringList heard;
    QObject::connect(&channel, &CommandChannel::received, [&](const QString &text) { heard.append(text); });
    ASSERT_TRUE(channel.listen());
    // Neighbours of the signal come first and must not count.
    dbusSend(
        {QStringLiteral("--type=signal"), QStringLiteral("/app/quillnest/command"),
         QStringLiteral("app.quillnest.other.command"), QStringLiteral("string:wrong interface")});
    dbusSend(
        {QStringLiteral("--type=signal"), QStringLiteral("/app/quillnest/other"),
         QStringLiteral("app.quillnest.command.command"), QStringLiteral("string:wrong object")});
    dbusSend(
        {QStringLiteral("--type=signal"), QStringLiteral("/app/quillnest/command"),
         QStringLiteral("app.quillnest.command.command"), QStringLiteral("string:show library")});
    EXPECT_TRUE(comesTrue([&] { return !heard.isEmpty(); }));
    EXPECT_EQ(heard, QStringList{QStringLiteral("show library")});
}

TEST(DBusCommandChannelTest, aSignalWithoutATextIsTheEmptyCommand)
{
    DBusCommandChannel channel;
    QStringList heard;
    QObject::connect(&channel, &CommandChannel::received, [&](const QString &text) { heard.append(text); });
    ASSERT_TRUE(channel.listen());
    const QStringList signal{
        QStringLiteral("--type=signal"), QStringLiteral("/app/quillnest/command"),
        QStringLiteral("app.quillnest.command.command")};
    dbusSend(signal + QStringList{QStringLiteral("int32:7")});
    dbusSend(signal);
    dbusSend(signal + QStringList{QStringLiteral("string:show library")});
    EXPECT_TRUE(comesTrue([&] { return heard.size() == 3; }));
    EXPECT_EQ(heard, (QStringList{QString(), QString(), QStringLiteral("show library")}));
}

TEST(DBusCommandChannelTest, commandsKeepTheirOrder)
{
    DBusCommandChannel channel;
    QStringList heard;
    QObject::connect(&channel, &CommandChannel::received, [&](const QString &text) { heard.append(text); });
    ASSERT_TRUE(channel.listen());
    QStringList sent;
    for (int i = 0; i < 50; ++i) {
        sent.append(QString::number(i));
        ASSERT_TRUE(channel.post(sent.back()));
    }
    EXPECT_TRUE(comesTrue([&] { return heard.size() == 50; }));
    EXPECT_EQ(heard, sent);
}

TEST(DBusCommandChannelTest, channelThatDoesNotListenHearsNothing)
{
    DBusCommandChannel deaf;
    DBusCommandChannel listening;
    bool heard = false;
    bool other = false;
    QObject::connect(&deaf, &CommandChannel::received, [&] { heard = true; });
    QObject::connect(&listening, &CommandChannel::received, [&] { other = true; });
    ASSERT_TRUE(listening.listen());
    ASSERT_TRUE(deaf.post(QStringLiteral("x")));
    EXPECT_TRUE(comesTrue([&] { return other; }));
    EXPECT_FALSE(heard);
}

TEST(DBusDiagnosticsTest, nobodyAnswersWhenNobodyServes)
{
    DBusDiagnostics port;
    EXPECT_EQ(port.ask(), std::nullopt);
}

TEST(DBusDiagnosticsTest, reportIsMadeAnewForEachQuestion)
{
    int asked = 0;
    auto port = std::make_unique<DBusDiagnostics>();
    ASSERT_TRUE(port->serve([&asked] { return QByteArray("{\"asked\": ") + QByteArray::number(++asked) + '}'; }));
    DBusDiagnostics client;
    EXPECT_EQ(client.ask(), QByteArray("{\"asked\": 1}"));
    EXPECT_EQ(client.ask(), QByteArray("{\"asked\": 2}"));
    // Another program, by the name that it knows.
    const auto answer = dbusSend(
        {QStringLiteral("--print-reply=literal"), QStringLiteral("--dest=app.quillnest.Quillnest"),
         QStringLiteral("/app/quillnest/diagnostics"), QStringLiteral("app.quillnest.Diagnostics.report")});
    EXPECT_EQ(answer.trimmed(), "{\"asked\": 3}");
    QDBusConnection::sessionBus().unregisterService(QStringLiteral("app.quillnest.Quillnest"));
    QDBusConnection::sessionBus().unregisterObject(QStringLiteral("/app/quillnest/diagnostics"));
}

TEST(DBusDiagnosticsTest, secondInstanceMayNotAnswer)
{
    const auto name = QStringLiteral("another instance");
    auto other = QDBusConnection::connectToBus(QDBusConnection::SessionBus, name);
    ASSERT_TRUE(other.registerService(QStringLiteral("app.quillnest.Quillnest")));
    DBusDiagnostics port;
    EXPECT_FALSE(port.serve([] { return QByteArray("mine"); }));
    other.unregisterService(QStringLiteral("app.quillnest.Quillnest"));
    QDBusConnection::disconnectFromBus(name);
    QDBusConnection::sessionBus().unregisterObject(QStringLiteral("/app/quillnest/diagnostics"));
}
