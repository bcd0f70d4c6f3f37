#include "benchmarks/FrameAgeBench.h"

#include "benchmarks/AppWindows.h"

#include <QElapsedTimer>
#include <QThread>

namespace quillnest::bench
{

namespace
{

constexpr int rounds = 3;
constexpr int watchedSeconds = 22;

void run(BenchReport &report)
{
    driver::TestDesktop::Options options;
    options.sound = false;
    driver::TestDesktop desktop(options);
    const auto program = programWithTide(desktop);
    Samples median, high, worst, rate;
    for (int round = 0; round < rounds; ++round) {
        program->post(QStringLiteral("open:Tide"));
        const auto before = program->waitForPicture(60);
        QElapsedTimer timer;
        timer.start();
        QThread::sleep(watchedSeconds);
        // The ages are those of every picture since the window came up, its very first included.
        const auto after = program->window();
        if (after.isEmpty())
            throw driver::DriverError(QStringLiteral("the window has gone"));
        const auto number
            = [](const QJsonObject &window, const char *name) { return window.value(QLatin1String(name)).toDouble(); };
        rate.add(
            (number(after, "framesShown") - number(before, "framesShown")) * 1e9
            / static_cast<double>(timer.nsecsElapsed()));
        median.add(number(after, "frameAgeP50Milliseconds"));
        high.add(number(after, "frameAgeP99Milliseconds"));
        worst.add(number(after, "worstFrameAgeMilliseconds"));
        closeWindows(*program);
    }
    report.add(QStringLiteral("frame_age_p50_ms"), median, QStringLiteral("ms"));
    report.add(QStringLiteral("frame_age_p99_ms"), high, QStringLiteral("ms"));
    report.add(QStringLiteral("frame_age_worst_ms"), worst, QStringLiteral("ms"));
    report.add(QStringLiteral("frame_age_frames_per_second"), rate, QStringLiteral("1/s"));
}

} // namespace

Benchmark frameAgeBench()
{
    return {
        QStringLiteral("frame-age"),
        {QStringLiteral("frame_age_p50_ms"), QStringLiteral("frame_age_p99_ms"), QStringLiteral("frame_age_worst_ms"),
         QStringLiteral("frame_age_frames_per_second")},
        run};
}

} // namespace quillnest::bench
