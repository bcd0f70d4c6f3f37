#include "benchmarks/StartBench.h"

#include "benchmarks/StatusNotifierWatcher.h"
#include "driver/ProgramUnderTest.h"

namespace quillnest::bench
{

namespace
{

constexpr int starts = 11;

double millisecondsToStatusItem(driver::TestDesktop &desktop, StatusItemPlace &place)
{
    const auto before = std::chrono::steady_clock::now();
    const auto process = desktop.start(driver::ProgramUnderTest::program(QStringLiteral("quillnest")), {});
    const auto registered = place.watcher().waitForItem(before, std::chrono::seconds(30));
    process->terminate();
    if (!process->waitForFinished(30'000))
        throw driver::DriverError(QStringLiteral("the program does not end"));
    return std::chrono::duration<double, std::milli>(registered - before).count();
}

void run(BenchReport &report)
{
    driver::TestDesktop::Options options;
    options.sound = false;
    driver::TestDesktop desktop(options);
    StatusItemPlace place(desktop.environment().value(QStringLiteral("DBUS_SESSION_BUS_ADDRESS")));
    // Lays the runtime out, as a user has it who starts the program every day.
    const driver::ProgramUnderTest program(desktop);
    // The first start reads the program from the disk and makes its folders.
    millisecondsToStatusItem(desktop, place);
    Samples samples;
    for (int i = 0; i < starts; ++i)
        samples.add(millisecondsToStatusItem(desktop, place));
    report.add(QStringLiteral("start_to_status_item_ms"), samples, QStringLiteral("ms"));
}

} // namespace

Benchmark startBench()
{
    return {QStringLiteral("start"), {QStringLiteral("start_to_status_item_ms")}, run};
}

} // namespace quillnest::bench
