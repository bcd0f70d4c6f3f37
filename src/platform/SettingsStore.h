#pragma once

#include <QObject>
#include <QStringList>
#include <QVariant>

#include <optional>

namespace quillnest
{

/// The per-user settings: text keys with typed values. A value is a bool, a number (qint64 and double are one type to
/// the store), a QString, a QByteArray, a QVariantList or a QVariantMap of those, and comes back as what was written.
///
/// Reads and writes may come from any thread. A write that has returned survives a kill of the process, and another
/// process that uses the same store sees it.
class SettingsStore : public QObject
{
    Q_OBJECT

public:
    /// The value, or an invalid QVariant if the key is absent.
    virtual QVariant value(const QString &key) const = 0;
    /// Answers why the value could not be written, in the host's words; then the key holds what it held before.
    virtual std::optional<QString> setValue(const QString &key, const QVariant &value) = 0;
    virtual std::optional<QString> remove(const QString &key) = 0;
    virtual QStringList keys() const = 0;

    /// Where settings that could not be read were put, if there were any since this store was made.
    virtual std::optional<QString> damagedFile() const { return std::nullopt; }

Q_SIGNALS:
    /// The value of `key` changed or the key was removed, by this process or from outside. Emitted on the main thread.
    void changed(const QString &key);
    /// Settings that could not be read have just been put at `path`. Emitted on the main thread.
    void setAside(const QString &path);
};

} // namespace quillnest
