#pragma once

#include "platform/SettingsStore.h"

#include <QVariantMap>

#include <mutex>

namespace quillnest
{

/// Settings that live as long as the object. `changed` is emitted inside the call that changes a value, so tests write
/// settings on the main thread where somebody listens.
class MemorySettings : public SettingsStore
{
    Q_OBJECT

public:
    QVariant value(const QString &key) const override;
    std::optional<QString> setValue(const QString &key, const QVariant &value) override;
    std::optional<QString> remove(const QString &key) override;
    QStringList keys() const override;
    std::optional<QString> damagedFile() const override { return damaged; }

    /// While this is set nothing can be written, and this is why.
    std::optional<QString> failure;
    std::optional<QString> damaged;

private:
    mutable std::mutex m_lock;
    QVariantMap m_values;
};

} // namespace quillnest
