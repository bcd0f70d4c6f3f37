#include "shell/CommandTable.h"

#include <QFileInfo>
#include <QTemporaryFile>

namespace standin
{

using namespace Qt::StringLiterals;

namespace
{

/// Arguments without options; an option of `withValue` takes the next one with it.
QStringList operands(const QStringList &args, const QStringList &withValue = {})
{
    QStringList plain;
    for (qsizetype i = 0; i < args.size(); ++i) {
        if (withValue.contains(args[i]))
            ++i;
        else if (!args[i].startsWith(u'-') || args[i] == u"-")
            plain.append(args[i]);
    }
    return plain;
}

int listPackages(const CommandContext &context)
{
    if (context.args.value(1) != u"packages") {
        context.io.error(u"Error: unknown list type '%1'\n"_s.arg(context.args.value(1)));
        return 1;
    }
    const QString filter = operands(context.args.mid(2), {u"--user"_s}).value(0);
    QString lines;
    for (const InstalledPackage &package : context.device.packages.all()) {
        if (context.args.contains(u"-3"_s) && package.isSystem)
            continue;
        if (context.args.contains(u"-s"_s) && !package.isSystem)
            continue;
        if (!package.info.package.contains(filter))
            continue;
        const QString file = context.args.contains(u"-f"_s) ? package.path + u'=' : QString();
        lines += u"package:"_s + file + package.info.package + u'\n';
    }
    context.io.out(lines);
    return 0;
}

int path(const CommandContext &context)
{
    const QString name = operands(context.args.mid(1), {u"--user"_s}).value(0);
    const std::optional<InstalledPackage> package = context.device.packages.find(name);
    if (!package)
        return 1;
    QString lines;
    for (const QString &file : QStringList(package->path) + package->splits)
        lines += u"package:"_s + file + u'\n';
    context.io.out(lines);
    return 0;
}

int report(const CommandContext &context, const QString &problem)
{
    if (problem.isEmpty()) {
        context.io.out(u"Success\n"_s);
        return 0;
    }
    context.io.error(u"Failure [%1]\n"_s.arg(problem));
    return 1;
}

/// Copies `size` bytes of standard input into the file; what stands in the brackets of a failure.
QString receive(const CommandContext &context, qint64 size, QFile &file)
{
    while (file.size() < size) {
        const QByteArray bytes = context.io.readInput();
        if (bytes.isEmpty())
            return u"INSTALL_PARSE_FAILED_NOT_APK: the package ended after %1 bytes"_s.arg(file.size());
        if (file.write(bytes) != bytes.size())
            return u"INSTALL_FAILED_INSUFFICIENT_STORAGE"_s;
        file.flush();
    }
    return {};
}

QString installFromInput(const CommandContext &context, qint64 size, bool mayDowngrade)
{
    QTemporaryFile file(context.device.tree.hostPath(u"/data/local/tmp"_s) + u"/install-XXXXXX.apk"_s);
    if (!file.open())
        return u"INSTALL_FAILED_INSUFFICIENT_STORAGE"_s;
    const QString problem = receive(context, size, file);
    return problem.isEmpty() ? context.device.packages.install(file.fileName(), u"base.apk"_s, mayDowngrade) : problem;
}

/// The size behind "-S".
qint64 sizeOption(const QStringList &args)
{
    const auto at = args.indexOf(u"-S"_s);
    return at < 0 ? 0 : args.value(at + 1).toLongLong();
}

int install(const CommandContext &context)
{
    const QStringList args = context.args.mid(1);
    const bool mayDowngrade = args.contains(u"-d"_s);
    const QString file = operands(args, {u"-S"_s, u"-i"_s, u"--user"_s, u"--install-location"_s, u"--abi"_s}).value(0);
    if (file.isEmpty() || file == u"-") { // the bytes come on standard input
        return report(context, installFromInput(context, sizeOption(args), mayDowngrade));
    }
    const QString shown = context.io.absolute(file);
    const QString host = context.device.tree.hostPath(shown);
    if (!QFileInfo(host).isFile()) {
        context.io.error(u"Error: failed to get size for %1\n"_s.arg(shown));
        return 1;
    }
    return report(context, context.device.packages.install(host, shown, mayDowngrade));
}

/// The steps of an install of several files: "install-create", "-write" for each, then "-commit".
int installStep(const CommandContext &context, const QString &step)
{
    InstallSessions &installs = context.device.installs;
    const QStringList plain = operands(context.args.mid(1), {u"-S"_s, u"-i"_s, u"--user"_s});
    const int session = plain.value(0).toInt();
    if (step == u"create") {
        context.io.out(
            u"Success: created install session [%1]\n"_s.arg(installs.create(context.args.contains(u"-d"_s))));
        return 0;
    }
    if (step == u"write") {
        QFile file(installs.nextFile(session));
        if (file.fileName().isEmpty() || !file.open(QFile::ReadWrite))
            return report(context, u"INSTALL_FAILED_INVALID_APK: unknown session %1"_s.arg(session));
        const QString source = plain.value(2, u"-"_s);
        QString problem;
        if (source == u"-") {
            problem = receive(context, sizeOption(context.args), file);
        } else {
            QFile given(context.device.tree.hostPath(context.io.absolute(source)));
            if (!given.open(QFile::ReadOnly) || file.write(given.readAll()) != given.size())
                problem = u"INSTALL_FAILED_INVALID_APK: cannot read %1"_s.arg(source);
        }
        if (!problem.isEmpty())
            return report(context, problem);
        context.io.out(u"Success: streamed %1 bytes\n"_s.arg(file.size()));
        return 0;
    }
    if (step == u"commit")
        return report(context, installs.commit(session));
    if (step == u"abandon" && installs.abandon(session))
        return report(context, {});
    context.io.error(u"Unknown command: install-%1\n"_s.arg(step));
    return 255;
}

int uninstall(const CommandContext &context)
{
    const QString name = operands(context.args.mid(1), {u"--user"_s}).value(0);
    const std::optional<InstalledPackage> package = context.device.packages.find(name);
    context.device.forceStop(name);
    if (!package || !context.device.packages.uninstall(name))
        return report(context, u"DELETE_FAILED_INTERNAL_ERROR"_s);
    return report(context, {});
}

int changePermission(const CommandContext &context, bool granted)
{
    const QStringList plain = operands(context.args.mid(1), {u"--user"_s});
    if (plain.size() == 2 && context.device.packages.setGranted(plain[0], plain[1], granted))
        return 0;
    context.io.error(
        u"Exception occurred while executing '%1':\njava.lang.IllegalArgumentException: Unknown package: %2\n"_s.arg(
            context.args[0], plain.value(0)));
    return 255;
}

int resolveActivity(const CommandContext &context)
{
    const QString name
        = operands(context.args.mid(1), {u"--user"_s, u"-a"_s, u"-c"_s, u"-d"_s, u"-t"_s, u"-n"_s}).value(0);
    const std::optional<InstalledPackage> package = context.device.packages.find(name);
    if (!package || package->info.activity.isEmpty()) {
        context.io.out(u"No activity found\n"_s);
        return 0;
    }
    QString activity = package->info.activity;
    if (activity.startsWith(name + u'.'))
        activity.remove(0, name.size());
    if (context.args.contains(u"--brief"_s))
        context.io.out(u"priority=0 preferredOrder=0 match=0x108000 specificIndex=-1 isDefault=true\n"_s);
    context.io.out(name + u'/' + activity + u'\n');
    return 0;
}

int clear(const CommandContext &context)
{
    const QString name = operands(context.args.mid(1), {u"--user"_s}).value(0);
    if (!context.device.packages.find(name)) {
        context.io.out(u"Failed\n"_s);
        return 1;
    }
    context.device.forceStop(name);
    context.io.out(u"Success\n"_s);
    return 0;
}

} // namespace

int runPackageCommand(const CommandContext &context)
{
    if (!context.device.isBooted() || context.device.isPackageServiceSick()) {
        context.io.error(u"cmd: Can't find service: package\n"_s);
        return 20;
    }
    const QString verb = context.args.value(0);
    if (verb == u"list")
        return listPackages(context);
    if (verb == u"path")
        return path(context);
    if (verb == u"install")
        return install(context);
    if (verb == u"uninstall")
        return uninstall(context);
    if (verb == u"grant" || verb == u"revoke")
        return changePermission(context, verb == u"grant");
    if (verb == u"resolve-activity")
        return resolveActivity(context);
    if (verb == u"clear")
        return clear(context);
    if (verb.startsWith(u"install-"))
        return installStep(context, verb.mid(8));
    context.io.error(u"Unknown command: %1\n"_s.arg(verb));
    return 255;
}

void addPackageCommands(CommandTable &table)
{
    table.add(u"pm"_s, runPackageCommand);
}

} // namespace standin
