#pragma once

#include "base/MobileApp.h"

#include <functional>

namespace quillnest
{

/// Whether an app stands behind the owner's check, as those ask who open apps. Main thread.
class AppLocking
{
public:
    virtual ~AppLocking() = default;

    /// Whether the app is behind the check at all.
    virtual bool isLocked(QUuid id) const = 0;

    /// The app was in view until now: the time until the check is asked for again begins.
    virtual void noteSeen(QUuid id) = 0;

    /// Whether opening the app now would ask for the owner.
    virtual bool needsUnlock(QUuid id) const = 0;

    /// Goes on at once, or once the owner has been recognised; after a refused check never, and without a message.
    virtual void unlockIfNeeded(const MobileApp &app, std::function<void()> proceed) = 0;
};

/// No app is locked.
class NoAppLocking : public AppLocking
{
public:
    bool isLocked(QUuid) const override { return false; }
    void noteSeen(QUuid) override { }
    bool needsUnlock(QUuid) const override { return false; }
    void unlockIfNeeded(const MobileApp &, std::function<void()> proceed) override { proceed(); }
};

} // namespace quillnest
