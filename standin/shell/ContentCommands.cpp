#include "common/StableHash.h"
#include "shell/CommandTable.h"

#include <QFileInfo>
#include <QRegularExpression>

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

/// The media store knows every file of the shared storage by its path, and gives it a number.
int content(const CommandContext &context)
{
    if (!context.device.isBooted()) {
        context.io.error(u"Error while accessing provider\n"_s);
        return 1;
    }
    if (context.args.value(0) != u"query") {
        context.io.error(u"[ERROR] Unsupported command: %1\n"_s.arg(context.args.value(0)));
        return 1;
    }
    static const QRegularExpression byPath(u"^_data='(/storage/emulated/0/[^']+)'$"_s);
    const auto match = byPath.match(valueOf(context.args, u"--where"_s));
    const QString path = match.captured(1);
    const bool known = valueOf(context.args, u"--uri"_s).startsWith(u"content://media/external/"_s) && match.hasMatch()
        && QFileInfo(context.device.tree.hostPath(path)).isFile();
    context.io.out(known ? u"Row: 0 _id=%1\n"_s.arg(1000 + stableHash(path) % 900000) : u"No result found.\n"_s);
    return 0;
}

} // namespace

void addContentCommands(CommandTable &table)
{
    table.add(u"content"_s, content);
}

} // namespace standin
