#include "fakes/MemorySettings.h"

namespace quillnest
{

QVariant MemorySettings::value(const QString &key) const
{
    const std::scoped_lock guard(m_lock);
    return m_values.value(key);
}

std::optional<QString> MemorySettings::setValue(const QString &key, const QVariant &value)
{
    if (failure)
        return failure;
    {
        const std::scoped_lock guard(m_lock);
        // Equal values of two types, such as a flag and its text, are two values.
        const auto old = m_values.constFind(key);
        if (old != m_values.constEnd() && old->typeId() == value.typeId() && *old == value)
            return std::nullopt;
        m_values.insert(key, value);
    }
    Q_EMIT changed(key);
    return std::nullopt;
}

std::optional<QString> MemorySettings::remove(const QString &key)
{
    if (failure)
        return failure;
    {
        const std::scoped_lock guard(m_lock);
        if (m_values.remove(key) == 0)
            return std::nullopt;
    }
    Q_EMIT changed(key);
    return std::nullopt;
}

QStringList MemorySettings::keys() const
{
    const std::scoped_lock guard(m_lock);
    return m_values.keys();
}

} // namespace quillnest
