#include "launcher/PanelLook.h"

#include "launcher/wallpaper/Wallpaper.h"

namespace quillnest
{

PanelLook PanelLook::current(const Platform &platform)
{
    const auto plain = Look::current(platform);
    return {Wallpaper::isSet(platform) ? plain.onWallpaper() : plain, QuillnestTheme::style(*platform.settings)};
}

} // namespace quillnest
