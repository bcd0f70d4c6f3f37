#include "benchmarks/IdleBench.h"

#include "benchmarks/ProcessFacts.h"
#include "benchmarks/SampleLibrary.h"
#include "benchmarks/StatusNotifierWatcher.h"
#include "core/LibraryFormat.h"
#include "driver/ProgramUnderTest.h"
#include "platform/posix/FileSettingsStore.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QThread>

#include <cstdio>

namespace quillnest::bench
{

namespace
{

constexpr int appCount = 50;
constexpr int settlingSeconds = 15;
constexpr int watchedSeconds = 20;

/// Fills the library with copies of the sample apps, before the program starts.
void fillLibrary(const driver::TestDesktop &desktop)
{
    const QStringList samples{QStringLiteral("tide"), QStringLiteral("ember"), QStringLiteral("lantern")};
    QDir(desktop.home()).mkpath(QStringLiteral("apps"));
    auto apps = sampleLibrary(appCount);
    for (std::size_t i = 0; i < apps.size(); ++i) {
        apps[i].sourcePath = QStringLiteral("%1/apps/%2.apk").arg(desktop.home()).arg(i);
        const auto &sample = samples[static_cast<qsizetype>(i) % samples.size()];
        if (!QFile::copy(driver::ProgramUnderTest::sample(sample), apps[i].sourcePath))
            throw driver::DriverError(QStringLiteral("the sample %1 can't be copied").arg(sample));
    }
    FileSettingsStore settings(
        desktop.environment().value(QStringLiteral("XDG_CONFIG_HOME")) + QStringLiteral("/Quillnest/settings.json"));
    settings.setValue(QStringLiteral("Quillnest.apps.v1"), LibraryFormat::encode(apps));
}

/// Counts how often the threads of the program run, and names the ones that do.
double wakeupsPerSecond(qint64 process)
{
    const auto before = switchesOf(process);
    QElapsedTimer timer;
    timer.start();
    QThread::sleep(watchedSeconds);
    const auto after = switchesOf(process);
    const double seconds = static_cast<double>(timer.nsecsElapsed()) / 1e9;
    qint64 total = 0;
    for (const auto &[id, now] : after) {
        const auto earlier = before.find(id);
        const auto then = earlier == before.end() ? ThreadSwitches{} : earlier->second;
        const auto voluntary = now.voluntary - then.voluntary;
        const auto involuntary = now.involuntary - then.involuntary;
        if (voluntary + involuntary > 0)
            std::fprintf(
                stderr, "    thread %d \"%s\" ran: %lld voluntary and %lld involuntary switches in %.0f s\n", id,
                now.name.constData(), static_cast<long long>(voluntary), static_cast<long long>(involuntary), seconds);
        total += voluntary + involuntary;
    }
    return static_cast<double>(total) / seconds;
}

void run(BenchReport &report)
{
    driver::TestDesktop::Options options;
    options.sound = false;
    driver::TestDesktop desktop(options);
    // With a place for the status item the program opens no window by itself.
    StatusItemPlace place(desktop.environment().value(QStringLiteral("DBUS_SESSION_BUS_ADDRESS")));
    driver::ProgramUnderTest program(desktop);
    fillLibrary(desktop);
    const auto before = std::chrono::steady_clock::now();
    const auto process = desktop.start(driver::ProgramUnderTest::program(QStringLiteral("quillnest")), {});
    place.watcher().waitForItem(before, std::chrono::seconds(30));
    QThread::sleep(settlingSeconds);

    const double wakeups = wakeupsPerSecond(process->processId());
    const auto memory = memoryOf(process->processId());
    const auto apps = program.state().value(QStringLiteral("apps")).toArray().size();
    if (apps != appCount)
        throw driver::DriverError(QStringLiteral("the library holds %1 apps").arg(apps));
    report.add(QStringLiteral("idle_resident_mib"), memory.resident, QStringLiteral("MiB"));
    report.add(QStringLiteral("idle_proportional_mib"), memory.proportional, QStringLiteral("MiB"));
    report.add(QStringLiteral("idle_private_mib"), memory.own, QStringLiteral("MiB"));
    report.add(QStringLiteral("idle_wakeups_per_second"), wakeups, QStringLiteral("1/s"));
    process->terminate();
    process->waitForFinished(30'000);
}

} // namespace

Benchmark idleBench()
{
    return {
        QStringLiteral("idle"),
        {QStringLiteral("idle_resident_mib"), QStringLiteral("idle_proportional_mib"),
         QStringLiteral("idle_private_mib"), QStringLiteral("idle_wakeups_per_second")},
        run};
}

} // namespace quillnest::bench
