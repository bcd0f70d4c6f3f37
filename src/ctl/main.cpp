// quillnestctl: posts commands to running instances, reads and writes settings, follows the log.

#include "ctl/Commands.h"
#include "ctl/Errors.h"
#include "ctl/Help.h"
#include "ctl/Output.h"
#include "platform/OwnFiles.h"

#include <QCoreApplication>

#include <csignal>
#include <cstdio>

namespace
{

using namespace quillnest::ctl;

int run(const QString &command, const QStringList &arguments)
{
    if (command == QStringLiteral("post"))
        return post(arguments);
    if (command == QStringLiteral("state"))
        return state(arguments);
    if (command == QStringLiteral("settings"))
        return settings(arguments);
    if (command == QStringLiteral("log"))
        return log(arguments);
    if (command.isEmpty())
        throw UsageError(QStringLiteral("missing COMMAND"));
    throw UsageError(QStringLiteral("unknown command \"%1\"").arg(command));
}

bool asksForHelp(const QStringList &arguments)
{
    const auto end = arguments.indexOf(QStringLiteral("--"));
    const auto options = end < 0 ? arguments : arguments.first(end);
    return options.contains(QStringLiteral("--help")) || options.contains(QStringLiteral("-h"));
}

} // namespace

int main(int argc, char **argv)
{
    quillnest::keepFilesPrivate();
    // A reader that goes away is no failure, and no reason to end by a signal.
    std::signal(SIGPIPE, SIG_IGN);
    // Failures are told in words of our own; what a library finds remarkable is nothing for a script's standard error.
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &, const QString &text) {
        if (type == QtFatalMsg)
            complain(text);
    });
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("quillnestctl"));
    const auto arguments = QCoreApplication::arguments().mid(1);
    const auto command = arguments.value(0);
    try {
        if (command == QStringLiteral("--version")) {
            print("quillnestctl " QUILLNEST_VERSION "\n");
            return 0;
        }
        if (asksForHelp(arguments)) {
            print(helpText(command));
            return 0;
        }
        return run(command, arguments.mid(1));
    } catch (const UsageError &error) {
        complain(QString::fromUtf8(error.what()));
        const auto of = helpText(command) == helpText() ? QString() : command + u' ';
        std::fprintf(stderr, "\"quillnestctl %s--help\" tells more\n", qUtf8Printable(of));
        return 2;
    } catch (const std::exception &error) {
        complain(QString::fromUtf8(error.what()));
        return 1;
    }
}
