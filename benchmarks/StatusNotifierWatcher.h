#pragma once

#include <QDBusContext>
#include <QObject>
#include <QStringList>
#include <QThread>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>

namespace quillnest::bench
{

/// The object on the bus that programs register their status items with. Lives on the thread of a StatusItemPlace.
class StatusNotifierWatcher : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(QStringList RegisteredStatusNotifierItems READ items)
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ isHostRegistered)
    Q_PROPERTY(int ProtocolVersion READ protocolVersion)

public:
    using Time = std::chrono::steady_clock::time_point;

    QStringList items() const { return m_items; }
    bool isHostRegistered() const { return true; }
    int protocolVersion() const { return 0; }

    /// Waits for an item that is registered after `since` and answers when that was; throws driver::DriverError after
    /// `limit`. Any thread.
    Time waitForItem(Time since, std::chrono::seconds limit);

public Q_SLOTS:
    Q_SCRIPTABLE void RegisterStatusNotifierItem(const QString &item);
    Q_SCRIPTABLE void RegisterStatusNotifierHost(const QString &) { }

Q_SIGNALS:
    Q_SCRIPTABLE void StatusNotifierItemRegistered(const QString &item);

private:
    QStringList m_items;
    std::mutex m_lock;
    std::condition_variable m_changed;
    Time m_registered{};
};

/// The place for status items on a session bus. It shows nothing, and so adds nothing to what is measured; it answers
/// on a thread of its own, so that nobody waits for whoever waits for an item.
class StatusItemPlace
{
public:
    /// Throws driver::DriverError when the bus can't be reached or has such a place already.
    explicit StatusItemPlace(const QString &busAddress);
    ~StatusItemPlace();
    StatusItemPlace(const StatusItemPlace &) = delete;
    StatusItemPlace &operator=(const StatusItemPlace &) = delete;

    StatusNotifierWatcher &watcher() { return *m_watcher; }

private:
    void end();

    const QString m_connection;
    QThread m_thread;
    std::unique_ptr<StatusNotifierWatcher> m_watcher = std::make_unique<StatusNotifierWatcher>();
};

} // namespace quillnest::bench
