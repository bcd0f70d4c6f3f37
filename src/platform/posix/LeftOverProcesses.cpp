#include "platform/LeftOverProcesses.h"

#include <unistd.h>

namespace quillnest
{

namespace
{
/// As a pattern that matches the text and nothing else.
QString literally(const QString &text)
{
    QString pattern;
    for (const auto letter : text) {
        if (QStringView(u"\\.^$*+?()[]{}|").contains(letter))
            pattern += u'\\';
        pattern += letter;
    }
    return pattern;
}
} // namespace

void endLeftOverProcesses(ChildProcesses &processes, const QStringList &texts, Ending ending)
{
    QStringList patterns;
    for (const auto &text : texts)
        patterns.append(literally(text));
    ChildCommand command{
        .program = QStringLiteral("/usr/bin/pkill"),
        .arguments
        = {QStringLiteral("-U"), QString::number(::getuid()), QStringLiteral("-f"), QStringLiteral("--"),
           patterns.join(QStringLiteral(".*"))}};
    if (ending == Ending::byForce)
        command.arguments.prepend(QStringLiteral("-KILL"));
    command.output = ChildCommand::Output::null;
    try {
        processes.start(command);
    } catch (const LaunchError &) {
        // They do no harm that couldn't wait for the next time.
    }
}

} // namespace quillnest
