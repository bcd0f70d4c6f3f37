#pragma once

#include "common/UniqueFd.h"
#include "shell/CommandTable.h"

namespace standin
{

/// Listens inside the tree for the device tool and runs each of its commands on a thread of its own.
class ToolServer
{
public:
    ToolServer(Device &device, StreamSessions &sessions, const CommandTable &commands);
    /// False when the socket cannot be made.
    bool start();

private:
    void serve(UniqueFd connection);

    Device &m_device;
    StreamSessions &m_sessions;
    const CommandTable &m_commands;
    UniqueFd m_listener;
};

} // namespace standin
