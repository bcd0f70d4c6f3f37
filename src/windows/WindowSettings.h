#pragma once

#include "base/Setting.h"

namespace quillnest
{

/// The settings of app windows and of what belongs to all of them.
namespace WindowSettings
{
inline constexpr Setting<bool> singleApp{"QuillnestSingleApp", true, "opening an app closes the others"};
/// 0 or less means never.
inline constexpr Setting<double> idleShutdownMinutes{
    "QuillnestIdleShutdownMinutes", 5, "minutes after the last window was closed until Android is stopped; 0 is never"};
inline constexpr Setting<bool> autoHide{
    "QuillnestAutoHide", true, "a window that loses the keyboard and isn't pinned hides itself"};
inline constexpr SettingFamily window{
    "Quillnest.window.", "record", "place and pin of the window of the package that follows"};

inline QList<SettingDeclaration> all()
{
    return declarations(singleApp, idleShutdownMinutes, autoHide, window);
}
} // namespace WindowSettings

} // namespace quillnest
