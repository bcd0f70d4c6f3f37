#include "shell/CommandTable.h"

namespace standin
{

using namespace Qt::StringLiterals;

namespace
{

int getprop(const CommandContext &context)
{
    const QMap<QString, QString> properties = context.device.properties();
    if (context.args.isEmpty()) {
        QString lines;
        for (auto property = properties.begin(); property != properties.end(); ++property)
            lines += u"[%1]: [%2]\n"_s.arg(property.key(), *property);
        context.io.out(lines);
        return 0;
    }
    context.io.out(properties.value(context.args[0], context.args.value(1)) + u'\n');
    return 0;
}

int setprop(const CommandContext &context)
{
    if (context.args.size() != 2) {
        context.io.error(u"usage: setprop NAME VALUE\n"_s);
        return 1;
    }
    if (context.args[0].startsWith(u"ro.")) {
        context.io.error(u"Failed to set property '%1' to '%2'.\nSee dmesg for error reason.\n"_s.arg(
            context.args[0], context.args[1]));
        return 1;
    }
    context.device.setProperty(context.args[0], context.args[1]);
    return 0;
}

} // namespace

void addPropertyCommands(CommandTable &table)
{
    table.add(u"getprop"_s, getprop);
    table.add(u"setprop"_s, setprop);
}

} // namespace standin
