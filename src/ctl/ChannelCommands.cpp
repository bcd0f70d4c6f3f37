#include "base/CommandTable.h"
#include "ctl/ArgumentReader.h"
#include "ctl/Commands.h"
#include "ctl/Errors.h"
#include "ctl/Help.h"
#include "ctl/Output.h"
#include "platform/HostServices.h"

#include <algorithm>

namespace quillnest::ctl
{

namespace
{

bool isKnown(const QString &text)
{
    return std::any_of(commandTable.begin(), commandTable.end(), [&text](const KnownCommand &command) {
        const QLatin1String name(command.text);
        return name.endsWith(u':') ? text.startsWith(name) : text == name;
    });
}

} // namespace

int post(const QStringList &arguments)
{
    ArgumentReader reader(arguments);
    if (reader.takeFlag({QStringLiteral("--list")})) {
        reader.operands({});
        print(commandList());
        return 0;
    }
    const auto text = reader.operands({QStringLiteral("TEXT")}).constFirst();
    if (text.isEmpty())
        throw UsageError(QStringLiteral("TEXT is empty"));
    // An instance of another version may know more, so it is posted all the same.
    if (!isKnown(text))
        complain(QStringLiteral("\"%1\" is none of the commands of \"post --list\"; posted anyway").arg(text));
    if (!hostCommandChannel()->post(text))
        throw Failure(QStringLiteral("no session bus"));
    return 0;
}

int state(const QStringList &arguments)
{
    ArgumentReader(arguments).operands({});
    const auto report = hostDiagnostics()->ask();
    if (!report)
        throw Failure(QStringLiteral("Quillnest isn't running"));
    print(*report);
    return 0;
}

} // namespace quillnest::ctl
