#include "features/darkmode/AndroidDarkMode.h"

#include "features/darkmode/DarkModeSettings.h"
#include "runtime/AndroidCommands.h"

namespace quillnest
{

bool AndroidDarkMode::macIsDark(const Platform &platform)
{
    return platform.appearance && platform.appearance->isDark();
}

void AndroidDarkMode::apply(const AndroidCommands &commands)
{
    const auto &platform = commands.platform();
    if (!DarkModeSettings::sync.value(*platform.settings))
        return;
    const auto night = macIsDark(platform) ? QStringLiteral("yes") : QStringLiteral("no");
    commands.runADB(
        {QStringLiteral("shell"), QStringLiteral("cmd"), QStringLiteral("uimode"), QStringLiteral("night"), night});
    commands.log().write(QStringLiteral("dark mode: android night=%1").arg(night));
}

} // namespace quillnest
