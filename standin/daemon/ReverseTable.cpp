#include "daemon/ReverseTable.h"

#include <algorithm>

namespace standin
{

bool ReverseTable::add(const QByteArray &local, const QByteArray &remote, bool mayRebind)
{
    const std::lock_guard lock(m_mutex);
    for (auto &entry : m_entries) {
        if (entry.first == local) {
            if (mayRebind)
                entry.second = remote;
            return mayRebind;
        }
    }
    m_entries.append({local, remote});
    return true;
}

bool ReverseTable::remove(const QByteArray &local)
{
    const std::lock_guard lock(m_mutex);
    return m_entries.removeIf([&](const auto &entry) { return entry.first == local; }) > 0;
}

void ReverseTable::clear()
{
    const std::lock_guard lock(m_mutex);
    m_entries.clear();
}

std::optional<QByteArray> ReverseTable::find(const QByteArray &local) const
{
    const std::lock_guard lock(m_mutex);
    const auto found
        = std::find_if(m_entries.begin(), m_entries.end(), [&](const auto &entry) { return entry.first == local; });
    if (found == m_entries.end())
        return std::nullopt;
    return found->second;
}

QList<std::pair<QByteArray, QByteArray>> ReverseTable::list() const
{
    const std::lock_guard lock(m_mutex);
    return m_entries;
}

} // namespace standin
