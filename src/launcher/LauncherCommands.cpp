#include "launcher/LauncherCommands.h"

#include "base/CommandDispatcher.h"
#include "launcher/LauncherSettings.h"

namespace quillnest
{

void handleLauncherCommands(CommandDispatcher &commands, SettingsStore &settings)
{
    commands.handle(QStringLiteral("wallpaper:"), [&settings](const QString &id) {
        LauncherSettings::wallpaper.set(settings, id);
    });
    commands.handle(
        QStringLiteral("theme:"), [&settings](const QString &style) { LauncherSettings::theme.set(settings, style); });
}

} // namespace quillnest
