#pragma once

#include "base/Setting.h"

namespace quillnest
{

/// The settings of the application as a whole, and its library.
namespace CoreSettings
{
inline constexpr Setting<bool> prewarm{
    "QuillnestPrewarm", true, "Android starts in the background when the panel opens"};
inline constexpr Setting<bool> stopAndroidOnQuit{
    "QuillnestStopAndroidOnQuit", true, "Android stops when Quillnest ends"};
inline constexpr Setting<bool> snapshots{
    "QuillnestSnapshots", false, "a diagnostic picture of the panel a second after the start"};
inline constexpr Setting<bool> loginItemDefaulted{
    "Quillnest.loginItemDefaulted", false, "the login item has been switched on once"};
inline constexpr SettingRecord apps{"Quillnest.apps.v1", "data", "the library"};
inline constexpr SettingFamily unreadableApps{
    "Quillnest.apps.unreadable.", "data", "a library as it was when it could not be read"};

inline QList<SettingDeclaration> all()
{
    return declarations(prewarm, stopAndroidOnQuit, snapshots, loginItemDefaulted, apps, unreadableApps);
}
} // namespace CoreSettings

} // namespace quillnest
