#include "shell/CommandTable.h"
#include "shell/NotificationDump.h"

namespace standin
{

using namespace Qt::StringLiterals;

namespace
{

QString recordOf(const Task &task)
{
    QString activity = task.activity;
    if (activity.startsWith(task.package + u'.'))
        activity.remove(0, task.package.size());
    return u"ActivityRecord{%1 u0 %2/%3 t%4}"_s.arg(0x5a0000 + task.id * 0x1f3, 7, 16, QChar(u'0'))
        .arg(task.package, activity)
        .arg(task.id);
}

QString dumpActivities(const Device &device)
{
    QString text = u"ACTIVITY MANAGER ACTIVITIES (dumpsys activity activities)\n"_s;
    QString last;
    for (const auto &display : device.displays.all()) {
        text += u"Display #%1 (activities from top to bottom):\n"_s.arg(display->id());
        const std::vector<Task> tasks = device.displays.tasks();
        for (auto task = tasks.rbegin(); task != tasks.rend(); ++task) {
            if (task->displayId == display->id())
                text += u"  * Task{%1 #%2 type=standard A=10123:%3}\n    * Hist  #0: %4\n"_s
                            .arg(0x77000 + task->id, 7, 16, QChar(u'0'))
                            .arg(task->id)
                            .arg(task->package, recordOf(*task));
        }
        if (const std::optional<Task> top = device.displays.top(display->id())) {
            last = recordOf(*top);
            text += u"  topResumedActivity=%1\n  Resumed activities in task display areas (from top to bottom):\n"
                    "    Resumed: %1\n"_s.arg(last);
            text += u"  ResumedActivity: %1\n"_s.arg(last);
        }
        text += u'\n';
    }
    return text;
}

QString dumpPackage(const Device &device, const QString &name)
{
    const std::optional<InstalledPackage> package = device.packages.find(name);
    if (!package)
        return u"Unable to find package: %1\n"_s.arg(name);
    QString text
        = u"Packages:\n  Package [%1] (5c0de0):\n    codePath=%2\n"_s.arg(name, package->path.section(u'/', 0, -2));
    text += u"    versionCode=%1 minSdk=%2 targetSdk=%3\n    versionName=%4\n"_s.arg(package->info.versionCode)
                .arg(package->info.minSdk)
                .arg(device.identity.api)
                .arg(package->info.versionName);
    if (!package->isSystem) {
        const QString format = u"yyyy-MM-dd HH:mm:ss"_s;
        text += u"    lastUpdateTime=%1\n    User 0: ceDataInode=1 installed=true hidden=false suspended=false\n"
                "      firstInstallTime=%2\n      runtime permissions:\n"_s.arg(
                    package->updated.toString(format), package->firstInstalled.toString(format));
        for (const QString &permission : package->granted)
            text += u"        %1: granted=true, flags=[ USER_SET ]\n"_s.arg(permission);
    }
    return text;
}

QString dumpConnectivity(const Device &device)
{
    const bool isValidated = !device.faults.has(u"no-validated-network"_s);
    return u"NetworkProviders for:\nCurrent network preferences:\n\nActive default network: 100\n\nCurrent Networks:\n"
           "  NetworkAgentInfo{network{100}  ni{WIFI CONNECTED extra: } lp{{InterfaceName: wlan0 }}"
           " nc{[ Transports: WIFI Capabilities: NOT_METERED&INTERNET%1 ]}}\n"_s.arg(
               isValidated ? u"&VALIDATED"_s : QString());
}

QString dumpDisplays(const Device &device)
{
    QString text = u"DISPLAY MANAGER (dumpsys display)\n"_s;
    for (const auto &display : device.displays.all()) {
        const ScreenModel model = display->model();
        text += u"  mDisplayId=%1\n    real %2 x %3, density %4\n"_s.arg(model.displayId)
                    .arg(model.size.width())
                    .arg(model.size.height())
                    .arg(model.dpi);
    }
    return text;
}

int dumpsys(const CommandContext &context)
{
    const Device &device = context.device;
    const QString name = context.args.value(0);
    if (!device.isBooted() || (name == u"package" && device.isPackageServiceSick())) {
        context.io.error(u"Can't find service: %1\n"_s.arg(name));
        return 0;
    }
    if (name == u"activity")
        context.io.out(dumpActivities(device));
    else if (name == u"package")
        context.io.out(dumpPackage(device, context.args.value(1)));
    else if (name == u"connectivity")
        context.io.out(dumpConnectivity(device));
    else if (name == u"display")
        context.io.out(dumpDisplays(device));
    else if (name == u"media_session")
        context.io.out(dumpMediaSessions(device));
    else if (name == u"notification")
        context.io.out(dumpNotifications(device));
    else
        context.io.error(u"Can't find service: %1\n"_s.arg(name));
    return 0;
}

} // namespace

void addDumpCommands(CommandTable &table)
{
    table.add(u"dumpsys"_s, dumpsys);
}

} // namespace standin
