#include "benchmarks/IconBench.h"

#include "benchmarks/BareCommand.h"
#include "driver/ProgramUnderTest.h"
#include "fakes/ScriptedProcesses.h"
#include "package/IconSource.h"
#include "package/IconVector.h"
#include "platform/desktop/QtDrawing.h"
#include "platform/linux/PosixChildProcesses.h"

#include <QElapsedTimer>
#include <QFile>

#include <mutex>
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

/// Real children, of which the commands are noted.
class NotingProcesses : public ChildProcesses
{
public:
    using ChildProcesses::start;
    ChildResult run(const ChildCommand &command) override
    {
        note(command);
        return m_real.run(command);
    }
    std::shared_ptr<RunningChild> start(const ChildCommand &command, Handlers handlers) override
    {
        note(command);
        return m_real.start(command, std::move(handlers));
    }

    std::vector<BareCommand> take()
    {
        std::vector<BareCommand> result;
        for (auto &whole : m_commands)
            result.emplace_back(std::move(whole));
        m_commands.clear();
        return result;
    }

private:
    void note(const ChildCommand &command)
    {
        std::vector<QByteArray> whole{QFile::encodeName(command.program)};
        for (const auto &argument : command.arguments)
            whole.push_back(QFile::encodeName(argument));
        const std::scoped_lock guard(m_lock);
        m_commands.push_back(std::move(whole));
    }

    PosixChildProcesses m_real;
    std::mutex m_lock;
    std::vector<std::vector<QByteArray>> m_commands;
};

void labelAndIcon(ChildProcesses &processes, Drawing &drawing, const std::string &apk)
{
    const APKIconExtractor::IconTools tools{processes, drawing, [](const std::string &) {}};
    if (!APKIconExtractor::label(processes, apk) || !APKIconExtractor::iconPNG(tools, apk))
        throw std::runtime_error(apk + " gives no label or no icon");
}

void runIcon(BenchReport &report)
{
    QtDrawing drawing;
    PosixChildProcesses processes;
    std::vector<std::string> packages;
    std::vector<BareCommand> unzips;
    std::vector<BareCommand> badgings;
    for (const auto *name : {"tide", "ember", "lantern"}) {
        const auto apk = driver::ProgramUnderTest::sample(QLatin1String(name));
        packages.push_back(apk.toStdString());
        NotingProcesses noting;
        labelAndIcon(noting, drawing, packages.back());
        for (auto &command : noting.take())
            unzips.push_back(std::move(command));
        badgings.push_back(BareCommand({"/usr/bin/aapt2", "dump", "badging", QFile::encodeName(apk)}));
    }

    const auto ours = [&] {
        for (const auto &package : packages)
            labelAndIcon(processes, drawing, package);
    };
    const auto runAll = [](const std::vector<BareCommand> &commands) {
        for (const auto &command : commands)
            command.run();
    };
    Samples overUnzip;
    Samples overAapt;
    Samples milliseconds;
    Samples inLargeProcess;
    for (int round = -1; round < rounds; ++round) {
        const double own = millisecondsOf(ours);
        const double unzip = millisecondsOf([&] { runAll(unzips); });
        const double aapt = millisecondsOf([&] { runAll(badgings); });
        // The first round warms up.
        if (round < 0)
            continue;
        overUnzip.add(own / unzip);
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
        QStringLiteral("icon_over_unzip_ratio"), overUnzip,
        QStringLiteral("of the same unzip commands run bare, one after the other"));
    report.add(QStringLiteral("icon_vs_aapt2_ratio"), overAapt, QStringLiteral("of aapt2 dump badging"));
    report.add(QStringLiteral("icon_ms"), milliseconds, QStringLiteral("ms for a package's label and icon"));
    report.add(
        QStringLiteral("icon_large_process_ratio"), inLargeProcess,
        QStringLiteral("of the same, with another 1 GiB in this process"));
}

void runVectorIcon(BenchReport &report)
{
    QtDrawing drawing;
    PosixChildProcesses processes;
    const auto apk = driver::ProgramUnderTest::sample(QStringLiteral("ember")).toStdString();
    const auto table = APKIconExtractor::read(processes, apk, "resources.arsc");
    const std::string file = "res/drawable/ic_launcher_foreground.xml";
    const auto bytes = APKIconExtractor::read(processes, apk, file);
    if (!table || !bytes)
        throw std::runtime_error(apk + " can't be read");
    // From memory: what is measured is the drawing.
    ScriptedProcesses memory;
    const auto gradient = APKIconExtractor::read(processes, apk, "res/drawable/$ic_launcher_foreground__0.xml");
    if (!gradient)
        throw std::runtime_error("the icon has no gradient");
    memory.on(
        QStringLiteral("/usr/bin/unzip"),
        QByteArray(reinterpret_cast<const char *>(gradient->data()), static_cast<qsizetype>(gradient->size())));
    const APKIconExtractor::IconTools tools{memory, drawing, [](const std::string &) {}};

    constexpr int icons = 200;
    Samples milliseconds;
    Samples perSecond;
    for (int round = -1; round < rounds; ++round) {
        const double all = millisecondsOf([&] {
            for (int i = 0; i < icons; ++i) {
                IconSource source(tools, apk, *table);
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
        {QStringLiteral("icon_over_unzip_ratio"), QStringLiteral("icon_vs_aapt2_ratio"), QStringLiteral("icon_ms"),
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
