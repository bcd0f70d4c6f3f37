#pragma once

namespace quillnest
{

class AndroidCommands;

/// Ad blocking by means of a private DNS host inside Android.
namespace AndroidAdBlock
{
/// Brings the device in line with the settings. Blocks for adb; never fails visibly.
void apply(const AndroidCommands &commands);
} // namespace AndroidAdBlock

} // namespace quillnest
