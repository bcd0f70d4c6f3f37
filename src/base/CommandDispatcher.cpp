#include "base/CommandDispatcher.h"

#include "base/CommandTable.h"

#include <algorithm>

namespace quillnest
{

CommandDispatcher::CommandDispatcher(std::shared_ptr<QuillnestLog> log) : m_log(std::move(log)) { }

void CommandDispatcher::handle(const QString &command, Action action)
{
    const bool isKnown = std::any_of(commandTable.begin(), commandTable.end(), [&command](const KnownCommand &known) {
        return command == QLatin1String(known.text);
    });
    if (!isKnown || !m_actions.try_emplace(command, std::move(action)).second)
        qFatal("CommandDispatcher: \"%s\" is no command or is handled already", qUtf8Printable(command));
}

void CommandDispatcher::run(const QString &command) const
{
    m_log->write(QStringLiteral("command %1").arg(command));
    for (const auto &known : commandTable) {
        const QLatin1String name(known.text);
        const bool takesArgument = name.endsWith(QLatin1Char(':'));
        if (takesArgument ? !command.startsWith(name) : command != name)
            continue;
        if (const auto found = m_actions.find(name); found != m_actions.end())
            found->second(takesArgument ? command.mid(name.size()) : QString());
        return;
    }
}

} // namespace quillnest
