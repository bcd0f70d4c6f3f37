#include "shell/CommandTable.h"

namespace standin
{

using namespace Qt::StringLiterals;

namespace
{

const QStringList &serviceNames()
{
    static const QStringList names
        = {u"activity"_s,      u"audio"_s,        u"clipboard"_s, u"connectivity"_s, u"display"_s, u"input"_s,
           u"media_session"_s, u"notification"_s, u"package"_s,   u"settings"_s,     u"uimode"_s,  u"window"_s};
    return names;
}

bool isServing(const Device &device, const QString &service)
{
    if (!device.isBooted() || (service == u"package" && device.isPackageServiceSick()))
        return false;
    return serviceNames().contains(service);
}

int service(const CommandContext &context)
{
    const QString name = context.args.value(1);
    if (context.args.value(0) == u"check") {
        context.io.out(u"Service %1: %2\n"_s.arg(name, isServing(context.device, name) ? u"found"_s : u"not found"_s));
        return 0;
    }
    if (context.args.value(0) == u"list") {
        QString lines;
        int count = 0;
        for (const QString &each : serviceNames()) {
            if (isServing(context.device, each))
                lines += u"%1\t%2: []\n"_s.arg(count++).arg(each);
        }
        context.io.out(u"Found %1 services:\n%2"_s.arg(count).arg(lines));
        return 0;
    }
    context.io.error(u"Usage: service [list|check SERVICE]\n"_s);
    return 10;
}

int uiMode(const CommandContext &context, const QStringList &args)
{
    if (args.value(0) != u"night") {
        context.io.error(u"Unknown command: %1\n"_s.arg(args.value(0)));
        return 255;
    }
    if (args.value(1) == u"yes" || args.value(1) == u"no")
        context.device.setNight(args[1] == u"yes");
    else if (args.size() > 1 && args[1] != u"auto") {
        context.io.error(u"Error: mode must be 'yes', 'no', or 'auto'\n"_s);
        return 255;
    }
    context.io.out(u"Night mode: %1\n"_s.arg(context.device.settings.isNight() ? u"yes"_s : u"no"_s));
    return 0;
}

int mediaSession(const CommandContext &context, const QStringList &args)
{
    const int stream = args.value(args.indexOf(u"--stream"_s) + 1).toInt();
    SettingsStore &settings = context.device.settings;
    if (args.value(0) != u"volume") {
        context.io.error(u"Unknown command: %1\n"_s.arg(args.value(0)));
        return 255;
    }
    if (const auto at = args.indexOf(u"--set"_s); at >= 0)
        settings.setVolume(stream, args.value(at + 1).toInt());
    context.io.out(u"[V] will control stream=%1 (%2)\n"_s.arg(stream).arg(
        stream == 3 ? u"STREAM_MUSIC"_s : u"STREAM_NOTIFICATION"_s));
    context.io.out(u"[V] volume is %1 in range [0..%2]\n"_s.arg(settings.volume(stream))
                       .arg(SettingsStore::maximumVolume(stream)));
    return 0;
}

int audio(const CommandContext &context, const QStringList &args)
{
    if (args.value(0) == u"set-volume" && args.size() == 3) {
        context.device.settings.setVolume(args[1].toInt(), args[2].toInt());
        return 0;
    }
    context.io.error(u"Unknown command: %1\n"_s.arg(args.value(0)));
    return 255;
}

int notification(const CommandContext &context, const QStringList &args)
{
    NotificationStore &notifications = context.device.notifications;
    if (args.value(0) == u"list") {
        for (const Notification &each : notifications.notifications())
            context.io.out(each.key() + u'\n');
        return 0;
    }
    if (args.value(0) == u"post" && args.size() >= 3) { // post [-t TITLE] TAG TEXT
        const auto title = args.indexOf(u"-t"_s);
        notifications.post({u"com.android.shell"_s, 2020, title < 0 ? QString() : args.value(title + 1), args.last()});
        context.io.out(u"posting:\n  "_s + args.last() + u'\n');
        return 0;
    }
    context.io.error(u"Unknown command: %1\n"_s.arg(args.value(0)));
    return 255;
}

int cmd(const CommandContext &context)
{
    const QString name = context.args.value(0);
    const QStringList args = context.args.mid(1);
    if (name == u"-l") {
        context.io.out(serviceNames().join(u'\n') + u'\n');
        return 0;
    }
    const CommandContext inner{context.device, context.sessions, context.io, args};
    if (name == u"package")
        return runPackageCommand(inner);
    if (!isServing(context.device, name)) {
        context.io.error(u"cmd: Can't find service: %1\n"_s.arg(name));
        return 20;
    }
    if (name == u"activity")
        return runActivityCommand(inner);
    if (name == u"settings")
        return runSettingsCommand(inner);
    if (name == u"uimode")
        return uiMode(context, args);
    if (name == u"media_session")
        return mediaSession(context, args);
    if (name == u"audio")
        return audio(context, args);
    if (name == u"notification")
        return notification(context, args);
    context.io.error(u"Unknown command: %1\n"_s.arg(args.value(0)));
    return 255;
}

} // namespace

void addServiceCommands(CommandTable &table)
{
    table.add(u"service"_s, service);
    table.add(u"cmd"_s, cmd);
}

} // namespace standin
