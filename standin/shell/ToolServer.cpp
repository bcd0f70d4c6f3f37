#include "shell/ToolServer.h"

#include "common/Sockets.h"

#include <QFile>

namespace standin
{

ToolServer::ToolServer(Device &device, StreamSessions &sessions, const CommandTable &commands)
    : m_device(device), m_sessions(sessions), m_commands(commands)
{
}

bool ToolServer::start()
{
    m_listener = listenOnUnixPath(QFile::encodeName(m_device.tree.toolSocket()));
    if (!m_listener.isValid())
        return false;
    serveEachConnection(m_listener.get(), [this](UniqueFd connection) { serve(std::move(connection)); });
    return true;
}

void ToolServer::serve(UniqueFd connection)
{
    CommandIo io(std::move(connection));
    if (!io.readRequest())
        return;
    m_device.journal.add(
        QStringLiteral("shellCommands"), (QStringList(io.name()) + io.arguments()).join(QLatin1Char(' ')));
    io.finish(m_commands.run(io.name(), {m_device, m_sessions, io, io.arguments()}));
}

} // namespace standin
