#include "benchmarks/Sha1Bench.h"

#include "runtime/Sha1.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <stdexcept>

namespace quillnest::bench
{

namespace
{

constexpr qint64 blockSize = 4 * 1024 * 1024;
constexpr int blocks = 128;
constexpr int rounds = 5;

double secondsOf(const std::function<void()> &work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return static_cast<double>(timer.nsecsElapsed()) / 1e9;
}

void runSha1(BenchReport &report)
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("large")));
    if (!file.open(QIODevice::WriteOnly))
        throw std::runtime_error("a large file can't be made");
    QByteArray block(blockSize, Qt::Uninitialized);
    for (int i = 0; i < blocks; ++i) {
        block.fill(static_cast<char>(i * 37));
        if (file.write(block) != block.size())
            throw std::runtime_error("no room for a large file");
    }
    file.close();

    const auto read = [&] {
        QFile plain(file.fileName());
        if (!plain.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
            throw std::runtime_error("the large file is gone");
        while (plain.read(block.data(), block.size()) > 0) { }
    };
    Samples ratio;
    Samples rate;
    for (int round = -1; round < rounds; ++round) {
        const double bare = secondsOf(read);
        const double ours = secondsOf([&] { sha1OfFile(file.fileName()); });
        // The first round warms up.
        if (round < 0)
            continue;
        ratio.add(ours / bare);
        rate.add(blocks * static_cast<double>(blockSize) / 1e6 / ours);
    }
    report.add(QStringLiteral("sha1_ratio"), ratio, QStringLiteral("of reading the same 512 MiB from memory"));
    report.add(QStringLiteral("sha1_mb_per_s"), rate, QStringLiteral("MB a second"));
}

} // namespace

Benchmark sha1Bench()
{
    return {QStringLiteral("sha1"), {QStringLiteral("sha1_ratio"), QStringLiteral("sha1_mb_per_s")}, runSha1};
}

} // namespace quillnest::bench
