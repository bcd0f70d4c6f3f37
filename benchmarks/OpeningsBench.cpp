#include "benchmarks/OpeningsBench.h"

#include "benchmarks/AppWindows.h"
#include "benchmarks/ProcessFacts.h"

#include <QThread>

#include <cstdio>

namespace quillnest::bench
{

namespace
{

constexpr int warmUp = 5;
constexpr int openings = 20;
/// What ends with a window ends a moment after it; the worker threads of the pool go after five seconds.
constexpr int settlingSeconds = 8;

void openAndClose(const driver::ProgramUnderTest &program)
{
    program.post(QStringLiteral("open:Tide"));
    program.waitForPicture(60);
    closeWindows(program);
}

void run(BenchReport &report)
{
    driver::TestDesktop desktop;
    driver::ProgramUnderTest program(desktop);
    program.start();
    program.addApps({driver::ProgramUnderTest::sample(QStringLiteral("tide"))});
    for (int i = 0; i < warmUp; ++i)
        openAndClose(program);
    QThread::sleep(settlingSeconds);
    const auto memoryBefore = memoryOf(program.processId());
    const auto descriptorsBefore = program.descriptors().size();
    for (int i = 1; i <= openings; ++i) {
        openAndClose(program);
        if (i % 5 == 0)
            std::fprintf(
                stderr, "    after %d: %+.2f MiB\n", i, memoryOf(program.processId()).resident - memoryBefore.resident);
    }
    QThread::sleep(settlingSeconds);
    const auto memoryAfter = memoryOf(program.processId());
    const auto descriptorsAfter = program.descriptors().size();
    report.add(
        QStringLiteral("opens_20_resident_growth_mib"), {memoryAfter.resident - memoryBefore.resident},
        QStringLiteral("MiB"));
    report.add(
        QStringLiteral("opens_20_descriptor_growth"), {static_cast<double>(descriptorsAfter - descriptorsBefore)},
        QStringLiteral("descriptors"));
}

} // namespace

Benchmark openingsBench()
{
    return {
        QStringLiteral("openings"),
        {QStringLiteral("opens_20_resident_growth_mib"), QStringLiteral("opens_20_descriptor_growth")},
        run};
}

} // namespace quillnest::bench
