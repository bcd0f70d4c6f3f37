#pragma once

#include <QObject>
#include <QString>

namespace quillnest
{

/// The named change notifications, by which everything below the store reports to it. Emitted on the main thread.
class ChangeNotifications : public QObject
{
    Q_OBJECT

Q_SIGNALS:
    /// A window opened or ended, or an app was locked or unlocked.
    void sessionsChanged();
    /// The set of apps with unread notifications changed.
    void unreadChanged();
    /// The device was told to stop.
    void runtimeChanged();
    /// What is playing changed.
    void mediaChanged();
    /// The user asked for an app from outside the launcher; `id` is the text of a UUID, not checked.
    void openAppRequest(const QString &id);
};

} // namespace quillnest
