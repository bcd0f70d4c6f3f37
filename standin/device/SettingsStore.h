#pragma once

#include <QMap>
#include <QString>
#include <mutex>
#include <optional>

class QJsonObject;

namespace standin
{

/// The settings that outlive a restart: the namespaces "global", "secure" and "system" of `settings`, and
/// "persist" for what the device itself keeps (night mode, volumes). Every change is on disk before `set` returns.
class SettingsStore
{
public:
    explicit SettingsStore(QString file);

    std::optional<QString> value(const QString &space, const QString &key) const;
    void set(const QString &space, const QString &key, const QString &value);
    bool remove(const QString &space, const QString &key);
    QMap<QString, QString> all(const QString &space) const;
    QJsonObject toJson() const;

    bool isNight() const;
    /// A sound stream's volume, 0 to the maximum below.
    int volume(int stream) const;
    void setVolume(int stream, int volume);
    static int maximumVolume(int stream);

private:
    void save() const; // with the lock held: the file must be as new as the answer

    const QString m_file;
    mutable std::mutex m_mutex;
    QMap<QString, QMap<QString, QString>> m_spaces;
};

} // namespace standin
