#include "launcher/PanelLook.h"

#include "launcher/Wallpaper.h"

namespace quillnest
{

PanelLook PanelLook::current(const Platform &platform)
{
    PanelLook look;
    look.style = QuillnestTheme::style(*platform.settings);
    look.colors = Palette::current(platform);
    look.isDark = platform.appearance && platform.appearance->isDark();
    look.hasWallpaper = Wallpaper::isSet(platform);
    if (look.hasWallpaper) {
        // On a picture greys turn muddy and weak, so what is quiet is the label's colour, thinned.
        const auto thinned = [&look](int alpha) {
            auto color = look.colors.label;
            color.setAlpha(alpha);
            return color;
        };
        look.colors.secondaryLabel = thinned(look.isDark ? 205 : 200);
        look.colors.tertiaryLabel = thinned(165);
        look.colors.tile = QColor(255, 255, 255, look.isDark ? 26 : 120);
        look.colors.field = look.colors.tile;
        look.colors.hover = look.isDark ? QColor(255, 255, 255, 30) : QColor(255, 255, 255, 110);
        look.colors.pressed = look.isDark ? QColor(255, 255, 255, 52) : QColor(255, 255, 255, 160);
    }
    return look;
}

} // namespace quillnest
