#pragma once

#include "platform/SettingsStore.h"

#include <QFileSystemWatcher>
#include <QTimer>
#include <QVariantMap>

#include <mutex>
#include <optional>

namespace quillnest
{

/// Settings as one JSON file, which a person can read and edit. Bytes stand in it as {"$data": "base64"}.
///
/// Every write replaces the whole file by a rename, under a lock that all processes share, after reading what others
/// wrote meanwhile. A file that is no JSON object is set aside under another name, and the store starts empty, or goes
/// on with what it last saw.
class FileSettingsStore : public SettingsStore
{
    Q_OBJECT

public:
    /// `path` is the file; its folder is made when it is missing. Made on the main thread.
    explicit FileSettingsStore(const QString &path);
    ~FileSettingsStore() override;

    QVariant value(const QString &key) const override;
    std::optional<QString> setValue(const QString &key, const QVariant &value) override;
    std::optional<QString> remove(const QString &key) override;
    QStringList keys() const override;
    std::optional<QString> damagedFile() const override;

private:
    using Stamp = std::tuple<quint64, qint64, qint64>;

    std::optional<QString> change(const QString &key, const std::optional<QVariant> &value);
    /// What to do about a file that is no JSON object.
    enum class Damaged { setAside, leaveAlone };

    /// Reads the file if it isn't the one last seen; returns the keys whose values differ. Under `m_lock`, and to set
    /// a damaged file aside under the lock of the processes as well.
    QStringList reload(Damaged damaged);
    void putAside();
    /// Takes over the descriptor of the file that `m_values` now stands for, or -1.
    void setSeen(int descriptor);
    /// What a write survives once it has returned: the end of this process, or the loss of power as well.
    enum class Durability { process, disk };
    /// Puts `values` into the place of the file; answers why that was not possible.
    std::optional<QString> write(const QVariantMap &values, Durability durability);
    Stamp stamp() const;
    /// Emits `changed` for each key: at once on the main thread, and by way of it from any other.
    void announce(const QStringList &keys);
    void customEvent(QEvent *event) override;
    void fileMayHaveChanged();

    const QString m_path;
    mutable std::mutex m_lock;
    QVariantMap m_values;
    Stamp m_stamp{};
    /// The file last seen, kept open: as long as it is, no other file can be given its number.
    int m_seen = -1;
    std::optional<QString> m_damaged;
    /// What other threads changed and the main thread has yet to announce.
    QStringList m_unannounced;
    bool m_damageIsUnannounced = false;
    /// Why the file that is there could not be read the last time.
    std::optional<QString> m_unreadable;
    QFileSystemWatcher m_watcher;
    QTimer m_syncTimer;
};

} // namespace quillnest
