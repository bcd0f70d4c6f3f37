#pragma once

#include "base/AppLocking.h"

#include <QList>
#include <QSet>
#include <QStringList>

namespace quillnest
{

/// Locks of some apps, whose owner answers when the test says so.
class FakeLocks : public AppLocking
{
public:
    bool isLocked(QUuid id) const override { return locked.contains(id); }
    void noteSeen(QUuid id) override { seen.append(id); }
    bool needsUnlock(QUuid id) const override { return locked.contains(id); }
    void unlockIfNeeded(const MobileApp &app, std::function<void()> proceed) override
    {
        asked.append(QStringLiteral("open %1").arg(app.displayName()));
        waiting = std::move(proceed);
    }

    QSet<QUuid> locked;
    QList<QUuid> seen;
    QStringList asked;
    std::function<void()> waiting;
};

} // namespace quillnest
