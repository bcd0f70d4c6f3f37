#pragma once

namespace quillnest
{

class AndroidCommands;

/// The volume inside the device, which stays at its top so that the host's volume governs what is heard.
namespace AndroidVolume
{
/// Turns the media and the notification stream up. Blocks for adb; never fails visibly.
void maximize(const AndroidCommands &commands);
} // namespace AndroidVolume

} // namespace quillnest
