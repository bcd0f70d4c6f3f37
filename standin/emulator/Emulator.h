#pragma once

#include "control/ControlServer.h"
#include "daemon/Daemon.h"
#include "emulator/AdbAnnouncer.h"
#include "emulator/ConsoleServer.h"
#include "emulator/EmulatorOptions.h"
#include "shell/ToolServer.h"

namespace standin
{

/// All parts of one running emulator, put together. It lives until the process ends; its threads are never joined,
/// since an emulator may be cut off at any moment and everything worth keeping is on disk by then.
class Emulator
{
public:
    explicit Emulator(const EmulatorOptions &options);

    /// False with `problem` filled in when something that the emulator cannot do without does not come up.
    bool start(QString *problem);
    /// Ends the process with status 0.
    [[noreturn]] void quit();

private:
    bool lockAvd();
    bool readConfiguration(QString *problem);
    QString controlPath() const;

    const EmulatorOptions m_options;
    UniqueFd m_lock;
    Device m_device;
    Daemon m_daemon;
    StreamSessions m_sessions;
    CommandTable m_commands;
    ToolServer m_tools;
    ConsoleServer m_console;
    ControlServer m_control;
};

} // namespace standin
