#include "benchmarks/VideoPathBench.h"

#include "base/QuillnestLayout.h"
#include "benchmarks/AppWindows.h"
#include "benchmarks/ExportedEnvironment.h"
#include "benchmarks/ProcessorTime.h"
#include "benchmarks/RecordedStream.h"

#include <QElapsedTimer>
#include <QFile>
#include <QStandardPaths>
#include <QThread>

#include <sys/resource.h>
#include <sys/wait.h>

#include <functional>
#include <optional>

namespace quillnest::bench
{

namespace
{

using driver::ProgramUnderTest;
using driver::TestDesktop;

constexpr int rounds = 3;
constexpr int watchedSeconds = 12;
constexpr int recordedFrames = 600;
const auto package = QStringLiteral("app.quillnest.samples.tide");

struct Cost {
    double programMilliseconds = 0;
    double xServerMilliseconds = 0;
    double framesPerSecond = 0;
};

/// The program as it shows the app, for a while, per picture.
Cost watchProgram(ProgramUnderTest &program, const TestDesktop &desktop)
{
    const auto shown = [&program] { return program.window().value(QStringLiteral("framesShown")).toInt(); };
    QElapsedTimer timer;
    timer.start();
    const int framesBefore = shown();
    const double programBefore = processorMilliseconds(program.processId());
    const double xServerBefore = processorMilliseconds(desktop.xServerProcess());
    QThread::sleep(watchedSeconds);
    const double programUsed = processorMilliseconds(program.processId()) - programBefore;
    const double xServerUsed = processorMilliseconds(desktop.xServerProcess()) - xServerBefore;
    const int frames = shown() - framesBefore;
    const double elapsed = static_cast<double>(timer.nsecsElapsed()) / 1e9;
    if (frames <= 0)
        throw driver::DriverError(QStringLiteral("no pictures are shown"));
    return {programUsed / frames, xServerUsed / frames, frames / elapsed};
}

/// Processor time of a program that ends by itself, in milliseconds.
double processorMillisecondsOf(const TestDesktop &desktop, const QString &program, const QStringList &arguments)
{
    const auto used = [] {
        rusage usage{};
        getrusage(RUSAGE_CHILDREN, &usage);
        const auto milliseconds = [](const timeval &time) {
            return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
        };
        return milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime);
    };
    const double before = used();
    desktop.run(program, arguments);
    return used() - before;
}

/// What a picture costs a program that takes the number of pictures to play. What it costs to start is taken off by a
/// second run over the first tenth of the stream.
double perPicture(const std::function<double(int)> &play)
{
    constexpr int few = recordedFrames / 10;
    const double start = play(few);
    return (play(recordedFrames) - start) / (recordedFrames - few);
}

/// FFmpeg decoding the stream on one thread and showing nothing, at the pace at which the pictures came: then caches
/// and clock are for it as they are for whoever shows the stream live.
double watchFFmpeg(const TestDesktop &desktop, const QString &stream)
{
    return perPicture([&desktop, &stream](int count) {
        return processorMillisecondsOf(
            desktop, QStringLiteral("ffmpeg"),
            {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-re"), QStringLiteral("-r"),
             QStringLiteral("60"), QStringLiteral("-threads"), QStringLiteral("1"), QStringLiteral("-i"), stream,
             QStringLiteral("-frames:v"), QString::number(count), QStringLiteral("-f"), QStringLiteral("null"),
             QStringLiteral("-")});
    });
}

/// mpv with its X11 output on the same stream at the same pace.
double watchMpv(const TestDesktop &desktop, const QString &stream)
{
    return perPicture([&desktop, &stream](int count) {
        return processorMillisecondsOf(
            desktop, QStringLiteral("mpv"),
            {QStringLiteral("--no-config"), QStringLiteral("--vo=x11"), QStringLiteral("--no-audio"),
             QStringLiteral("--hwdec=no"), QStringLiteral("--vd-lavc-threads=1"), QStringLiteral("--no-osc"),
             QStringLiteral("--osd-level=0"), QStringLiteral("--no-correct-pts"), QStringLiteral("--fps=60"),
             QStringLiteral("--really-quiet"), QStringLiteral("--frames=%1").arg(count), stream});
    });
}

/// Opens the app's window, watches it and closes it again.
Cost watchWindow(ProgramUnderTest &program, const TestDesktop &desktop)
{
    program.post(QStringLiteral("open:Tide"));
    program.waitForPicture(60);
    QThread::sleep(2);
    const auto cost = watchProgram(program, desktop);
    closeWindows(program);
    return cost;
}

/// In windows of the usual size, or with a video area of this size in points.
void measure(BenchReport &report, const TestDesktop::Options &options, std::optional<QSize> videoArea)
{
    TestDesktop desktop(options);
    const ExportedEnvironment environment(desktop.environment());
    ProgramUnderTest program(desktop);
    turnSoundOff(program);
    if (videoArea) {
        program.setSetting(QStringLiteral("Quillnest.panelWidth"), videoArea->width());
        program.setSetting(
            QStringLiteral("Quillnest.panelHeight"), videoArea->height() + QuillnestLayout::headerHeight);
    }
    program.start();
    program.addApps({ProgramUnderTest::sample(QStringLiteral("tide"))});
    program.post(QStringLiteral("open:Tide"));
    const auto window = program.waitForPicture(60);
    const QSize size(
        window.value(QStringLiteral("videoWidth")).toInt(), window.value(QStringLiteral("videoHeight")).toInt());
    closeWindows(program);

    const auto stream = RecordedStream::record(program, package, size, recordedFrames);
    const auto path = desktop.home() + QStringLiteral("/stream.h264");
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        throw driver::DriverError(QStringLiteral("the stream can't be written"));
    file.write(stream.annexB());
    file.close();

    Samples ratio, ratioWithXServer, mpvRatio, flatOutRatio;
    Samples rate, programCost, xServerCost, floorCost, flatOutCost;
    const bool hasMpv = !QStandardPaths::findExecutable(QStringLiteral("mpv")).isEmpty();
    for (int round = 0; round < rounds; ++round) {
        // A ratio is one of neighbours in time; who goes first changes from round to round.
        const bool oursFirst = round % 2 == 0;
        Cost cost;
        if (oursFirst)
            cost = watchWindow(program, desktop);
        const double floor = watchFFmpeg(desktop, path);
        if (!oursFirst)
            cost = watchWindow(program, desktop);
        const double flatOut = stream.decodingFloor();
        ratio.add(cost.programMilliseconds / floor);
        ratioWithXServer.add((cost.programMilliseconds + cost.xServerMilliseconds) / floor);
        if (hasMpv)
            mpvRatio.add(watchMpv(desktop, path) / floor);
        flatOutRatio.add(cost.programMilliseconds / flatOut);
        rate.add(cost.framesPerSecond);
        programCost.add(cost.programMilliseconds);
        xServerCost.add(cost.xServerMilliseconds);
        floorCost.add(floor);
        flatOutCost.add(flatOut);
    }

    const auto name = QStringLiteral("%1x%2").arg(size.width()).arg(size.height());
    const auto ofFFmpeg = QStringLiteral("of FFmpeg decoding the stream, one thread, same pace");
    report.add(QStringLiteral("frame_cpu_ratio_") + name, ratio, ofFFmpeg);
    report.add(QStringLiteral("frame_cpu_ratio_with_x_server_") + name, ratioWithXServer, ofFFmpeg);
    if (hasMpv)
        report.add(QStringLiteral("mpv_x11_cpu_ratio_") + name, mpvRatio, ofFFmpeg);
    report.add(
        QStringLiteral("frame_cpu_ratio_flat_out_") + name, flatOutRatio,
        QStringLiteral("of libavcodec decoding the stream in a loop"));
    report.add(QStringLiteral("frames_per_second_") + name, rate, QStringLiteral("1/s"));
    report.add(QStringLiteral("frame_cpu_ms_") + name, programCost, QStringLiteral("ms"));
    report.add(QStringLiteral("frame_x_server_ms_") + name, xServerCost, QStringLiteral("ms"));
    report.add(QStringLiteral("frame_floor_ms_") + name, floorCost, QStringLiteral("ms"));
    report.add(QStringLiteral("frame_floor_flat_out_ms_") + name, flatOutCost, QStringLiteral("ms"));
}

void runUsual(BenchReport &report)
{
    measure(report, {}, std::nullopt);
}

void runLarge(BenchReport &report)
{
    // Twice as many pixels each way as points, and a screen that the window fits on with its header.
    TestDesktop::Options options;
    options.screen = {2400, 2700};
    measure(report, options, QSize(540, 1200));
}

QStringList figures(const QString &size)
{
    QStringList names;
    for (const auto *name :
         {"frame_cpu_ratio_", "frame_cpu_ratio_with_x_server_", "mpv_x11_cpu_ratio_", "frame_cpu_ratio_flat_out_",
          "frames_per_second_", "frame_cpu_ms_", "frame_x_server_ms_", "frame_floor_ms_", "frame_floor_flat_out_ms_"})
        names.append(QLatin1String(name) + size);
    return names;
}

} // namespace

Benchmark videoPathBench()
{
    return {QStringLiteral("video"), figures(QStringLiteral("776x1448")), runUsual};
}

Benchmark largeVideoPathBench()
{
    return {QStringLiteral("video-large"), figures(QStringLiteral("1080x2400")), runLarge};
}

} // namespace quillnest::bench
