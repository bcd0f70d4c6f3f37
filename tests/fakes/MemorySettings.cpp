#include "fakes/MemorySettings.h"

namespace quillnest
{

QVariant MemorySettings::value(const QString &key) const
{
    const std::scoped_lock guard(m_lock);
    return m_values.value(key);
}

void MemorySettings::setValue(const QString &key, const QVariant &value)
{
    {
        const std::scoped_lock guard(m_lock);
        // Equal values of two types, such as a flag and its text, are two values.
        const auto old = m_values.constFind(key);
        if (old != m_values.constEnd() && old->typeId() == value.typeId() && *old == value)
            return;
        m_values.insert(key, value);
    }
    Q_EMIT changed(key);
}

void MemorySettings::remove(const QString &key)
{
    {
        const std::scoped_lock guard(m_lock);
        if (m_values.remove(key) == 0)
            return;
    }
    Q_EMIT changed(key);
}

QStringList MemorySettings::keys() const
{
    const std::scoped_lock guard(m_lock);
    return m_values.keys();
}

} // namespace quillnest
