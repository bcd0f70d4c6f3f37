#include "benchmarks/ProcessFacts.h"

#include "driver/TestDesktop.h"

#include <QDir>
#include <QFile>

namespace quillnest::bench
{

namespace
{

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The number behind "name:" in the kernel's text; 0 without such a line.
qint64 numberIn(const QByteArray &text, const QByteArray &name)
{
    for (const auto &line : text.split('\n')) {
        if (line.startsWith(name + ':'))
            return line.sliced(name.size() + 1).trimmed().split(' ').constFirst().toLongLong();
    }
    return 0;
}

} // namespace

Memory memoryOf(qint64 process)
{
    const auto text = contentOf(QStringLiteral("/proc/%1/smaps_rollup").arg(process));
    if (text.isEmpty())
        throw driver::DriverError(QStringLiteral("the memory of process %1 can't be read").arg(process));
    const auto mebibytes = [&text](const QByteArray &name) { return static_cast<double>(numberIn(text, name)) / 1024; };
    return {mebibytes("Rss"), mebibytes("Pss"), mebibytes("Private_Clean") + mebibytes("Private_Dirty")};
}

std::map<int, ThreadSwitches> switchesOf(qint64 process)
{
    std::map<int, ThreadSwitches> result;
    const QDir tasks(QStringLiteral("/proc/%1/task").arg(process));
    for (const auto &task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const auto text = contentOf(tasks.filePath(task + QStringLiteral("/status")));
        const auto name = contentOf(tasks.filePath(task + QStringLiteral("/comm"))).trimmed();
        result[task.toInt()]
            = {name, numberIn(text, "voluntary_ctxt_switches"), numberIn(text, "nonvoluntary_ctxt_switches")};
    }
    if (result.empty())
        throw driver::DriverError(QStringLiteral("process %1 does not run").arg(process));
    return result;
}

} // namespace quillnest::bench
