#pragma once

#include "platform/Platform.h"

namespace quillnest
{

class AndroidCommands;

/// Night mode of the device, which follows the host's appearance.
namespace AndroidDarkMode
{
/// Whether the host's appearance is dark. Any thread.
bool macIsDark(const Platform &platform);

/// Brings the device in line with the host, if the settings say so. Blocks for adb; never fails visibly.
void apply(const AndroidCommands &commands);
} // namespace AndroidDarkMode

} // namespace quillnest
