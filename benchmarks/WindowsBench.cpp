#include "benchmarks/WindowsBench.h"

#include "benchmarks/AppWindows.h"
#include "benchmarks/ProcessFacts.h"
#include "benchmarks/ProcessorTime.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QThread>

#include <cmath>

namespace quillnest::bench
{

namespace
{

using driver::ProgramUnderTest;
using driver::TestDesktop;

constexpr int mostWindows = 9;
constexpr int columns = 5;
constexpr int rounds = 3;
constexpr int watchedSeconds = 6;

QString label(int number)
{
    return QStringLiteral("Tid%1").arg(number);
}

/// Windows that cover each other would be shown for nothing.
void spread(const ProgramUnderTest &program, const TestDesktop &desktop, int count)
{
    const auto windows = program.state().value(QStringLiteral("windows")).toArray();
    for (int i = 0; i < count; ++i) {
        const auto window = windows.at(i).toObject();
        const auto frame = driver::rectangle(window.value(QStringLiteral("frame")).toObject());
        const auto pixels = [&desktop](int points) { return QString::number(std::lround(points * desktop.scale())); };
        desktop.run(
            QStringLiteral("xdotool"),
            {QStringLiteral("windowmove"), QString::number(window.value(QStringLiteral("windowId")).toInteger()),
             pixels(i % columns * (frame.width() + 4)), pixels(i / columns * (frame.height() + 4))});
    }
}

/// Pictures that each window has shown, and those that the device has encoded for all of them.
struct Pictures {
    std::vector<double> shown;
    double encoded = 0;
};

Pictures pictures(const ProgramUnderTest &program)
{
    Pictures result;
    for (const auto &window : program.state().value(QStringLiteral("windows")).toArray())
        result.shown.push_back(window[QStringLiteral("framesShown")].toDouble());
    for (const auto &session : program.device().value(QStringLiteral("sessions")).toArray())
        result.encoded += session[QStringLiteral("framesEncoded")].toDouble();
    return result;
}

void watch(BenchReport &report, const ProgramUnderTest &program, int count)
{
    Samples each, delivered, processor;
    for (int round = 0; round < rounds; ++round) {
        QElapsedTimer timer;
        timer.start();
        const auto before = pictures(program);
        const double processorBefore = processorMilliseconds(program.processId());
        QThread::sleep(watchedSeconds);
        const double used = processorMilliseconds(program.processId()) - processorBefore;
        const auto after = pictures(program);
        const double seconds = static_cast<double>(timer.nsecsElapsed()) / 1e9;
        if (after.shown.size() != static_cast<std::size_t>(count) || before.shown.size() != after.shown.size())
            throw driver::DriverError(QStringLiteral("a window has gone"));
        for (std::size_t i = 0; i < after.shown.size(); ++i)
            each.add((after.shown[i] - before.shown[i]) / seconds);
        delivered.add((after.encoded - before.encoded) / seconds / count);
        processor.add(used / seconds);
    }
    const auto name
        = [count](const char *end) { return QStringLiteral("windows_%1_%2").arg(count).arg(QLatin1String(end)); };
    report.add(name("fps_each"), each, QStringLiteral("1/s, over the windows"));
    report.add(name("fps_encoded_each"), delivered, QStringLiteral("1/s, by the device"));
    report.add(name("cpu_ms_per_s"), processor, QStringLiteral("ms/s"));
}

void run(BenchReport &report)
{
    TestDesktop::Options options;
    options.sound = false;
    // Two rows of windows of the usual size.
    options.screen = {4000, 3300};
    TestDesktop desktop(options);
    ProgramUnderTest program(desktop);
    turnSoundOff(program);
    program.setSetting(QStringLiteral("QuillnestSingleApp"), false);
    program.setSetting(QStringLiteral("QuillnestAutoHide"), false);
    program.start();
    QStringList files;
    for (int i = 1; i <= mostWindows; ++i) {
        files.append(QStringLiteral("%1/tid%2.apk").arg(desktop.home()).arg(i));
        program.writeTide(files.last(), QStringLiteral("app.quillnest.samples.tid%1").arg(i), label(i));
    }
    program.addApps(files);

    int open = 0;
    Memory withOne;
    for (const int count : {1, 4, mostWindows}) {
        while (open < count) {
            program.post(QStringLiteral("open:") + label(++open));
            waitForWindows(program, open, 90);
        }
        spread(program, desktop, count);
        QThread::sleep(3);
        watch(report, program, count);
        if (count == 1)
            withOne = memoryOf(program.processId());
    }
    const auto withAll = memoryOf(program.processId());
    constexpr double more = mostWindows - 1;
    report.add(
        QStringLiteral("window_resident_mib"), {(withAll.resident - withOne.resident) / more}, QStringLiteral("MiB"));
    report.add(
        QStringLiteral("window_proportional_mib"), {(withAll.proportional - withOne.proportional) / more},
        QStringLiteral("MiB"));
    closeWindows(program);
}

} // namespace

Benchmark windowsBench()
{
    QStringList figures{QStringLiteral("window_resident_mib"), QStringLiteral("window_proportional_mib")};
    for (const int count : {1, 4, mostWindows}) {
        for (const auto *end : {"fps_each", "fps_encoded_each", "cpu_ms_per_s"})
            figures.append(QStringLiteral("windows_%1_%2").arg(count).arg(QLatin1String(end)));
    }
    return {QStringLiteral("windows"), figures, run};
}

} // namespace quillnest::bench
