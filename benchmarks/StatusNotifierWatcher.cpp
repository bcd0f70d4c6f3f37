#include "benchmarks/StatusNotifierWatcher.h"

#include "driver/TestDesktop.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QUuid>

namespace quillnest::bench
{

void StatusNotifierWatcher::RegisterStatusNotifierItem(const QString &item)
{
    {
        const std::scoped_lock guard(m_lock);
        m_registered = std::chrono::steady_clock::now();
    }
    m_changed.notify_all();
    // Either the name of a service or the path of an object of the caller.
    m_items.append(item.startsWith(QLatin1Char('/')) ? message().service() + item : item);
    Q_EMIT StatusNotifierItemRegistered(m_items.constLast());
}

StatusNotifierWatcher::Time StatusNotifierWatcher::waitForItem(Time since, std::chrono::seconds limit)
{
    std::unique_lock guard(m_lock);
    if (!m_changed.wait_for(guard, limit, [this, since] { return m_registered > since; }))
        throw driver::DriverError(QStringLiteral("no status item within %1 s").arg(limit.count()));
    return m_registered;
}

StatusItemPlace::StatusItemPlace(const QString &busAddress) : m_connection(QUuid::createUuid().toString())
{
    m_watcher->moveToThread(&m_thread);
    m_thread.start();
    bool good = false;
    const auto offer = [this, &busAddress, &good] {
        auto bus = QDBusConnection::connectToBus(busAddress, m_connection);
        good = bus.registerObject(
                   QStringLiteral("/StatusNotifierWatcher"), m_watcher.get(),
                   QDBusConnection::ExportScriptableContents | QDBusConnection::ExportAllProperties)
            && bus.registerService(QStringLiteral("org.kde.StatusNotifierWatcher"));
    };
    QMetaObject::invokeMethod(m_watcher.get(), offer, Qt::BlockingQueuedConnection);
    if (!good) {
        end();
        throw driver::DriverError(QStringLiteral("no place for status items on the session bus"));
    }
}

StatusItemPlace::~StatusItemPlace()
{
    end();
}

void StatusItemPlace::end()
{
    // On the thread that it lives on: the bus hears of its end.
    QMetaObject::invokeMethod(
        m_watcher.get(),
        [this] {
            QDBusConnection::disconnectFromBus(m_connection);
            m_watcher.reset();
        },
        Qt::BlockingQueuedConnection);
    m_thread.quit();
    m_thread.wait();
}

} // namespace quillnest::bench
