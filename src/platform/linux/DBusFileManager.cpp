#include "platform/linux/DBusFileManager.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDesktopServices>
#include <QFileInfo>
#include <QUrl>

namespace quillnest
{

void DBusFileManager::reveal(const QString &path, std::function<void(bool)> done)
{
    auto message = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    message << QStringList{QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded)} << QString();
    auto *watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(message));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [watcher, path, done = std::move(done)] {
        const QDBusPendingReply<> reply = *watcher;
        done(!reply.isError() || QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(path).absolutePath())));
        watcher->deleteLater();
    });
}

} // namespace quillnest
