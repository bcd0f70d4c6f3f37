// quillnest-bench [FILE]: runs the benchmarks, prints a table and writes FILE, "bench.json" by default.

#include "benchmarks/VideoPathBench.h"

#include <QGuiApplication>

#include <cstdio>
#include <exception>

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication application(argc, argv);
    const auto path = QGuiApplication::arguments().value(1, QStringLiteral("bench.json"));
    quillnest::bench::BenchReport report;
    try {
        quillnest::bench::benchVideoPath(report);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    report.print();
    return report.write(path) ? 0 : 1;
}
