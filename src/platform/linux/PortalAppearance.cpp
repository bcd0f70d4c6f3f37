#include "platform/linux/PortalAppearance.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

namespace quillnest
{

namespace
{
const auto service = QStringLiteral("org.freedesktop.portal.Desktop");
const auto path = QStringLiteral("/org/freedesktop/portal/desktop");
const auto interface = QStringLiteral("org.freedesktop.portal.Settings");
const auto appearanceNamespace = QStringLiteral("org.freedesktop.appearance");
const auto colorScheme = QStringLiteral("color-scheme");
constexpr uint preferDark = 1;

/// "Read" of the portal wraps its value twice, and some portals once.
QVariant unwrapped(QVariant value)
{
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}
} // namespace

PortalAppearance::PortalAppearance(const QDBusConnection &bus)
{
    auto connection = bus;
    connection.connect(
        service, path, interface, QStringLiteral("SettingChanged"), this, SLOT(settingChanged(QDBusMessage)));

    auto read = QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("Read"));
    read << appearanceNamespace << colorScheme;
    auto *watcher = new QDBusPendingCallWatcher(connection.asyncCall(read), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        const QDBusPendingReply<QDBusVariant> reply = *watcher;
        if (reply.isValid())
            take(reply.value().variant());
        watcher->deleteLater();
    });
}

void PortalAppearance::settingChanged(const QDBusMessage &signal)
{
    const auto arguments = signal.arguments();
    if (arguments.size() == 3 && arguments[0].toString() == appearanceNamespace
        && arguments[1].toString() == colorScheme)
        take(arguments[2]);
}

void PortalAppearance::take(const QVariant &value)
{
    const bool dark = unwrapped(value).toUInt() == preferDark;
    if (m_dark.exchange(dark) != dark)
        Q_EMIT changed();
}

} // namespace quillnest
