#include "benchmarks/PackageListBench.h"

#include "packages/PackageLists.h"
#include "runtime/RepositoryParser.h"

#include <QElapsedTimer>
#include <QXmlStreamReader>

#include <stdexcept>

namespace quillnest::bench
{

namespace
{

constexpr int rounds = 15;

double millisecondsOf(const std::function<void()> &work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

/// About a megabyte, as the real one of the tools.
QByteArray longList()
{
    QList<standin::ListedArchive> archives;
    for (int i = 0; i < 450; ++i) {
        const auto address = QStringLiteral("emulator-linux_x64-%1.zip").arg(i);
        archives.append({QStringLiteral("emulator"), address, 300'000'000 + i, standin::checksumOf(address.toUtf8())});
    }
    return standin::toolsList(archives);
}

void runPackageList(BenchReport &report)
{
    const auto list = longList();
    Samples ratio;
    Samples milliseconds;
    for (int round = -1; round < rounds; ++round) {
        const double bare = millisecondsOf([&] {
            QXmlStreamReader reader(list);
            while (!reader.atEnd())
                reader.readNext();
            if (reader.hasError())
                throw std::runtime_error("the list is no XML");
        });
        const double ours = millisecondsOf([&] {
            if (parseRepository(list).packages.empty())
                throw std::runtime_error("the list holds nothing");
        });
        if (round < 0)
            continue;
        ratio.add(ours / bare);
        milliseconds.add(ours);
    }
    report.add(QStringLiteral("package_list_ratio"), ratio, QStringLiteral("of the XML library, doing nothing"));
    report.add(
        QStringLiteral("package_list_ms"), milliseconds,
        QStringLiteral("ms for a list of %1 kB").arg(list.size() / 1000));
}

} // namespace

Benchmark packageListBench()
{
    return {
        QStringLiteral("package list"),
        {QStringLiteral("package_list_ratio"), QStringLiteral("package_list_ms")},
        runPackageList};
}

} // namespace quillnest::bench
