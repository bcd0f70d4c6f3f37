#pragma once

namespace quillnest
{

class CommandDispatcher;
class DeviceTweaks;
class SettingsStore;

/// The ad blocker: keeps every device in line with its settings, and is switched by the commands "adblock-on" and
/// "adblock-off". Made once, before the start; main thread.
class AdBlock
{
public:
    /// All of these live as long as the commands are taken.
    AdBlock(DeviceTweaks &device, SettingsStore &settings, CommandDispatcher &commands);
};

} // namespace quillnest
