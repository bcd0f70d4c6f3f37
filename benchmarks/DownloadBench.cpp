#include "benchmarks/DownloadBench.h"

#include "benchmarks/ProcessFacts.h"
#include "platform/LoopbackServer.h"
#include "platform/desktop/QtExecutor.h"
#include "platform/desktop/QtNetwork.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTemporaryDir>

#include <fcntl.h>

#include <algorithm>
#include <csignal>
#include <stdexcept>

namespace quillnest::bench
{

namespace
{

constexpr qint64 total = 512LL * 1024 * 1024;
constexpr int rounds = 5;

void bareCopy(const QUrl &url, const QString &path)
{
    const auto socket = standin::connectToLoopback(static_cast<quint16>(url.port()));
    standin::writeAll(socket.get(), "GET /file HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
    const standin::UniqueFd file(
        ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
    std::vector<char> buffer(256 * 1024);
    qint64 taken = 0;
    for (ssize_t count = 0; (count = ::read(socket.get(), buffer.data(), buffer.size())) > 0; taken += count) {
        if (!standin::writeAll(file.get(), buffer.data(), static_cast<std::size_t>(count)))
            throw std::runtime_error("no room for a large file");
    }
    if (taken < total)
        throw std::runtime_error("the copy is not whole");
}

/// How much larger this process's own memory was than before, at most, in MiB.
double download(QtNetwork &network, const QUrl &url, const QString &folder)
{
    QEventLoop loop;
    const auto process = QCoreApplication::applicationPid();
    const double before = memoryOf(process).own;
    double most = before;
    int writes = 0;
    QString problem;
    const auto transfer = network.download(
        url, folder,
        {.onWrite =
             [&](qint64, qint64) {
                 if (++writes % 50 == 0)
                     most = std::max(most, memoryOf(process).own);
             },
         .onFinished =
             [&](int, const QString &path) {
                 if (QFileInfo(path).size() != total)
                     problem = QStringLiteral("the download is not whole");
             },
         .onCompleted =
             [&](const std::optional<QString> &error) {
                 if (error)
                     problem = *error;
                 loop.quit();
             }});
    loop.exec();
    if (!problem.isEmpty())
        throw std::runtime_error(problem.toStdString());
    return most - before;
}

void runDownload(BenchReport &report)
{
    std::signal(SIGPIPE, SIG_IGN);
    const QByteArray piece(1024 * 1024, 'x');
    const LoopbackServer server([&](int connection, const QByteArray &) {
        LoopbackServer::write(connection, LoopbackServer::head("200 OK", total));
        for (qint64 sent = 0; sent < total && LoopbackServer::write(connection, piece); sent += piece.size()) { }
    });
    const QTemporaryDir folder;
    QtNetwork network(std::make_shared<QtExecutor>());
    Samples ratio;
    Samples rate;
    Samples growth;
    for (int round = -1; round < rounds; ++round) {
        const auto copied = folder.filePath(QStringLiteral("copied"));
        QElapsedTimer timer;
        timer.start();
        bareCopy(server.url(), copied);
        const auto bare = static_cast<double>(timer.nsecsElapsed());
        QFile::remove(copied);
        timer.start();
        const double grown = download(network, server.url(), folder.path());
        const auto ours = static_cast<double>(timer.nsecsElapsed());
        // The first round warms up.
        if (round < 0)
            continue;
        ratio.add(ours / bare);
        rate.add(total * 1000.0 / ours);
        growth.add(grown);
    }
    report.add(QStringLiteral("download_ratio"), ratio, QStringLiteral("of a bare copy from socket to file"));
    report.add(QStringLiteral("download_mb_per_s"), rate, QStringLiteral("MB a second"));
    report.add(QStringLiteral("download_growth_mib"), growth, QStringLiteral("MiB more at most, for 512 MiB"));
}

} // namespace

Benchmark downloadBench()
{
    return {
        QStringLiteral("download"),
        {QStringLiteral("download_ratio"), QStringLiteral("download_mb_per_s"), QStringLiteral("download_growth_mib")},
        runDownload};
}

} // namespace quillnest::bench
