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
}

bool DBusCommandChannel::listen()
{
    return QDBusConnection::sessionBus().connect(
        QString(), path, interface, member, this, SIGNAL(received(QString)));
}

bool DBusCommandChannel::post(const QString &command)
{
    auto message = QDBusMessage::createSignal(path, interface, member);
    message << command;
    return QDBusConnection::sessionBus().send(message);
}

} // namespace quillnest
