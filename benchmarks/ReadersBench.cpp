#include "benchmarks/ReadersBench.h"

#include "package/APKIconExtractor.h"
#include "package/BinaryXml.h"
#include "package/ResourceTable.h"
#include "platform/posix/ZipArchives.h"

#include <QElapsedTimer>

#include <cstring>
#include <stdexcept>

namespace quillnest::bench
{

namespace
{

using Blob = std::vector<std::uint8_t>;

constexpr int rounds = 9;
constexpr double mebibyte = 1024 * 1024;
/// The app's own icon in that package: a resource with values in several densities.
constexpr std::uint32_t anIcon = 0x0108'0093;

template <typename Work> double secondsOf(int times, const Work &work)
{
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < times; ++i)
        work();
    return static_cast<double>(timer.nsecsElapsed()) / 1e9 / times;
}

/// Every byte once, eight at a time.
std::uint64_t readOnce(const Blob &bytes)
{
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i + 8 <= bytes.size(); i += 8) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes.data() + i, 8);
        sum += word;
    }
    return sum;
}

struct Rates {
    Samples mebibytes;
    Samples ratio;
};

/// What one reader makes of a file, and how many times as long it takes as reading the bytes.
template <typename Work> Rates measure(const Blob &bytes, const Work &work)
{
    Rates rates;
    std::uint64_t sum = 0;
    // Long enough to be timed, short enough to be repeated.
    const int times = std::max(1, static_cast<int>(0.1 / std::max(1e-6, secondsOf(1, work))));
    for (int round = -1; round < rounds; ++round) {
        const double reading = secondsOf(times, work);
        const double plain = secondsOf(20, [&] { sum += readOnce(bytes); });
        if (round < 0)
            continue;
        rates.mebibytes.add(static_cast<double>(bytes.size()) / mebibyte / reading);
        rates.ratio.add(reading / plain);
    }
    if (sum == 0)
        throw std::runtime_error("the file is empty");
    return rates;
}

void run(BenchReport &report)
{
    ZipArchives archives;
    const std::string package = "/usr/share/android-framework-res/framework-res.apk";
    const auto manifest = APKIconExtractor::read(archives, package, "AndroidManifest.xml");
    const auto table = APKIconExtractor::read(archives, package, "resources.arsc");
    if (!manifest || !table || ResourceTable::entries(*table, anIcon).empty())
        throw std::runtime_error(package + " can't be read");

    const auto elements = measure(*manifest, [&] {
        if (BinaryXml::elements(*manifest).empty())
            throw std::runtime_error("no elements");
    });
    const auto entries = measure(*table, [&] {
        if (ResourceTable::entries(*table, anIcon).empty())
            throw std::runtime_error("no entries");
    });
    report.add(
        QStringLiteral("elements_mib_per_s"), elements.mebibytes, QStringLiteral("MiB a second of compiled XML"));
    report.add(
        QStringLiteral("elements_read_ratio"), elements.ratio,
        QStringLiteral("of reading the same bytes once from memory"));
    report.add(
        QStringLiteral("entries_mib_per_s"), entries.mebibytes,
        QStringLiteral("MiB a second of table for one resource"));
    report.add(
        QStringLiteral("entries_read_ratio"), entries.ratio,
        QStringLiteral("of reading the same bytes once from memory"));
}

} // namespace

Benchmark readersBench()
{
    return {
        QStringLiteral("readers"),
        {QStringLiteral("elements_mib_per_s"), QStringLiteral("elements_read_ratio"),
         QStringLiteral("entries_mib_per_s"), QStringLiteral("entries_read_ratio")},
        run};
}

} // namespace quillnest::bench
