#include "platform/linux/PortalAppearance.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDeadlineTimer>
#include <QProcess>

#include <gtest/gtest.h>

using namespace quillnest;

namespace
{
/// A settings portal on a bus of the test's own.
class FakePortal : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

public:
    uint scheme = 0;

public Q_SLOTS:
    QDBusVariant Read(const QString &settingNamespace, const QString &key)
    {
        const bool known
            = settingNamespace == QLatin1String("org.freedesktop.appearance") && key == QLatin1String("color-scheme");
        return QDBusVariant(QVariant::fromValue(QDBusVariant(known ? scheme : 99U)));
    }
};

class PortalAppearanceTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        daemon.start(
            QStringLiteral("dbus-daemon"),
            {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address=1")});
        ASSERT_TRUE(daemon.waitForStarted() && daemon.waitForReadyRead());
        const auto address = QString::fromLatin1(daemon.readLine().trimmed());
        server = std::make_unique<QDBusConnection>(QDBusConnection::connectToBus(address, QStringLiteral("portal")));
        client = std::make_unique<QDBusConnection>(QDBusConnection::connectToBus(address, QStringLiteral("client")));
        ASSERT_TRUE(server->isConnected() && client->isConnected());
    }
    void TearDown() override
    {
        QDBusConnection::disconnectFromBus(QStringLiteral("portal"));
        QDBusConnection::disconnectFromBus(QStringLiteral("client"));
        daemon.terminate();
        daemon.waitForFinished();
    }
    void offer()
    {
        ASSERT_TRUE(server->registerService(QStringLiteral("org.freedesktop.portal.Desktop")));
        ASSERT_TRUE(server->registerObject(
            QStringLiteral("/org/freedesktop/portal/desktop"), &portal, QDBusConnection::ExportAllSlots));
    }
    template <typename Condition> bool comesTrue(Condition condition)
    {
        for (const QDeadlineTimer limit(10000); !condition() && !limit.hasExpired();)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        return condition();
    }

    QProcess daemon;
    std::unique_ptr<QDBusConnection> server;
    std::unique_ptr<QDBusConnection> client;
    FakePortal portal;
};
} // namespace

TEST_F(PortalAppearanceTest, readsTheSchemeAtStartAndFollowsItsChanges)
{
    offer();
    portal.scheme = 1;
    PortalAppearance appearance(*client);
    int changes = 0;
    QObject::connect(&appearance, &Appearance::changed, [&changes] { ++changes; });
    EXPECT_TRUE(comesTrue([&] { return appearance.isDark(); }));
    EXPECT_EQ(changes, 1);

    const auto change = [this](const char *settingNamespace, const char *key, uint value) {
        auto signal = QDBusMessage::createSignal(
            QStringLiteral("/org/freedesktop/portal/desktop"), QStringLiteral("org.freedesktop.portal.Settings"),
            QStringLiteral("SettingChanged"));
        signal << QString::fromLatin1(settingNamespace) << QString::fromLatin1(key)
               << QVariant::fromValue(QDBusVariant(value));
        EXPECT_TRUE(server->send(signal));
    };
    // Settings of other names come first, so by the time that ours has come they have been passed over.
    change("org.freedesktop.appearance", "contrast", 0);
    change("org.gnome.desktop.interface", "color-scheme", 0);
    change("org.freedesktop.appearance", "color-scheme", 2);
    EXPECT_TRUE(comesTrue([&] { return !appearance.isDark(); }));
    EXPECT_EQ(changes, 2);
    change("org.freedesktop.appearance", "color-scheme", 0);
    change("org.freedesktop.appearance", "color-scheme", 1);
    EXPECT_TRUE(comesTrue([&] { return appearance.isDark(); }));
    EXPECT_EQ(changes, 3);
}

TEST_F(PortalAppearanceTest, withoutAPortalItIsLight)
{
    PortalAppearance appearance(*client);
    // The bus answers in order: once this call has its answer, the portal's has come.
    auto ping = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/"), QStringLiteral("org.freedesktop.DBus"),
        QStringLiteral("ListNames"));
    client->call(ping);
    QCoreApplication::processEvents();
    EXPECT_FALSE(appearance.isDark());
}

#include "PortalAppearanceTest.moc"
