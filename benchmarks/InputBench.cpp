#include "benchmarks/InputBench.h"

#include "benchmarks/AppWindows.h"

#include <QJsonArray>

#include <cmath>

namespace quillnest::bench
{

namespace
{

constexpr int rounds = 3;
constexpr int moves = 400;
constexpr int keys = 100;
/// What the moves and keys become at least: a press, the moves, a release, and two messages for each key.
constexpr int leastMessages = 500;

/// One run of xdotool that does everything, since a process for each event would be most of the load.
QStringList circlesAndKeys(QPointF centre, double radius)
{
    QStringList arguments;
    const auto go = [&](double angle) {
        arguments << QStringLiteral("mousemove") << QString::number(std::lround(centre.x() + radius * std::cos(angle)))
                  << QString::number(std::lround(centre.y() + radius * std::sin(angle)));
    };
    go(0);
    arguments << QStringLiteral("mousedown") << QStringLiteral("1");
    for (int i = 1; i <= moves; ++i) {
        go(i * 0.05);
        arguments << QStringLiteral("sleep") << QStringLiteral("0.011");
    }
    arguments << QStringLiteral("mouseup") << QStringLiteral("1");
    for (int i = 0; i < keys; ++i) {
        arguments << QStringLiteral("key") << (i % 2 == 0 ? QStringLiteral("Right") : QStringLiteral("Left"))
                  << QStringLiteral("sleep") << QStringLiteral("0.011");
    }
    return arguments;
}

void run(BenchReport &report)
{
    driver::TestDesktop::Options options;
    options.sound = false;
    driver::TestDesktop desktop(options);
    const auto program = programWithTide(desktop);
    Samples median, high, outcome;
    for (int round = 0; round < rounds; ++round) {
        program->post(QStringLiteral("open:Tide"));
        const auto window = program->waitForPicture(60);
        const auto area = QRectF(driver::rectangle(window.value(QStringLiteral("videoArea")).toObject()));
        const double scale = desktop.scale();
        desktop.run(QStringLiteral("xdotool"), circlesAndKeys(area.center() * scale, area.width() * scale / 3));
        program->waitForState(
            QStringLiteral("%1 control messages").arg(leastMessages), 30, [](const QJsonObject &state) {
                const auto first = state.value(QStringLiteral("windows")).toArray().first();
                return first[QStringLiteral("controlSent")].toInt() >= leastMessages;
            });
        const auto after = program->window();
        median.add(after.value(QStringLiteral("controlP50Milliseconds")).toDouble());
        high.add(after.value(QStringLiteral("controlP99Milliseconds")).toDouble());
        outcome.add(after.value(QStringLiteral("controlSent")).toDouble());
        closeWindows(*program);
    }
    report.add(QStringLiteral("input_p50_ms"), median, QStringLiteral("ms"));
    report.add(QStringLiteral("input_p99_ms"), high, QStringLiteral("ms"));
    report.add(QStringLiteral("input_messages"), outcome, QStringLiteral("measured"));
}

} // namespace

Benchmark inputBench()
{
    return {
        QStringLiteral("input"),
        {QStringLiteral("input_p50_ms"), QStringLiteral("input_p99_ms"), QStringLiteral("input_messages")},
        run};
}

} // namespace quillnest::bench
