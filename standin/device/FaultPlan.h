#pragma once

#include <QMap>
#include <QString>
#include <mutex>
#include <optional>

namespace standin
{

/// The faults that the device has been asked to show, by name, each with an argument that may be empty. Read at the
/// moment when the fault would show, so most of them can be set at any time. Thread safe.
class FaultPlan
{
public:
    /// False for a name that is not a fault's.
    bool set(const QString &name, const QString &argument);
    void clear(const QString &name);
    void clearAll();
    bool has(const QString &name) const;
    std::optional<qint64> number(const QString &name) const;
    QMap<QString, QString> all() const;
    /// "name=argument,name2"; gives back the first name that is not known.
    std::optional<QString> setFromText(const QString &text);

    static const QStringList &names();

private:
    mutable std::mutex m_mutex;
    QMap<QString, QString> m_faults;
};

} // namespace standin
