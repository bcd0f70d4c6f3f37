#include "device/Journal.h"

namespace standin
{

using namespace Qt::StringLiterals;

namespace
{

constexpr qsizetype listLimit = 500;

const QStringList &listNames()
{
    static const QStringList names
        = {u"touches"_s, u"keys"_s, u"texts"_s, u"scrolls"_s, u"resizes"_s, u"shellCommands"_s, u"errors"_s};
    return names;
}

QJsonObject countsAsJson(const QMap<QString, int> &counts)
{
    QJsonObject object;
    for (auto entry = counts.begin(); entry != counts.end(); ++entry)
        object[entry.key()] = *entry;
    return object;
}

} // namespace

void Journal::add(const QString &list, const QJsonValue &entry)
{
    const std::lock_guard lock(m_mutex);
    QJsonArray &entries = m_lists[list];
    entries.append(entry);
    if (entries.size() > listLimit)
        entries.removeFirst();
    ++m_counts[list];
}

void Journal::countForceStop(const QString &package)
{
    const std::lock_guard lock(m_mutex);
    ++m_forceStops[package];
}

void Journal::countStart(const QString &package)
{
    const std::lock_guard lock(m_mutex);
    ++m_starts[package];
}

void Journal::writeTo(QJsonObject &state) const
{
    const std::lock_guard lock(m_mutex);
    for (const QString &name : listNames()) {
        state[name] = m_lists.value(name);
        state[name + u"Seen"_s] = m_counts.value(name);
    }
    state[u"forceStopped"_s] = countsAsJson(m_forceStops);
    state[u"started"_s] = countsAsJson(m_starts);
}

} // namespace standin
