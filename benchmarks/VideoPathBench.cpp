#include "benchmarks/VideoPathBench.h"

#include "benchmarks/ProcessorTime.h"
#include "benchmarks/RecordedStream.h"

#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QStandardPaths>
#include <QThread>

#include <sys/resource.h>
#include <sys/wait.h>

#include <cmath>

namespace quillnest::bench
{

namespace
{

using driver::ProgramUnderTest;
using driver::TestDesktop;

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

/// mpv with its X11 output on the same stream at its own pace of 60 a second, per picture; NaN where it isn't
/// installed. What it costs to start is taken off by a second run over the first tenth of the stream.
double watchMpv(const TestDesktop &desktop, const QString &stream, int frames)
{
    if (QStandardPaths::findExecutable(QStringLiteral("mpv")).isEmpty())
        return std::nan("");
    const auto play = [&desktop, &stream](int count) {
        rusage before {};
        getrusage(RUSAGE_CHILDREN, &before);
        desktop.run(QStringLiteral("mpv"),
            {QStringLiteral("--no-config"), QStringLiteral("--vo=x11"), QStringLiteral("--no-audio"),
                QStringLiteral("--hwdec=no"), QStringLiteral("--vd-lavc-threads=1"), QStringLiteral("--no-osc"),
                QStringLiteral("--osd-level=0"), QStringLiteral("--no-correct-pts"), QStringLiteral("--fps=60"),
                QStringLiteral("--really-quiet"), QStringLiteral("--frames=%1").arg(count), stream});
        rusage after {};
        getrusage(RUSAGE_CHILDREN, &after);
        const auto milliseconds = [](const timeval &time) {
            return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
        };
        return milliseconds(after.ru_utime) + milliseconds(after.ru_stime) - milliseconds(before.ru_utime)
            - milliseconds(before.ru_stime);
    };
    const int few = frames / 10;
    const double start = play(few);
    return (play(frames) - start) / (frames - few);
}

}

void benchVideoPath(BenchReport &report)
{
    TestDesktop desktop;
    for (const auto &key : desktop.environment().keys())
        qputenv(key.toLatin1().constData(), desktop.environment().value(key).toUtf8());
    ProgramUnderTest program(desktop);
    program.ctl({QStringLiteral("settings"), QStringLiteral("set"), QStringLiteral("QuillnestForwardAudio"),
        QStringLiteral("false")});
    program.start();
    program.addApps({ProgramUnderTest::sample(QStringLiteral("tide"))});
    program.post(QStringLiteral("open:Tide"));
    const auto window = program.waitForPicture(60);
    const QSize size(window.value(QStringLiteral("videoWidth")).toInt(), window.value(QStringLiteral("videoHeight")).toInt());
    QThread::sleep(2);
    const auto cost = watchProgram(program, desktop);
    program.post(QStringLiteral("close-all"));
    program.waitForState(QStringLiteral("the window to go"), 20, [](const QJsonObject &state) {
        return state.value(QStringLiteral("windows")).toArray().isEmpty();
    });

    const auto stream = RecordedStream::record(program, package, size, recordedFrames);
    const double floor = stream.decodingFloor();
    const auto path = desktop.home() + QStringLiteral("/stream.h264");
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        throw driver::DriverError(QStringLiteral("the stream can't be written"));
    file.write(stream.annexB());
    file.close();

    const auto name = QStringLiteral("%1x%2").arg(size.width()).arg(size.height());
    const auto ratio = QStringLiteral("of FFmpeg's decoding");
    report.add(QStringLiteral("frame_cpu_ratio_") + name, cost.programMilliseconds / floor, ratio);
    report.add(QStringLiteral("frame_cpu_ratio_with_x_server_") + name,
        (cost.programMilliseconds + cost.xServerMilliseconds) / floor, ratio);
    const double mpv = watchMpv(desktop, path, recordedFrames);
    if (!std::isnan(mpv))
        report.add(QStringLiteral("mpv_x11_cpu_ratio_") + name, mpv / floor, ratio);
    report.add(QStringLiteral("frames_per_second_") + name, cost.framesPerSecond, QStringLiteral("1/s"));
    report.add(QStringLiteral("frame_cpu_ms_") + name, cost.programMilliseconds, QStringLiteral("ms"));
    report.add(QStringLiteral("frame_floor_ms_") + name, floor, QStringLiteral("ms"));
    report.add(QStringLiteral("frame_x_server_ms_") + name, cost.xServerMilliseconds, QStringLiteral("ms"));
}

} // namespace quillnest::bench
