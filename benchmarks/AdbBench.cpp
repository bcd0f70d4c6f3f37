#include "benchmarks/AdbBench.h"

#include "benchmarks/BareCommand.h"
#include "benchmarks/BusFreePlatform.h"
#include "benchmarks/ExportedEnvironment.h"
#include "driver/ProgramUnderTest.h"
#include "runtime/AndroidCommands.h"

#include <QElapsedTimer>
#include <QFile>

namespace quillnest::bench
{

namespace
{

constexpr int rounds = 7;
constexpr int pairs = 40;

template <typename Work> double millisecondsOf(const Work &work)
{
    QElapsedTimer timer;
    timer.start();
    const auto answer = work();
    const double milliseconds = static_cast<double>(timer.nsecsElapsed()) / 1e6;
    if (answer.trimmed() != "1")
        throw driver::DriverError(QStringLiteral("the device does not answer"));
    return milliseconds;
}

void run(BenchReport &report)
{
    driver::TestDesktop::Options options;
    options.sound = false;
    driver::TestDesktop desktop(options);
    const ExportedEnvironment environment(desktop.environment());
    driver::ProgramUnderTest program(desktop);
    program.start();
    program.addApps({driver::ProgramUnderTest::sample(QStringLiteral("tide"))});
    program.post(QStringLiteral("open:Tide"));
    program.waitForPicture(60);
    // Killed, it leaves the device up and does nothing beside what is measured.
    program.kill();

    const auto platform = busFreePlatform();
    const auto log
        = std::make_shared<QuillnestLog>(platform.clock, desktop.home(), QStringLiteral("adb-bench.log"), true);
    const AndroidCommands commands(platform, log);
    const QStringList query{QStringLiteral("shell"), QStringLiteral("getprop"), QStringLiteral("sys.boot_completed")};
    std::vector<QByteArray> whole{QFile::encodeName(commands.paths().adb()), "-s", AndroidCommands::serial().toUtf8()};
    for (const auto &argument : query)
        whole.push_back(argument.toUtf8());
    const BareCommand bare(std::move(whole));

    Samples ratio;
    Samples ours;
    Samples yardstick;
    for (int round = -1; round < rounds; ++round) {
        Samples oursNow;
        Samples yardstickNow;
        for (int pair = 0; pair < pairs; ++pair) {
            const auto measure = [&](bool isOurs) {
                const double milliseconds = isOurs ? millisecondsOf([&] { return commands.runADB(query).toUtf8(); })
                                                   : millisecondsOf([&] { return bare.run(); });
                (isOurs ? oursNow : yardstickNow).add(milliseconds);
            };
            // Each goes first every other time, so that what the one leaves behind doesn't always meet the other.
            const bool oursFirst = pair % 2 == 0;
            measure(oursFirst);
            measure(!oursFirst);
        }
        // The first round warms up.
        if (round < 0)
            continue;
        ratio.add(oursNow.median() / yardstickNow.median());
        ours.add(oursNow.median());
        yardstick.add(yardstickNow.median());
    }
    report.add(
        QStringLiteral("runadb_ratio"), ratio,
        QStringLiteral("of adb started with posix_spawn and read through a pipe"));
    report.add(QStringLiteral("runadb_ms"), ours, QStringLiteral("ms"));
    report.add(QStringLiteral("bare_adb_ms"), yardstick, QStringLiteral("ms"));
}

} // namespace

Benchmark adbBench()
{
    return {
        QStringLiteral("adb"),
        {QStringLiteral("runadb_ratio"), QStringLiteral("runadb_ms"), QStringLiteral("bare_adb_ms")},
        run};
}

} // namespace quillnest::bench
