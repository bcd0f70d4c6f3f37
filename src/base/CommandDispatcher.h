#pragma once

#include "base/QuillnestLog.h"

#include <QString>

#include <functional>
#include <map>
#include <memory>

namespace quillnest
{

/// Carries out the commands of the text channel, each by what its room has said. Text that is no command does nothing
/// beyond its line in the log, and nor does a command that nobody handles. Main thread.
class CommandDispatcher
{
public:
    /// Gets what follows the colon; an empty text for a command without one.
    using Action = std::function<void(const QString &argument)>;

    explicit CommandDispatcher(std::shared_ptr<QuillnestLog> log);

    /// `command` stands in the table, colon included, and is handled once; anything else is a programmer's error and
    /// ends the program.
    void handle(const QString &command, Action action);

    void run(const QString &command) const;

private:
    const std::shared_ptr<QuillnestLog> m_log;
    std::map<QString, Action> m_actions;
};

} // namespace quillnest
