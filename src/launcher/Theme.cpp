#include "launcher/Theme.h"

#include "launcher/LauncherSettings.h"

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
    return style(LauncherSettings::theme.value(settings));
}

} // namespace quillnest
