#pragma once

#include "base/Setting.h"

namespace quillnest
{

/// What the user chooses about Android itself, and what is known of installs.
namespace RuntimeSettings
{
/// A value that is no selectable version counts as the default; AndroidVersions reads it.
inline constexpr Setting<qint64> androidAPI{"QuillnestAndroidAPI", 35, "the Android version that apps run on"};
inline constexpr Setting<bool> micCamera{
    "QuillnestMicCamera", false, "apps may use this computer's microphone and camera"};
inline constexpr Setting<bool> useDeveloperSDK{
    "QuillnestUseDeveloperSDK", false, "the developer's own Android SDK in place of the managed one"};
inline constexpr SettingFamily installed{
    "Quillnest.installed.", "record", "which package was installed from the file whose path follows"};

inline QList<SettingDeclaration> all()
{
    return declarations(androidAPI, micCamera, useDeveloperSDK, installed);
}
} // namespace RuntimeSettings

} // namespace quillnest
