#pragma once

#include "platform/Folders.h"
#include "platform/SettingsStore.h"
#include "runtime/AndroidRuntimePaths.h"

namespace quillnest
{

/// The four lines of an AVD's configuration that follow the user's settings.
namespace AndroidHardware
{
/// Brings the sound, microphone and camera lines of the AVD in line with the settings; called before each start of
/// the emulator. Serves any AVD, whatever tool made it. Never fails visibly; leaves a file alone that is right already.
void apply(const AndroidRuntimePaths &paths, const SettingsStore &settings, const Folders &folders);
} // namespace AndroidHardware

} // namespace quillnest
