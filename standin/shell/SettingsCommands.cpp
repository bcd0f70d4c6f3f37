#include "shell/CommandTable.h"

namespace standin
{

using namespace Qt::StringLiterals;

int runSettingsCommand(const CommandContext &context)
{
    QStringList args = context.args;
    if (args.value(0) == u"--user") // there is one user, so it does not matter which
        args = args.mid(2);
    const QString verb = args.value(0);
    const QString space = args.value(1);
    const QString key = args.value(2);
    SettingsStore &settings = context.device.settings;
    if (!QStringList{u"global"_s, u"secure"_s, u"system"_s}.contains(space)) {
        context.io.error(u"Invalid namespace '%1'\n"_s.arg(space));
        return 255;
    }
    if (verb == u"get" && args.size() == 3) {
        context.io.out(settings.value(space, key).value_or(u"null"_s) + u'\n');
        return 0;
    }
    if (verb == u"put" && args.size() >= 4) {
        settings.set(space, key, args[3]);
        return 0;
    }
    if (verb == u"delete" && args.size() == 3) {
        context.io.out(u"Deleted %1 rows\n"_s.arg(settings.remove(space, key) ? 1 : 0));
        return 0;
    }
    if (verb == u"list") {
        QString lines;
        const QMap<QString, QString> all = settings.all(space);
        for (auto entry = all.begin(); entry != all.end(); ++entry)
            lines += entry.key() + u'=' + *entry + u'\n';
        context.io.out(lines);
        return 0;
    }
    context.io.error(u"Invalid command: %1\n"_s.arg(verb));
    return 255;
}

void addSettingsCommands(CommandTable &table)
{
    table.add(u"settings"_s, runSettingsCommand);
}

} // namespace standin
