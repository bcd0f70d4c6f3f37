#pragma once

namespace quillnest
{

class CommandDispatcher;
class SettingsStore;

/// Says what the commands about the panel's looks do. `settings` lives as long as the commands are taken.
void handleLauncherCommands(CommandDispatcher &commands, SettingsStore &settings);

} // namespace quillnest
