#pragma once

#include "base/Setting.h"

namespace quillnest
{

/// The settings of the dark mode.
namespace DarkModeSettings
{
inline constexpr Setting<bool> sync{"QuillnestSyncDarkMode", true, "Android follows this computer's appearance"};

inline QList<SettingDeclaration> all()
{
    return declarations(sync);
}
} // namespace DarkModeSettings

} // namespace quillnest
