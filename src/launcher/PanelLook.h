#pragma once

#include "launcher/Theme.h"
#include "platform/Platform.h"
#include "windows/Palette.h"

namespace quillnest
{

/// How a panel looks at the moment: what its parts need to know in order to paint themselves.
struct PanelLook {
    ThemeStyle style = ThemeStyle::classic;
    Palette colors;
    bool isDark = false;
    /// A wallpaper shines through, so what lies on it has to let it.
    bool hasWallpaper = false;

    /// As settings and desktop say now.
    static PanelLook current(const Platform &platform);
};

} // namespace quillnest
