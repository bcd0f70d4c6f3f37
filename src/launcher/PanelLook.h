#pragma once

#include "launcher/Theme.h"
#include "look/Look.h"

namespace quillnest
{

/// How a panel looks at the moment: its controls' look, and the style of its headers, tiles and icons.
struct PanelLook : Look {
    ThemeStyle style = ThemeStyle::classic;

    /// As settings and desktop say now.
    static PanelLook current(const Platform &platform);
};

} // namespace quillnest
