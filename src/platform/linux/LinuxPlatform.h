#pragma once

#include "platform/Platform.h"

namespace quillnest
{

/// The real platform of a Linux desktop. Needs a QGuiApplication; made on the main thread.
/// Settings lie in "$XDG_CONFIG_HOME/Quillnest/settings.json", data in "$XDG_DATA_HOME/Quillnest", logs in
/// "$XDG_STATE_HOME/Quillnest/Logs"; the bundle is "share/quillnest" beside the folder of the executable.
/// QUILLNEST_SDK_REPOSITORY in the environment is the address of a folder of SDK package lists in place of Google's.
Platform linuxPlatform();

/// The parts that need no display: what command-line companions use.
Folders linuxFolders();
std::shared_ptr<SettingsStore> linuxSettings();
std::shared_ptr<CommandChannel> linuxCommandChannel();
std::shared_ptr<DiagnosticsPort> linuxDiagnostics();

} // namespace quillnest
