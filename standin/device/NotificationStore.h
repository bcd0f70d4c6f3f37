#pragma once

#include <QJsonArray>
#include <QList>
#include <QMap>
#include <QString>
#include <mutex>
#include <optional>

namespace standin
{

/// One notification as an app has posted it.
struct Notification {
    QString package;
    int id = 0;
    QString title;
    QString text;
    bool isOngoing = false;

    QString key() const { return QStringLiteral("0|%1|%2|null|10123").arg(package).arg(id); }
};

/// What an app plays.
struct MediaSession {
    QString title;
    QString artist;
    bool isPlaying = false;
};

/// The notifications and media sessions of the device. Both are gone after a restart, as on a real one. Thread safe.
class NotificationStore
{
public:
    /// A notification with the same package and id takes the old one's place.
    void post(const Notification &notification);
    void cancel(const QString &package, int id);
    void cancelAll(const QString &package);
    QList<Notification> notifications() const;

    /// Nothing ends the package's session.
    void setMedia(const QString &package, const std::optional<MediaSession> &session);
    QMap<QString, MediaSession> media() const;
    /// A media key: true when some session heard it. Next and previous go through a few songs.
    bool mediaKey(const QString &package, int keyCode);

    QJsonArray notificationsAsJson() const;
    QJsonArray mediaAsJson() const;

private:
    mutable std::mutex m_mutex;
    QList<Notification> m_notifications;
    QMap<QString, MediaSession> m_media;
};

} // namespace standin
