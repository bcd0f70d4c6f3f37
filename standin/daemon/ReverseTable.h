#pragma once

#include <QByteArray>
#include <QList>
#include <mutex>
#include <optional>
#include <utility>

namespace standin
{

/// The reverse tunnels of one transport: a socket name on the device, and where on the host it leads. Thread safe.
class ReverseTable
{
public:
    /// False when the name is taken and may not be bound again.
    bool add(const QByteArray &local, const QByteArray &remote, bool mayRebind);
    bool remove(const QByteArray &local);
    void clear();
    std::optional<QByteArray> find(const QByteArray &local) const;
    QList<std::pair<QByteArray, QByteArray>> list() const;

private:
    mutable std::mutex m_mutex;
    QList<std::pair<QByteArray, QByteArray>> m_entries;
};

} // namespace standin
