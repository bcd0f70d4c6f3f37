#include "device/SettingsStore.h"

#include "common/JsonFile.h"

namespace standin
{

using namespace Qt::StringLiterals;

SettingsStore::SettingsStore(QString file) : m_file(std::move(file))
{
    const QJsonObject spaces = readJsonFile(m_file);
    for (auto space = spaces.begin(); space != spaces.end(); ++space) {
        const QJsonObject values = space->toObject();
        for (auto value = values.begin(); value != values.end(); ++value)
            m_spaces[space.key()][value.key()] = value->toString();
    }
}

std::optional<QString> SettingsStore::value(const QString &space, const QString &key) const
{
    const std::lock_guard lock(m_mutex);
    const QMap<QString, QString> values = m_spaces.value(space);
    const auto found = values.constFind(key);
    return found == values.constEnd() ? std::nullopt : std::optional(*found);
}

void SettingsStore::set(const QString &space, const QString &key, const QString &value)
{
    const std::lock_guard lock(m_mutex);
    m_spaces[space][key] = value;
    save();
}

bool SettingsStore::remove(const QString &space, const QString &key)
{
    const std::lock_guard lock(m_mutex);
    const bool removed = m_spaces[space].remove(key) > 0;
    if (removed)
        save();
    return removed;
}

QMap<QString, QString> SettingsStore::all(const QString &space) const
{
    const std::lock_guard lock(m_mutex);
    return m_spaces.value(space);
}

QJsonObject SettingsStore::toJson() const
{
    const std::lock_guard lock(m_mutex);
    QJsonObject spaces;
    for (auto space = m_spaces.begin(); space != m_spaces.end(); ++space) {
        QJsonObject values;
        for (auto value = space->begin(); value != space->end(); ++value)
            values[value.key()] = *value;
        spaces[space.key()] = values;
    }
    return spaces;
}

bool SettingsStore::isNight() const
{
    return value(u"persist"_s, u"night"_s) == u"yes"_s;
}

int SettingsStore::volume(int stream) const
{
    const std::optional<QString> kept = value(u"persist"_s, u"volume%1"_s.arg(stream));
    return kept ? kept->toInt() : qMin(5, maximumVolume(stream));
}

void SettingsStore::setVolume(int stream, int volume)
{
    set(u"persist"_s, u"volume%1"_s.arg(stream), QString::number(qBound(0, volume, maximumVolume(stream))));
}

int SettingsStore::maximumVolume(int stream)
{
    return stream == 3 ? 15 : 7; // music has finer steps than the rest
}

void SettingsStore::save() const
{
    QJsonObject spaces;
    for (auto space = m_spaces.begin(); space != m_spaces.end(); ++space) {
        QJsonObject values;
        for (auto value = space->begin(); value != space->end(); ++value)
            values[value.key()] = *value;
        spaces[space.key()] = values;
    }
    writeJsonFile(m_file, spaces);
}

} // namespace standin
