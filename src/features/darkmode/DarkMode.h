#pragma once

#include <QObject>

#include <memory>

namespace quillnest
{

class AndroidCommands;
class DeviceTweaks;
class SessionEvents;

/// The dark mode: keeps every device in line with the host's appearance, its changes included. Made once, before the
/// start; main thread.
class DarkMode : public QObject
{
    Q_OBJECT

public:
    DarkMode(
        DeviceTweaks &device, const std::shared_ptr<const AndroidCommands> &commands, const SessionEvents &windows);
};

} // namespace quillnest
