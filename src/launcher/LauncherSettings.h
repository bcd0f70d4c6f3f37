#pragma once

#include "base/Setting.h"

namespace quillnest
{

/// The settings of the panel's looks and keys.
namespace LauncherSettings
{
/// A value that is no style counts as the default; QuillnestTheme reads it.
inline constexpr Setting<QString> theme{
    "QuillnestTheme", "classic", "style of the tiles: classic, oneui, ios or pixel"};
inline constexpr Setting<QString> wallpaper{
    "QuillnestWallpaper", "none", "the panel's wallpaper: none, custom or the name of a preset"};
inline constexpr Setting<qint64> wallpaperRevision{
    "QuillnestWallpaperRevision", 0, "counts the photos that were chosen as the wallpaper"};
inline constexpr Setting<bool> showRuntimeSetup{
    "QuillnestShowRuntimeSetup", false, "the setup screen shows although Android is complete"};

inline QList<SettingDeclaration> all()
{
    return declarations(theme, wallpaper, wallpaperRevision, showRuntimeSetup);
}
} // namespace LauncherSettings

} // namespace quillnest
