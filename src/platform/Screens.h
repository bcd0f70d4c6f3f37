#pragma once

#include <QMargins>
#include <QPoint>
#include <QRect>

#include <optional>
#include <vector>

namespace quillnest
{

/// One screen, in points with y growing downwards.
struct ScreenInfo {
    QRect frame;
    /// The part that panels and docks leave free.
    QRect visibleFrame;
    /// Pixels per point.
    double backingScaleFactor = 1.0;
};

/// The screens of the desktop. Main thread.
class Screens
{
public:
    virtual ~Screens() = default;
    /// The main one first.
    virtual std::vector<ScreenInfo> all() const = 0;

    /// Whether windows may be see-through, for rounded corners and shadows.
    virtual bool isComposited() const = 0;

    /// Tells the desktop that the outermost `shadow` points of a window, of `size` points in all, are its shadow: they
    /// don't count where the window is placed, and they let the mouse through but for `reach` points around the frame.
    virtual void declareShadow(quintptr window, QSize size, QMargins shadow, int reach, double scale) = 0;

    /// Whether a window that no longer counts as active still has the keyboard: something, such as a window manager
    /// that moves or resizes the window, has grabbed it for a moment. `window` is the native id.
    virtual bool keepsKeyboard(quintptr window) const = 0;

    /// Whether a button of the mouse is held down, over whichever program's window.
    virtual bool isMouseButtonDown() const = 0;

    std::optional<ScreenInfo> main() const
    {
        const auto screens = all();
        return screens.empty() ? std::nullopt : std::optional(screens.front());
    }

    std::optional<ScreenInfo> containing(QPoint point) const
    {
        for (const auto &screen : all()) {
            if (screen.frame.contains(point))
                return screen;
        }
        return std::nullopt;
    }
};

} // namespace quillnest
