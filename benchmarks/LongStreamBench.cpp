#include "benchmarks/LongStreamBench.h"

#include "benchmarks/AppWindows.h"
#include "benchmarks/ProcessFacts.h"

#include <QElapsedTimer>
#include <QThread>

#include <cstdio>

namespace quillnest::bench
{

namespace
{

constexpr int settlingSeconds = 20;
constexpr int minutes = 10;

void run(BenchReport &report)
{
    driver::TestDesktop desktop;
    driver::ProgramUnderTest program(desktop);
    program.start();
    program.addApps({driver::ProgramUnderTest::sample(QStringLiteral("tide"))});
    program.post(QStringLiteral("open:Tide"));
    program.waitForPicture(60);
    QThread::sleep(settlingSeconds);
    const auto shown = [&program] { return program.window().value(QStringLiteral("framesShown")).toInt(); };

    QElapsedTimer timer;
    timer.start();
    const int framesBefore = shown();
    const auto memoryBefore = memoryOf(program.processId());
    const auto descriptorsBefore = program.descriptors().size();
    for (int minute = 1; minute <= minutes; ++minute) {
        QThread::sleep(60);
        std::fprintf(
            stderr, "    after %d min: %+.2f MiB, %d pictures\n", minute,
            memoryOf(program.processId()).resident - memoryBefore.resident, shown() - framesBefore);
    }
    const int frames = shown() - framesBefore;
    const double seconds = static_cast<double>(timer.nsecsElapsed()) / 1e9;
    const auto memoryAfter = memoryOf(program.processId());
    const auto descriptorsAfter = program.descriptors().size();
    report.add(
        QStringLiteral("stream_10min_resident_growth_mib"), {memoryAfter.resident - memoryBefore.resident},
        QStringLiteral("MiB"));
    report.add(
        QStringLiteral("stream_10min_descriptor_growth"), {static_cast<double>(descriptorsAfter - descriptorsBefore)},
        QStringLiteral("descriptors"));
    report.add(QStringLiteral("stream_10min_frames_per_second"), {frames / seconds}, QStringLiteral("1/s"));
}

} // namespace

Benchmark longStreamBench()
{
    return {
        QStringLiteral("stream_10min"),
        {QStringLiteral("stream_10min_resident_growth_mib"), QStringLiteral("stream_10min_descriptor_growth"),
         QStringLiteral("stream_10min_frames_per_second")},
        run,
        true};
}

} // namespace quillnest::bench
