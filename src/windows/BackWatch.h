#pragma once

#include "windows/WindowServices.h"

#include <QString>

#include <functional>
#include <memory>

namespace quillnest
{

/// Looks whether an app is still there after Android's back. Back on an app's first screen leaves the app, and its
/// window would go on showing an empty display. Android takes its time to leave, so one look isn't enough.
///
/// The shape of all that watches the device for a window: the clock says when to look, the look itself is work in the
/// background, and its answer comes back to the main thread, where it finds the watch by a weak hold, or finds it gone.
/// Main thread.
class BackWatch
{
public:
    /// `onLeft` runs when the newest back has left the app; it may stop or destroy the watch.
    BackWatch(const WindowServices &services, QString package, std::function<void()> onLeft);
    /// Looks no more.
    ~BackWatch();
    BackWatch(const BackWatch &) = delete;
    BackWatch &operator=(const BackWatch &) = delete;

    /// A back was sent: looks four times, and forgets the looks of the back before.
    void backSent();

    /// Looks no more, for good.
    void stop();

    /// Whether `dumpsys` output names the package's activity as resumed.
    static bool isResumed(const QString &output, const QString &package);

private:
    class Watch;

    const std::shared_ptr<Watch> m_watch;
};

} // namespace quillnest
