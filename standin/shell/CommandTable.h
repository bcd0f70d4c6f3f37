#pragma once

#include "device/Device.h"
#include "shell/CommandIo.h"

#include <functional>
#include <map>

namespace standin
{

class StreamSessions;

/// What a command may work with.
struct CommandContext {
    Device &device;
    StreamSessions &sessions;
    CommandIo &io;
    QStringList args; ///< without the command's name
};

/// A command returns its exit status.
using Command = std::function<int(const CommandContext &)>;

/// The device's own commands by name. Each group has a file that adds its commands.
class CommandTable
{
public:
    CommandTable();

    void add(const QString &name, Command command) { m_commands[name] = std::move(command); }
    QStringList names() const;
    int run(const QString &name, const CommandContext &context) const;

private:
    std::map<QString, Command> m_commands;
};

void addPropertyCommands(CommandTable &table);
void addSettingsCommands(CommandTable &table);
void addPackageCommands(CommandTable &table);
void addActivityCommands(CommandTable &table);
void addServiceCommands(CommandTable &table);
void addDumpCommands(CommandTable &table);
void addScreenCommands(CommandTable &table);
void addContentCommands(CommandTable &table);
void addProcessCommands(CommandTable &table);

// The commands that `cmd` reaches under another name too.
int runPackageCommand(const CommandContext &context);
int runActivityCommand(const CommandContext &context);
int runSettingsCommand(const CommandContext &context);

} // namespace standin
