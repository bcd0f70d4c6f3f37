#pragma once

#include "platform/Screens.h"
#include "platform/SettingsStore.h"

#include <QRect>
#include <QString>

#include <optional>
#include <vector>

namespace quillnest
{

/// Where windows stand. Main thread.
namespace WindowPlacement
{
/// What is kept of an app's window, under its package.
struct Record {
    /// Absent in a record that holds no place.
    std::optional<QPoint> origin;
    bool isPinned = false;
};
Record load(const SettingsStore &settings, const QString &package);
void save(SettingsStore &settings, const QString &package, QRect frame, bool isPinned);

/// The part of the screen around `point`, or else of the main one, that a window may fill; absent without a screen.
std::optional<QRect> visibleFrame(const Screens &screens, QPoint point);

/// Where a window opens that would like to have `size`: a pinned one where it was, as long as that is on a screen;
/// others at the anchor, or else in the upper right corner of the main screen, as far inside as they fit and not just
/// over another one, of which `taken` are the corners.
QRect initialFrame(
    const Screens &screens, const Record &record, QSize size, std::optional<QRect> anchor,
    const std::vector<QPoint> &taken);

/// Where the launcher opens by itself: in the right corner at the top, or at the bottom if that is where the desktop's
/// bar is, with the status icons in it.
QPoint launcherOrigin(const ScreenInfo &screen, QSize size);

/// Where a frame of `wanted` size goes that keeps `frame`'s top left corner inside `visible`.
QRect fittedFrame(QRect frame, QSize wanted, QRect visible);
} // namespace WindowPlacement

} // namespace quillnest
