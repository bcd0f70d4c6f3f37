#include "launcher/Theme.h"

#include "base/QuillnestSettings.h"

namespace quillnest
{

ThemeStyle QuillnestTheme::style(const QString &text)
{
    if (text == QStringLiteral("oneui"))
        return ThemeStyle::oneui;
    if (text == QStringLiteral("ios"))
        return ThemeStyle::ios;
    if (text == QStringLiteral("pixel"))
        return ThemeStyle::pixel;
    return ThemeStyle::classic;
}

ThemeStyle QuillnestTheme::style(const SettingsStore &settings)
{
    return style(QuillnestSettings::text(settings, styleKey(), QStringLiteral("classic")));
}

} // namespace quillnest
