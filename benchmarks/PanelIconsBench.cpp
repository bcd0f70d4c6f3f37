#include "benchmarks/PanelIconsBench.h"

#include "base/QuillnestFolders.h"
#include "benchmarks/SampleLibrary.h"
#include "benchmarks/StoreRig.h"
#include "driver/ProgramUnderTest.h"
#include "launcher/MenuPanel.h"
#include "platform/HostPlatform.h"
#include "platform/desktop/QtExecutor.h"
#include "platform/posix/ZipArchives.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QThread>

#include <stdexcept>

namespace quillnest::bench
{

namespace
{

constexpr int appCount = 200;
constexpr int rounds = 5;
constexpr qint64 patience = 120'000;

/// Copies, for no two apps share a file.
std::vector<MobileApp> libraryOfCopies(const QString &folder)
{
    const QStringList names{QStringLiteral("tide"), QStringLiteral("ember"), QStringLiteral("lantern")};
    QDir().mkpath(folder);
    auto library = sampleLibrary(appCount);
    for (int i = 0; i < appCount; ++i) {
        auto &app = library[static_cast<std::size_t>(i)];
        app.sourcePath = QStringLiteral("%1/%2.apk").arg(folder).arg(i);
        if (!QFile::copy(driver::ProgramUnderTest::sample(names.at(i % names.size())), app.sourcePath))
            throw std::runtime_error("a sample app can't be copied");
    }
    return library;
}

struct Filling {
    double opening = 0;
    double worstTurn = 0;
    double whole = 0;
    double kept = 0;
};

double since(const QElapsedTimer &timer)
{
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

qsizetype filesIn(const QString &folder)
{
    return QDir(folder).entryList({QStringLiteral("*.png")}, QDir::Files).size();
}

/// From the panel's making until all pictures are there, and on until all are kept. A turn is what the main thread does
/// between two looks at its events. The opening, in which the panel is made and painted without its pictures, is none
/// of them: no screen is as high as this panel.
Filling fill(const Platform &platform, StoreRig &rig)
{
    Filling result;
    QElapsedTimer whole;
    whole.start();
    QElapsedTimer turn;
    turn.start();
    AppIconStore icons(platform, rig.log);
    const PanelServices services{.platform = platform, .store = *rig.store, .icons = icons, .windows = rig.windows};
    MenuPanel panel(services);
    // High enough to show all of them: an icon is asked for when its tile is painted.
    panel.resize(390, 6000);
    panel.show();
    QCoreApplication::processEvents();
    result.opening = since(turn);
    const auto takeTurn = [&] {
        turn.start();
        QCoreApplication::processEvents();
        result.worstTurn = std::max(result.worstTurn, since(turn));
        QThread::usleep(200);
    };
    while (icons.images().size() < appCount) {
        if (whole.elapsed() > patience)
            throw std::runtime_error("some icons don't come");
        takeTurn();
    }
    result.whole = since(whole);
    // The last to come are painted a little later.
    const auto painted = whole.elapsed() + 200;
    while (whole.elapsed() < painted)
        takeTurn();
    while (filesIn(QuillnestFolders::icons(platform.folders)) < appCount) {
        if (whole.elapsed() > patience)
            throw std::runtime_error("some icons aren't kept");
        QThread::msleep(1);
    }
    result.kept = since(whole);
    return result;
}

void run(BenchReport &report)
{
    const auto fakes = fakePlatform();
    // What the store waits for stands still, the icons' own work is real.
    auto platform = fakes.platform;
    platform.executor = std::make_shared<QtExecutor>();
    platform.archives = std::make_shared<ZipArchives>();
    platform.symbols = hostSymbols();
    {
        StoreRig rig(fakes, libraryOfCopies(fakes.path(QStringLiteral("Packages"))));
        Samples opening;
        Samples coldTurn;
        Samples coldKept;
        Samples coldWhole;
        Samples warmTurn;
        Samples warmWhole;
        for (int round = 0; round < rounds; ++round) {
            QDir(QuillnestFolders::icons(platform.folders)).removeRecursively();
            const auto cold = fill(platform, rig);
            opening.add(cold.opening);
            coldTurn.add(cold.worstTurn);
            coldKept.add(cold.kept);
            coldWhole.add(cold.whole);
            const auto warm = fill(platform, rig);
            opening.add(warm.opening);
            warmTurn.add(warm.worstTurn);
            warmWhole.add(warm.whole);
        }
        report.add(QStringLiteral("icons_opening_ms"), opening, QStringLiteral("ms"));
        report.add(QStringLiteral("icons_cold_worst_frame_ms"), coldTurn, QStringLiteral("ms"));
        report.add(QStringLiteral("icons_warm_worst_frame_ms"), warmTurn, QStringLiteral("ms"));
        report.add(QStringLiteral("icons_cold_200_ms"), coldWhole, QStringLiteral("ms"));
        report.add(QStringLiteral("icons_cold_200_kept_ms"), coldKept, QStringLiteral("ms"));
        report.add(QStringLiteral("icons_warm_200_ms"), warmWhole, QStringLiteral("ms"));
    }
    while (fakes.clock->advanceToNext())
        fakes.settle();
}

} // namespace

Benchmark panelIconsBench()
{
    return {
        QStringLiteral("panel-icons"),
        {QStringLiteral("icons_opening_ms"), QStringLiteral("icons_cold_worst_frame_ms"),
         QStringLiteral("icons_warm_worst_frame_ms"), QStringLiteral("icons_cold_200_ms"),
         QStringLiteral("icons_cold_200_kept_ms"), QStringLiteral("icons_warm_200_ms")},
        run};
}

} // namespace quillnest::bench
