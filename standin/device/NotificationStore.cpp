#include "device/NotificationStore.h"

#include <QJsonObject>
#include <array>

namespace standin
{

using namespace Qt::StringLiterals;

namespace
{

enum MediaKey { PlayPause = 85, Next = 87, Previous = 88 };

const std::array<std::pair<const char *, const char *>, 4> songs
    = {{{"Low Tide", "The Breakwaters"},
        {"Paper Boats", "June Aldous"},
        {"Harbour Lights", "The Breakwaters"},
        {"Slow Lantern", "Mira Voss"}}};

} // namespace

void NotificationStore::post(const Notification &notification)
{
    const std::lock_guard lock(m_mutex);
    for (Notification &old : m_notifications) {
        if (old.package == notification.package && old.id == notification.id) {
            old = notification;
            return;
        }
    }
    m_notifications.append(notification);
}

void NotificationStore::cancel(const QString &package, int id)
{
    const std::lock_guard lock(m_mutex);
    m_notifications.removeIf([&](const Notification &each) { return each.package == package && each.id == id; });
}

void NotificationStore::cancelAll(const QString &package)
{
    const std::lock_guard lock(m_mutex);
    m_notifications.removeIf([&](const Notification &each) { return each.package == package; });
}

QList<Notification> NotificationStore::notifications() const
{
    const std::lock_guard lock(m_mutex);
    return m_notifications;
}

void NotificationStore::setMedia(const QString &package, const std::optional<MediaSession> &session)
{
    const std::lock_guard lock(m_mutex);
    if (session)
        m_media[package] = *session;
    else
        m_media.remove(package);
}

QMap<QString, MediaSession> NotificationStore::media() const
{
    const std::lock_guard lock(m_mutex);
    return m_media;
}

bool NotificationStore::mediaKey(const QString &package, int keyCode)
{
    const std::lock_guard lock(m_mutex);
    const auto session = m_media.find(package);
    if (session == m_media.end() || (keyCode != PlayPause && keyCode != Next && keyCode != Previous))
        return false;
    if (keyCode == PlayPause) {
        session->isPlaying = !session->isPlaying;
        return true;
    }
    size_t song = 0;
    while (song < songs.size() && session->title != QLatin1StringView(songs[song].first))
        ++song;
    // A song that is not one of ours counts as the one before the first.
    const size_t step = keyCode == Next ? 1 : songs.size() - 1;
    const size_t next = song == songs.size() ? 0 : (song + step) % songs.size();
    session->title = QLatin1StringView(songs[next].first);
    session->artist = QLatin1StringView(songs[next].second);
    return true;
}

QJsonArray NotificationStore::notificationsAsJson() const
{
    QJsonArray list;
    for (const Notification &each : notifications())
        list.append(QJsonObject{
            {u"package"_s, each.package},
            {u"id"_s, each.id},
            {u"title"_s, each.title},
            {u"text"_s, each.text},
            {u"ongoing"_s, each.isOngoing}});
    return list;
}

QJsonArray NotificationStore::mediaAsJson() const
{
    QJsonArray list;
    const QMap<QString, MediaSession> sessions = media();
    for (auto session = sessions.begin(); session != sessions.end(); ++session)
        list.append(QJsonObject{
            {u"package"_s, session.key()},
            {u"title"_s, session->title},
            {u"artist"_s, session->artist},
            {u"playing"_s, session->isPlaying}});
    return list;
}

} // namespace standin
