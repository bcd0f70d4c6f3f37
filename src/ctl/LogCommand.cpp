#include "ctl/ArgumentReader.h"
#include "ctl/Commands.h"
#include "ctl/Errors.h"
#include "ctl/LogFollower.h"
#include "ctl/Output.h"
#include "platform/HostServices.h"
#include "platform/StandardOutput.h"

#include <QCoreApplication>

namespace quillnest::ctl
{

namespace
{

std::optional<int> lineCount(const std::optional<QString> &text)
{
    if (!text)
        return std::nullopt;
    bool good = false;
    const int count = text->toInt(&good);
    if (!good || count < 0)
        throw UsageError(QStringLiteral("\"%1\" is no number of lines").arg(*text));
    return count;
}

void printOnce(const QString &path, std::optional<int> lines)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        throw Failure(QStringLiteral("no log at %1").arg(path));
    if (lines)
        file.seek(beginOfLastLines(file, *lines));
    while (true) {
        const auto text = file.read(64 * 1024);
        if (text.isEmpty() || !print(text))
            return;
    }
}

int follow(const QString &path, std::optional<int> lines)
{
    endAtOnceWhenAsked();
    watchReaderOfStandardOutput(qApp, [] { QCoreApplication::exit(0); });
    std::exception_ptr error;
    bool ended = false;
    const LogFollower follower(path, lines, [&ended, &error](const QByteArray &text) {
        if (ended)
            return;
        // No exception passes through the event loop.
        try {
            ended = !print(text);
        } catch (...) {
            error = std::current_exception();
            ended = true;
        }
        if (ended)
            QMetaObject::invokeMethod(
                qApp, [] { QCoreApplication::exit(0); }, Qt::QueuedConnection);
    });
    QCoreApplication::exec();
    if (error)
        std::rethrow_exception(error);
    return 0;
}

} // namespace

int log(const QStringList &arguments)
{
    ArgumentReader reader(arguments);
    const bool following = reader.takeFlag({QStringLiteral("-f"), QStringLiteral("--follow")});
    const auto lines = lineCount(reader.takeValue({QStringLiteral("-n"), QStringLiteral("--lines")}));
    reader.operands({});
    const auto path = hostFolders().logs + QStringLiteral("/quillnest.log");
    if (following)
        return follow(path, lines);
    printOnce(path, lines);
    return 0;
}

} // namespace quillnest::ctl
