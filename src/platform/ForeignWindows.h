#pragma once

#include <QPoint>
#include <QSize>
#include <QString>

#include <cstdint>
#include <vector>

namespace quillnest
{

/// The windows of other programs, as far as the desktop lets one program move those of another. Sizes and places are
/// those of the whole window with its frame, in points with y growing downwards. Main thread.
class ForeignWindows
{
public:
    using WindowId = std::uint32_t;

    virtual ~ForeignWindows() = default;

    /// Whether the desktop lets this program move others' windows.
    virtual bool isTrusted() const = 0;
    /// Lets the desktop ask the user for that, where it has a way to.
    virtual void askForTrust() = 0;

    /// Whether a program of this identity runs, with or without a window.
    virtual bool isRunning(const QString &bundleIdentifier) const = 0;
    /// The program's windows, the oldest first.
    virtual std::vector<WindowId> windows(const QString &bundleIdentifier) const = 0;

    /// Both answer whether the desktop took the request.
    virtual bool setSize(WindowId window, QSize size) = 0;
    virtual bool setPosition(WindowId window, QPoint position) = 0;
    /// Raises the window and gives it the keyboard.
    virtual void activate(WindowId window) = 0;
};

} // namespace quillnest
