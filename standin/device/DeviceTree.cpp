#include "device/DeviceTree.h"

#include "common/RunProgram.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <unistd.h>

namespace standin
{

namespace
{

using namespace Qt::StringLiterals;

const char *const folders[]
    = {"system/bin",
       "dev/socket",
       "proc",
       "sys",
       "data/local/tmp",
       "data/app",
       "data/data",
       "storage/emulated/0/Download",
       "storage/emulated/0/DCIM",
       "storage/emulated/0/Documents",
       "storage/emulated/0/Movies",
       "storage/emulated/0/Music",
       "storage/emulated/0/Pictures",
       "storage/emulated/0/Android/data",
       "storage/emulated/0/Android/obb"};

const char *const deviceNodes[] = {"null", "zero", "random", "urandom", "tty"};

/// Applets that reach beyond the tree. The device runs with the rights of its user, and on a build machine that may
/// be the administrator, so the tree offers nothing that ends or mounts what is not the device's own.
const QSet<QString> &unwantedApplets()
{
    static const QSet<QString> names
        = {u"halt"_s,    u"poweroff"_s, u"reboot"_s,   u"init"_s,    u"linuxrc"_s,    u"killall"_s,     u"mount"_s,
           u"umount"_s,  u"swapon"_s,   u"swapoff"_s,  u"chroot"_s,  u"pivot_root"_s, u"switch_root"_s, u"insmod"_s,
           u"rmmod"_s,   u"modprobe"_s, u"nsenter"_s,  u"unshare"_s, u"su"_s,         u"devmem"_s,      u"ifconfig"_s,
           u"route"_s,   u"ip"_s,       u"watchdog"_s, u"fdisk"_s,   u"losetup"_s,    u"sysctl"_s,      u"run-init"_s,
           u"sulogin"_s, u"login"_s,    u"hwclock"_s,  u"rdate"_s};
    return names;
}

QString findBusybox()
{
    const QString chosen = qEnvironmentVariable("QUILLNEST_STANDIN_BUSYBOX");
    for (const QString &path : {chosen, u"/bin/busybox"_s, u"/usr/bin/busybox"_s}) {
        if (!path.isEmpty() && QFileInfo(path).isExecutable())
            return path;
    }
    return {};
}

bool copyProgram(const QString &from, const QString &to)
{
    if (QFileInfo(to).size() == QFileInfo(from).size()
        && QFileInfo(to).lastModified() >= QFileInfo(from).lastModified())
        return true;
    QFile::remove(to);
    return QFile::copy(from, to)
        && QFile::setPermissions(to, QFile::permissions(to) | QFile::ExeUser | QFile::ExeGroup | QFile::ExeOther);
}

QStringList appletsOf(const QString &busybox)
{
    return QString::fromUtf8(outputOf(busybox, {u"--list"_s}).value_or(QByteArray())).split(u'\n', Qt::SkipEmptyParts);
}

/// What the link says, word for word; empty for anything that is not a link. (QFileInfo would make it absolute.)
QString rawTarget(const QString &path)
{
    QByteArray target(4096, '\0');
    const auto size = ::readlink(QFile::encodeName(path).constData(), target.data(), 4096);
    return size > 0 ? QFile::decodeName(target.left(size)) : QString();
}

/// The device's shell is the administrator already, so `su` has only to find the command among its arguments.
bool writeSu(const QString &path)
{
    QFile file(path);
    const QByteArray script = "#!/system/bin/sh\n"
                              "case \"$1\" in 0|root|2000|shell) shift;; esac\n"
                              "[ \"$1\" = -c ] && { shift; exec /system/bin/sh -c \"$*\"; }\n"
                              "[ $# -gt 0 ] && exec \"$@\"\n"
                              "exec /system/bin/sh\n";
    return file.open(QFile::WriteOnly) && file.write(script) == script.size()
        && file.setPermissions(file.permissions() | QFile::ExeUser | QFile::ExeGroup | QFile::ExeOther);
}

void link(const QString &target, const QString &path)
{
    if (rawTarget(path) != target) {
        QFile::remove(path);
        QFile::link(target, path);
    }
}

} // namespace

DeviceTree::DeviceTree(QString root) : m_root(std::move(root)) { }

bool DeviceTree::lay(const QString &deviceTool, const QStringList &androidCommands, QString *problem) const
{
    const QDir root(m_root);
    for (const char *folder : folders) {
        if (!root.mkpath(QLatin1StringView(folder))) {
            *problem = u"cannot create %1/%2"_s.arg(m_root, QLatin1StringView(folder));
            return false;
        }
    }
    const QString busybox = findBusybox();
    if (busybox.isEmpty()) {
        *problem = u"no busybox found: install busybox-static or set QUILLNEST_STANDIN_BUSYBOX"_s;
        return false;
    }
    const QString bin = root.filePath(u"system/bin"_s);
    if (!copyProgram(busybox, bin + u"/busybox"_s) || !copyProgram(deviceTool, bin + u"/device-tool"_s)) {
        *problem = u"cannot copy the shell's programs to %1"_s.arg(bin);
        return false;
    }
    // Links that stand already cost one readlink each, so a restart is quick.
    const QSet<QString> ours(androidCommands.begin(), androidCommands.end());
    const QStringList applets = appletsOf(busybox);
    for (const QString &applet : applets) {
        if (!ours.contains(applet) && !unwantedApplets().contains(applet) && applet != u"busybox")
            link(u"busybox"_s, bin + u'/' + applet);
    }
    for (const QString &command : androidCommands)
        link(u"device-tool"_s, bin + u'/' + command);
    if (!writeSu(bin + u"/su"_s)) {
        *problem = u"cannot write %1/su"_s.arg(bin);
        return false;
    }
    link(u"/system/bin"_s, root.filePath(u"bin"_s));
    link(u"/storage/emulated/0"_s, root.filePath(u"sdcard"_s));
    // Plain files to mount the host's nodes on.
    for (const char *node : deviceNodes) {
        QFile file(root.filePath(u"dev/"_s + QLatin1StringView(node)));
        if (!file.exists() && !file.open(QFile::WriteOnly)) {
            *problem = u"cannot create %1"_s.arg(file.fileName());
            return false;
        }
    }
    return true;
}

QString DeviceTree::hostPath(const QString &devicePath) const
{
    return resolve(devicePath, true);
}

QString DeviceTree::hostPathOfLink(const QString &devicePath) const
{
    return resolve(devicePath, false);
}

QString DeviceTree::resolve(const QString &devicePath, bool followLast) const
{
    QStringList todo = devicePath.split(u'/', Qt::SkipEmptyParts);
    QStringList done;
    int linksLeft = 40; // a loop of links must end
    while (!todo.isEmpty()) {
        const QString part = todo.takeFirst();
        if (part == u".")
            continue;
        if (part == u"..") {
            if (!done.isEmpty())
                done.removeLast();
            continue;
        }
        const QString host = m_root + u'/' + (done + QStringList(part)).join(u'/');
        const QString target = followLast || !todo.isEmpty() ? rawTarget(host) : QString();
        if (!target.isEmpty() && linksLeft-- > 0) {
            if (target.startsWith(u'/'))
                done.clear();
            todo = target.split(u'/', Qt::SkipEmptyParts) + todo;
            continue;
        }
        done.append(part);
    }
    return done.isEmpty() ? m_root : m_root + u'/' + done.join(u'/');
}

} // namespace standin
