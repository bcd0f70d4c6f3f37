// quillnest-bench [FILE] [NAME-REGEX]: runs the benchmarks, or those with the expression in their names or in those of
// their figures, prints a table and writes FILE, "bench.json" by default. quillnest-bench --list names them.

#include "benchmarks/AdbBench.h"
#include "benchmarks/DownloadBench.h"
#include "benchmarks/FrameAgeBench.h"
#include "benchmarks/IconBench.h"
#include "benchmarks/IdleBench.h"
#include "benchmarks/InputBench.h"
#include "benchmarks/LaunchBench.h"
#include "benchmarks/LibraryBench.h"
#include "benchmarks/LongStreamBench.h"
#include "benchmarks/MachineFacts.h"
#include "benchmarks/OpeningsBench.h"
#include "benchmarks/PackageListBench.h"
#include "benchmarks/PanelBench.h"
#include "benchmarks/PanelIconsBench.h"
#include "benchmarks/ReadersBench.h"
#include "benchmarks/Sha1Bench.h"
#include "benchmarks/StartBench.h"
#include "benchmarks/VideoPathBench.h"
#include "benchmarks/WindowsBench.h"

#include <QApplication>

#include <cstdio>
#include <exception>

int main(int argc, char **argv)
{
    using namespace quillnest::bench;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    // Those that need a quiet machine most go first.
    const std::vector<Benchmark> benchmarks{
        libraryBench(),    iconBench(),           vectorIconBench(),  readersBench(),
        panelBench(),      panelIconsBench(),     startBench(),       idleBench(),
        adbBench(),        launchBench(),         frameAgeBench(),    inputBench(),
        videoPathBench(),  largeVideoPathBench(), windowsBench(),     openingsBench(),
        longStreamBench(), sha1Bench(),           packageListBench(), downloadBench()};

    const auto arguments = QApplication::arguments().mid(1);
    if (arguments == QStringList{QStringLiteral("--list")}) {
        for (const auto &benchmark : benchmarks)
            std::printf("%s: %s\n", qUtf8Printable(benchmark.name), qUtf8Printable(benchmark.figures.join(u' ')));
        return 0;
    }
    const QRegularExpression pattern(arguments.value(1));
    const auto path = arguments.value(0, QStringLiteral("bench.json"));
    if (arguments.size() > 2 || path.startsWith(u'-')) {
        std::fputs("usage: quillnest-bench [FILE] [NAME-REGEX] | --list\n", stderr);
        return 2;
    }
    if (!pattern.isValid()) {
        std::fprintf(stderr, "\"%s\": %s\n", qUtf8Printable(pattern.pattern()), qUtf8Printable(pattern.errorString()));
        return 2;
    }

    std::fputs(qUtf8Printable(machineFacts()), stdout);
    std::fflush(stdout);
    BenchReport report;
    bool ran = false;
    for (const auto &benchmark : benchmarks) {
        if (!benchmark.matches(pattern) || (benchmark.onlyByName && pattern.pattern().isEmpty()))
            continue;
        ran = true;
        std::fprintf(stderr, "... %s\n", qUtf8Printable(benchmark.name));
        try {
            benchmark.run(report);
        } catch (const std::exception &error) {
            std::fprintf(stderr, "%s: %s\n", qUtf8Printable(benchmark.name), error.what());
            return 1;
        }
    }
    if (!ran) {
        std::fprintf(stderr, "no benchmark matches \"%s\"\n", qUtf8Printable(pattern.pattern()));
        return 2;
    }
    std::printf("\n");
    report.print();
    if (!report.write(path)) {
        std::fprintf(stderr, "%s can't be written\n", qUtf8Printable(path));
        return 1;
    }
    return 0;
}
