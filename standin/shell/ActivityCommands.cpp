#include "shell/CommandTable.h"

namespace standin
{

using namespace Qt::StringLiterals;

namespace
{

QString valueOf(const QStringList &args, const QString &option)
{
    const auto at = args.indexOf(option);
    return at < 0 ? QString() : args.value(at + 1);
}

/// What of an intent decides where it goes.
struct Target {
    QString package;
    QString shown; ///< the intent in the words of the messages
};

Target targetOf(const QStringList &args)
{
    const QString component = valueOf(args, u"-n"_s);
    if (!component.isEmpty())
        return {component.section(u'/', 0, 0), u"cmp="_s + component};
    const QString package = valueOf(args, u"-p"_s);
    const QString action = valueOf(args, u"-a"_s);
    if (!package.isEmpty())
        return {package, (action.isEmpty() ? QString() : u"act=%1 "_s.arg(action)) + u"pkg="_s + package};
    return {args.isEmpty() ? QString() : args.last(), u"act=%1"_s.arg(action)};
}

int start(const CommandContext &context)
{
    const Target target = targetOf(context.args.mid(1));
    const int displayId = valueOf(context.args, u"--display"_s).toInt();
    context.io.out(u"Starting: Intent { %1 }\n"_s.arg(target.shown));
    if (!context.device.packages.find(target.package)) {
        context.io.error(u"Error: Activity not started, unable to resolve Intent { %1 }\n"_s.arg(target.shown));
        return 1;
    }
    if (!context.device.displays.start(target.package, displayId)) {
        context.io.error(u"Error type 3\nError: Activity class {%1} does not exist.\n"_s.arg(target.shown));
        return 1;
    }
    context.device.journal.countStart(target.package);
    return 0;
}

int forceStop(const CommandContext &context)
{
    const QString package = context.args.value(context.args.size() - 1);
    context.device.journal.countForceStop(package);
    context.device.forceStop(package);
    return 0;
}

int broadcast(const CommandContext &context)
{
    const QString action = valueOf(context.args, u"-a"_s);
    const QString data = valueOf(context.args, u"-d"_s);
    QString intent = u"act="_s + action;
    if (!data.isEmpty())
        intent += u" dat="_s + data;
    context.io.out(u"Broadcasting: Intent { %1 flg=0x400000 }\nBroadcast completed: result=0\n"_s.arg(intent));
    return 0;
}

} // namespace

int runActivityCommand(const CommandContext &context)
{
    if (!context.device.isBooted()) {
        context.io.error(u"cmd: Can't find service: activity\n"_s);
        return 20;
    }
    const QString verb = context.args.value(0);
    if (verb == u"start" || verb == u"start-activity")
        return start(context);
    if (verb == u"force-stop" || verb == u"kill")
        return forceStop(context);
    if (verb == u"broadcast")
        return broadcast(context);
    if (verb == u"get-current-user") {
        context.io.out(u"0\n"_s);
        return 0;
    }
    context.io.error(u"Error: unknown command '%1'\n"_s.arg(verb));
    return 255;
}

void addActivityCommands(CommandTable &table)
{
    table.add(u"am"_s, runActivityCommand);
}

} // namespace standin
