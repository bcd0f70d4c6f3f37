#pragma once

#include "look/ThemeColors.h"
#include "platform/SettingsStore.h"

namespace quillnest
{

/// How headers, tiles and icons look.
enum class ThemeStyle { classic, oneui, ios, pixel };

/// The launcher's style.
namespace QuillnestTheme
{
/// The style of a setting's text; any text that names none is the classic one.
ThemeStyle style(const QString &text);
/// The style that the settings ask for.
ThemeStyle style(const SettingsStore &settings);
} // namespace QuillnestTheme

} // namespace quillnest
