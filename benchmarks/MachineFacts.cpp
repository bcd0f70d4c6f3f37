#include "benchmarks/MachineFacts.h"

#include <QFile>
#include <QLibraryInfo>
#include <QSysInfo>
#include <QVersionNumber>

#include <unistd.h>

namespace quillnest::bench
{

namespace
{

/// The value of the first line of a file of "name: value" lines that has this name.
QString valueIn(const QString &path, const QString &name)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("unknown");
    for (const auto &line : QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'))) {
        if (line.section(QLatin1Char(':'), 0, 0).trimmed() == name)
            return line.section(QLatin1Char(':'), 1).trimmed();
    }
    return QStringLiteral("unknown");
}

QString load()
{
    QFile file(QStringLiteral("/proc/loadavg"));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).section(QLatin1Char(' '), 0, 2)
                                          : QStringLiteral("unknown");
}

} // namespace

QString machineFacts()
{
    const auto pages = static_cast<qint64>(sysconf(_SC_PHYS_PAGES)) * sysconf(_SC_PAGESIZE);
    return QStringLiteral("processor: %1, %2 online\nmemory: %3 MiB\nsystem: %4, kernel %5\nQt: %6\nload before: %7\n")
        .arg(valueIn(QStringLiteral("/proc/cpuinfo"), QStringLiteral("model name")))
        .arg(sysconf(_SC_NPROCESSORS_ONLN))
        .arg(pages / (1024 * 1024))
        .arg(QSysInfo::prettyProductName(), QSysInfo::kernelVersion(), QLibraryInfo::version().toString(), load());
}

} // namespace quillnest::bench
