#pragma once

#include "platform/SettingsStore.h"

#include <QColor>
#include <QFont>

namespace quillnest
{

/// How headers, tiles and icons look.
enum class ThemeStyle { classic, oneui, ios, pixel };

/// The launcher's style and the colours that all styles share.
namespace QuillnestTheme
{
inline QString styleKey()
{
    return QStringLiteral("QuillnestTheme");
}

/// The style of a setting's text; any text that names none is the classic one.
ThemeStyle style(const QString &text);
/// The style that the settings ask for.
ThemeStyle style(const SettingsStore &settings);

/// Life: what runs, what is ready.
inline QColor jade()
{
    return QColor::fromRgbF(0.086F, 0.639F, 0.498F);
}
/// What asks to be looked at.
inline QColor ember()
{
    return QColor::fromRgbF(0.949F, 0.392F, 0.239F);
}
} // namespace QuillnestTheme

} // namespace quillnest
