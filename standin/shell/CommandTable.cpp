#include "shell/CommandTable.h"

namespace standin
{

CommandTable::CommandTable()
{
    addPropertyCommands(*this);
    addSettingsCommands(*this);
    addPackageCommands(*this);
    addActivityCommands(*this);
    addServiceCommands(*this);
    addDumpCommands(*this);
    addScreenCommands(*this);
    addContentCommands(*this);
    addProcessCommands(*this);
}

QStringList CommandTable::names() const
{
    QStringList names;
    for (const auto &[name, command] : m_commands)
        names.append(name);
    return names;
}

int CommandTable::run(const QString &name, const CommandContext &context) const
{
    const auto found = m_commands.find(name);
    if (found == m_commands.end()) {
        context.io.error(name + QStringLiteral(": not a command of this device\n"));
        return 127;
    }
    return found->second(context);
}

} // namespace standin
