#pragma once

#include "platform/SampleRenderer.h"
#include "stream/StreamStatistics.h"
#include "windows/ViewCounters.h"

#include <QRect>
#include <QSize>

#include <optional>

namespace quillnest
{

/// What can be counted and measured of one app window, as of now.
struct SessionCounters {
    StreamStatistics stream;
    RendererCounters renderer;
    ViewCounters view;
    /// In pixels.
    QSize videoSize;
    /// The window as its user sees it, and the picture's area, on the desktop, in points.
    QRect frame;
    QRect videoArea;
    /// Pixels per point.
    double scale = 1;
    /// The window system's name of the window.
    quintptr windowId = 0;
    /// Whether it has the keyboard.
    bool isActive = false;
    bool isPinned = false;
    /// From the session's start to the first picture on the screen.
    std::optional<double> firstShownSeconds;
};

} // namespace quillnest
