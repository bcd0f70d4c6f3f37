#include "platform/linux/DBusCommandChannel.h"

#include <QDBusConnection>
#include <QDBusMessage>

namespace quillnest
{

namespace
{
const auto path = QStringLiteral("/app/quillnest/command");
const auto interface = QStringLiteral("app.quillnest.command");
const auto member = QStringLiteral("command");
} // namespace

bool DBusCommandChannel::listen()
{
    return QDBusConnection::sessionBus().connect(QString(), path, interface, member, this, SLOT(take(QDBusMessage)));
}

void DBusCommandChannel::take(const QDBusMessage &message)
{
    const auto command = message.arguments().value(0);
    Q_EMIT received(command.typeId() == QMetaType::QString ? command.toString() : QString());
}

bool DBusCommandChannel::post(const QString &command)
{
    auto message = QDBusMessage::createSignal(path, interface, member);
    message << command;
    auto bus = QDBusConnection::sessionBus();
    if (!bus.send(message))
        return false;
    // A signal has no answer. A call that has one, behind it on the same connection, tells that it has left this
    // process, which may be about to end.
    const auto ping = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/"), QStringLiteral("org.freedesktop.DBus.Peer"),
        QStringLiteral("Ping"));
    return bus.call(ping).type() == QDBusMessage::ReplyMessage;
}

} // namespace quillnest
