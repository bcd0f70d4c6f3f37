#pragma once

#include "platform/Screens.h"
#include "platform/SettingsStore.h"

#include <QRect>
#include <QString>

#include <optional>

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

/// Where a window of `size` opens: a pinned one where it was, as long as that is on a screen; others at the anchor, or
/// else in the upper right corner of the main screen.
QPoint initialOrigin(const Screens &screens, const Record &record, QSize size, std::optional<QRect> anchor);

/// Where a frame of `wanted` size goes that keeps `frame`'s top left corner inside `visible`.
QRect fittedFrame(QRect frame, QSize wanted, QRect visible);
} // namespace WindowPlacement

} // namespace quillnest
