#include "benchmarks/LibraryBench.h"

#include "benchmarks/SampleLibrary.h"
#include "benchmarks/StoreRig.h"

#include <QElapsedTimer>
#include <QLocale>

#include <stdexcept>

namespace quillnest::bench
{

namespace
{

constexpr int appCount = 10'000;
constexpr int passes = 31;

double millisecondsOf(const std::function<void()> &work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

void run(BenchReport &report)
{
    // The sort rules of a real language: those of the locale "C" are no more than a comparison of code units.
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));

    const auto fakes = fakePlatform();
    {
        StoreRig rig(fakes, sampleLibrary(appCount));
        auto &store = *rig.store;
        Samples ordered;
        Samples filtered;
        for (int pass = 0; pass < passes; ++pass) {
            store.setSearch({});
            std::vector<MobileApp> apps;
            ordered.add(millisecondsOf([&apps, &store] { apps = store.orderedApps(); }));
            if (apps.size() != appCount || !apps.front().isFavorite || apps.back().isFavorite)
                throw std::runtime_error("the library is not in order");
            // One letter, which most of the list matches, costs the most.
            store.setSearch(QStringLiteral("a"));
            filtered.add(millisecondsOf([&apps, &store] { apps = store.filteredApps(); }));
            if (apps.empty() || apps.size() >= appCount)
                throw std::runtime_error("the search finds nothing or everything");
        }
        report.add(QStringLiteral("ordered_apps_10000_ms"), ordered, QStringLiteral("ms"));
        report.add(QStringLiteral("filtered_apps_10000_ms"), filtered, QStringLiteral("ms"));
    }
    while (fakes.clock->advanceToNext())
        fakes.settle();
    QLocale::setDefault(before);
}

} // namespace

Benchmark libraryBench()
{
    return {
        QStringLiteral("library"),
        {QStringLiteral("ordered_apps_10000_ms"), QStringLiteral("filtered_apps_10000_ms")},
        run};
}

} // namespace quillnest::bench
