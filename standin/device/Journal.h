#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QMap>
#include <mutex>

namespace standin
{

/// What has happened to the device, for whoever looks at it from outside. Lists keep their newest entries, counters
/// count everything. Thread safe.
class Journal
{
public:
    /// Appends to one of the lists: "touches", "keys", "texts", "scrolls", "resizes", "shellCommands", "errors".
    void add(const QString &list, const QJsonValue &entry);
    void countForceStop(const QString &package);
    void countStart(const QString &package);
    /// Adds the lists under their names and "touchesSeen" and so on, the counts, and "forceStopped", "started".
    void writeTo(QJsonObject &state) const;

private:
    mutable std::mutex m_mutex;
    QMap<QString, QJsonArray> m_lists;
    QMap<QString, qint64> m_counts;
    QMap<QString, int> m_forceStops;
    QMap<QString, int> m_starts;
};

} // namespace standin
