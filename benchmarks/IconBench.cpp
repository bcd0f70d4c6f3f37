#include "benchmarks/IconBench.h"

#include "benchmarks/BareCommand.h"
#include "driver/ProgramUnderTest.h"
#include "fakes/FakeArchives.h"
#include "package/IconSource.h"
#include "package/IconVector.h"
#include "platform/desktop/QtDrawing.h"
#include "platform/posix/ZipArchives.h"

#include <QElapsedTimer>
#include <QFile>

#include <stdexcept>

namespace quillnest::bench
{

namespace
{

constexpr int rounds = 9;

template <typename Work> double millisecondsOf(const Work &work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

void labelAndIcon(Archives &archives, Drawing &drawing, const std::string &apk)
{
    const APKIconExtractor::IconTools tools{archives, drawing, [](const std::string &) {}};
    if (!APKIconExtractor::label(archives, apk) || !APKIconExtractor::iconPNG(tools, apk))
        throw std::runtime_error(apk + " gives no label or no icon");
}

void runIcon(BenchReport &report)
{
    QtDrawing drawing;
    ZipArchives archives;
    std::vector<std::string> packages;
    std::vector<BareCommand> badgings;
    for (const auto *name : {"tide", "ember", "lantern"}) {
        const auto apk = driver::ProgramUnderTest::sample(QLatin1String(name));
        packages.push_back(apk.toStdString());
        badgings.push_back(BareCommand({"/usr/bin/aapt2", "dump", "badging", QFile::encodeName(apk)}));
    }

    const auto ours = [&] {
        for (const auto &package : packages)
            labelAndIcon(archives, drawing, package);
    };
    const auto labels = [&] {
        for (const auto &package : packages) {
            if (!APKIconExtractor::label(archives, package))
                throw std::runtime_error(package + " gives no label");
        }
    };
    const auto runAll = [](const std::vector<BareCommand> &commands) {
        for (const auto &command : commands)
            command.run();
    };
    Samples labelOverAapt;
    Samples overAapt;
    Samples milliseconds;
    Samples inLargeProcess;
    for (int round = -1; round < rounds; ++round) {
        const double own = millisecondsOf(ours);
        const double label = millisecondsOf(labels);
        const double aapt = millisecondsOf([&] { runAll(badgings); });
        // The first round warms up.
        if (round < 0)
            continue;
        labelOverAapt.add(label / aapt);
        overAapt.add(own / aapt);
        milliseconds.add(own / static_cast<double>(packages.size()));
    }
    // Apart from the others, which the coming and going of so much memory would slow down.
    for (int round = -1; round < rounds; ++round) {
        const double own = millisecondsOf(ours);
        // Every page touched: a child that were made by copying this process would pay for each.
        const std::vector<char> ballast(1024 * 1024 * 1024, 1);
        const double large = millisecondsOf(ours);
        if (round >= 0)
            inLargeProcess.add(large / own);
    }
    report.add(
        QStringLiteral("label_vs_aapt2_ratio"), labelOverAapt,
        QStringLiteral("of aapt2 dump badging, for a label alone"));
    report.add(QStringLiteral("icon_vs_aapt2_ratio"), overAapt, QStringLiteral("of aapt2 dump badging"));
    report.add(QStringLiteral("icon_ms"), milliseconds, QStringLiteral("ms for a package's label and icon"));
    report.add(
        QStringLiteral("icon_large_process_ratio"), inLargeProcess,
        QStringLiteral("of the same, with another 1 GiB in this process"));
}

void runVectorIcon(BenchReport &report)
{
    QtDrawing drawing;
    ZipArchives archives;
    const auto apk = driver::ProgramUnderTest::sample(QStringLiteral("ember")).toStdString();
    const auto table = APKIconExtractor::read(archives, apk, "resources.arsc");
    const std::string file = "res/drawable/ic_launcher_foreground.xml";
    const auto bytes = APKIconExtractor::read(archives, apk, file);
    if (!table || !bytes)
        throw std::runtime_error(apk + " can't be read");
    // From memory: what is measured is the drawing.
    const std::string gradientFile = "res/drawable/$ic_launcher_foreground__0.xml";
    const auto gradient = APKIconExtractor::read(archives, apk, gradientFile);
    if (!gradient)
        throw std::runtime_error("the icon has no gradient");
    FakeArchives memory;
    memory.packages[apk] = {{gradientFile, *gradient}};
    const auto opened = memory.open(apk);
    const APKIconExtractor::IconTools tools{memory, drawing, [](const std::string &) {}};

    constexpr int icons = 200;
    Samples milliseconds;
    Samples perSecond;
    for (int round = -1; round < rounds; ++round) {
        const double all = millisecondsOf([&] {
            for (int i = 0; i < icons; ++i) {
                IconSource source(tools, *opened, *table);
                if (!IconVector::render(source, *bytes, 0))
                    throw std::runtime_error("the icon draws nothing");
            }
        });
        if (round < 0)
            continue;
        milliseconds.add(all / icons);
        perSecond.add(1000 * icons / all);
    }
    report.add(QStringLiteral("vector_icon_ms"), milliseconds, QStringLiteral("ms for 192 pixels with gradients"));
    report.add(QStringLiteral("vector_icons_per_s"), perSecond, QStringLiteral("a second"));
}

} // namespace

Benchmark iconBench()
{
    return {
        QStringLiteral("icon"),
        {QStringLiteral("label_vs_aapt2_ratio"), QStringLiteral("icon_vs_aapt2_ratio"), QStringLiteral("icon_ms"),
         QStringLiteral("icon_large_process_ratio")},
        runIcon};
}

Benchmark vectorIconBench()
{
    return {
        QStringLiteral("vector icon"),
        {QStringLiteral("vector_icon_ms"), QStringLiteral("vector_icons_per_s")},
        runVectorIcon};
}

} // namespace quillnest::bench
