#pragma once

#include "look/Palette.h"

namespace quillnest
{

/// How the controls of a window look at the moment: what they need to know in order to paint themselves. Whoever makes
/// the controls keeps it alive as long as they are, and updates them when it has changed.
struct Look {
    Palette colors;
    bool isDark = false;
    /// A picture shines through, so what lies on it has to let it.
    bool hasWallpaper = false;

    /// As the desktop says now, on a plain ground.
    static Look current(const Platform &platform);
    /// The same on a picture.
    Look onWallpaper() const;
};

} // namespace quillnest
