#include "shell/CommandTable.h"
#include "stream/StreamSessions.h"

#include <QRegularExpression>

namespace standin
{

using namespace Qt::StringLiterals;

namespace
{

int pkill(const CommandContext &context)
{
    const QString pattern = context.args.isEmpty() ? QString() : context.args.last();
    return context.sessions.endMatching(QRegularExpression(pattern)) > 0 ? 0 : 1;
}

int ps(const CommandContext &context)
{
    QString lines = u"USER           PID  PPID        VSZ    RSS WCHAN            ADDR S NAME\n"_s;
    const auto line = [&](int pid, const QString &name) {
        lines += u"%1 %2 %3 0 0 0 0 S %4\n"_s.arg(u"u0_a123"_s, -12).arg(pid, 6).arg(1, 5).arg(name);
    };
    line(1, u"init"_s);
    for (const Task &task : context.device.displays.tasks())
        line(2000 + task.id, task.package);
    for (const QString &commandLine : context.sessions.commandLines())
        line(4000, commandLine.section(u' ', 0, 0));
    context.io.out(lines);
    return 0;
}

int pidof(const CommandContext &context)
{
    for (const Task &task : context.device.displays.tasks()) {
        if (context.args.contains(task.package)) {
            context.io.out(QString::number(2000 + task.id) + u'\n');
            return 0;
        }
    }
    return 1;
}

int appProcess(const CommandContext &context)
{
    return context.sessions.run(context.device, context.io);
}

int logcat(const CommandContext &)
{
    return 0; // the device keeps no log of its own
}

} // namespace

void addProcessCommands(CommandTable &table)
{
    table.add(u"pkill"_s, pkill);
    table.add(u"ps"_s, ps);
    table.add(u"pidof"_s, pidof);
    table.add(u"app_process"_s, appProcess);
    table.add(u"logcat"_s, logcat);
}

} // namespace standin
