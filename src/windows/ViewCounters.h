#pragma once

#include "base/LatencyHistogram.h"

#include <chrono>
#include <cstdint>
#include <optional>

namespace quillnest
{

/// What became of the pictures in a view.
struct ViewCounters {
    std::uint64_t framesShown = 0;
    /// Age of the picture when its pixels were last handed to the display, in milliseconds.
    double lastFrameAge = 0;
    /// Of all pictures that were handed to the display as they came.
    LatencyHistogram frameAges;
    /// `Clock::monotonic` when the first picture was handed to the display.
    std::optional<std::chrono::nanoseconds> firstShownAt;
};

} // namespace quillnest
