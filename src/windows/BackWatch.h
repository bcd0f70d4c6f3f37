#pragma once

#include "windows/WindowServices.h"

#include <QString>

#include <functional>
#include <memory>

namespace quillnest
{

/// Looks whether an app is still there after Android's back. Back on an app's first screen leaves the app, and its
/// window would go on showing an empty display. Android takes its time to leave, so one look isn't enough.
class BackWatch
{
public:
    /// `onLeft` runs on the main thread when the newest back has left the app.
    BackWatch(const WindowServices &services, QString package, std::function<void()> onLeft);

    /// A back was sent: looks four times, and forgets the looks of the back before.
    void backSent();

    /// Looks no more.
    void stop();

    /// Whether `dumpsys` output names the package's activity as resumed.
    static bool isResumed(const QString &output, const QString &package);

private:
    /// Shared with the looks under way. A generation that has moved on means that the user has acted since, and a
    /// stale answer must not close the window.
    struct State {
        int generation = 0;
        bool stopped = false;
        std::function<void()> onLeft;
    };

    const WindowServices &m_services;
    const QString m_package;
    const std::shared_ptr<State> m_state;
};

} // namespace quillnest
