#include "platform/desktop/QtNetwork.h"

#include "platform/Conditions.h"
#include "platform/LoopbackServer.h"
#include "platform/Semaphore.h"
#include "platform/desktop/HttpTransfer.h"
#include "platform/desktop/QtExecutor.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPointer>
#include <QTemporaryDir>
#include <QTimer>

#include <sys/resource.h>

#include <atomic>
#include <csignal>

#include <gtest/gtest.h>

using namespace quillnest;
using namespace std::chrono_literals;

namespace
{

class QtNetworkTest : public ::testing::Test
{
protected:
    QtNetworkTest() { std::signal(SIGPIPE, SIG_IGN); }

    /// What became of a download.
    struct Result {
        std::vector<std::pair<qint64, qint64>> writes;
        std::optional<int> status;
        QByteArray content;
        bool completed = false;
        std::optional<QString> error;
        std::unique_ptr<Download> download;
    };

    std::shared_ptr<Result> start(const QUrl &url)
    {
        auto result = std::make_shared<Result>();
        result->download = network.download(
            url, folder.path(),
            {.onWrite = [result](qint64 written, qint64 expected) { result->writes.emplace_back(written, expected); },
             .onFinished =
                 [result](int status, const QString &path) {
                     result->status = status;
                     QFile file(path);
                     if (file.open(QIODevice::ReadOnly))
                         result->content = file.readAll();
                 },
             .onCompleted =
                 [result](const std::optional<QString> &error) {
                     EXPECT_FALSE(result->completed);
                     result->completed = true;
                     result->error = error;
                 }});
        return result;
    }

    std::shared_ptr<Result> run(const QUrl &url)
    {
        auto result = start(url);
        EXPECT_TRUE(comesTrue([&] { return result->completed; }));
        result->download.reset();
        EXPECT_EQ(files(), QStringList());
        return result;
    }

    QStringList files() const { return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden); }

    struct Fetched {
        std::optional<HttpAnswer> answer;
        QString error;
    };
    Fetched fetch(const QUrl &url)
    {
        Fetched result;
        bool ended = false;
        const auto wait = [&]() -> Task<> {
            try {
                result.answer = co_await network.fetch(url);
            } catch (const NetworkError &error) {
                result.error = error.description();
            }
            ended = true;
        };
        const auto task = wait();
        EXPECT_TRUE(comesTrue([&] { return ended; }));
        return result;
    }

    const std::shared_ptr<QtExecutor> executor = std::make_shared<QtExecutor>();
    QtNetwork network{executor, 300ms};
    const QTemporaryDir folder;
};

QByteArray body(qsizetype size)
{
    QByteArray result(size, Qt::Uninitialized);
    for (qsizetype i = 0; i < size; ++i)
        result[i] = static_cast<char>(i * 7 + i / 251);
    return result;
}

} // namespace

TEST_F(QtNetworkTest, fetchGivesStatusAndBody)
{
    const LoopbackServer server([](int connection, const QByteArray &) {
        LoopbackServer::write(connection, LoopbackServer::head("200 OK", 5) + "lists");
    });
    const auto result = fetch(server.url());
    ASSERT_TRUE(result.answer) << qPrintable(result.error);
    EXPECT_EQ(result.answer->status, 200);
    EXPECT_EQ(result.answer->body, "lists");
}

TEST_F(QtNetworkTest, anAnswerOfAnotherStatusIsAnAnswer)
{
    for (const int status : {204, 400, 401, 403, 404, 410, 418, 429, 500, 503, 599}) {
        const LoopbackServer server([status](int connection, const QByteArray &) {
            LoopbackServer::write(connection, LoopbackServer::head(QByteArray::number(status) + " No", 0));
        });
        const auto result = fetch(server.url());
        ASSERT_TRUE(result.answer) << status << qPrintable(result.error);
        EXPECT_EQ(result.answer->status, status);
    }
}

TEST_F(QtNetworkTest, nobodyThereIsAnError)
{
    const auto url = [] { return LoopbackServer([](int, const QByteArray &) {}).url(); }();
    const auto result = fetch(url);
    EXPECT_FALSE(result.answer);
    EXPECT_FALSE(result.error.isEmpty());
    EXPECT_TRUE(run(url)->error);
}

TEST_F(QtNetworkTest, anAnswerThatGoesOnForeverIsGivenUp)
{
    std::atomic<bool> ended = false;
    const LoopbackServer server([&](int connection, const QByteArray &) {
        LoopbackServer::write(connection, "HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n");
        while (LoopbackServer::write(connection, body(1024 * 1024))) { }
        ended = true;
    });
    const auto result = fetch(server.url());
    EXPECT_EQ(result.error.toStdString(), "The answer is too long");
    EXPECT_TRUE(comesTrue([&] { return ended.load(); }));
}

TEST_F(QtNetworkTest, downloadIsTheServersBytesAndTellsHowFarItIs)
{
    const auto content = body(5'000'000);
    const LoopbackServer server([&](int connection, const QByteArray &) {
        LoopbackServer::write(connection, LoopbackServer::head("200 OK", content.size()) + content);
    });
    const auto result = run(server.url());
    EXPECT_EQ(result->error, std::nullopt);
    EXPECT_EQ(result->status, 200);
    EXPECT_TRUE(result->content == content);
    ASSERT_FALSE(result->writes.empty());
    EXPECT_EQ(result->writes.back(), std::make_pair(qint64(content.size()), qint64(content.size())));
    EXPECT_TRUE(std::is_sorted(result->writes.begin(), result->writes.end()));
}

TEST_F(QtNetworkTest, theFileMayBeMovedAway)
{
    const LoopbackServer server([](int connection, const QByteArray &) {
        LoopbackServer::write(connection, LoopbackServer::head("200 OK", 4) + "mine");
    });
    bool completed = false;
    const auto target = folder.filePath(QStringLiteral("kept"));
    auto download = network.download(
        server.url(), folder.path(),
        {.onFinished =
             [&](int, const QString &path) {
                 EXPECT_TRUE(path.startsWith(folder.path()) && path.endsWith(QStringLiteral(".part")));
                 EXPECT_TRUE(QFile::rename(path, target));
             },
         .onCompleted = [&](const std::optional<QString> &) { completed = true; }});
    ASSERT_TRUE(comesTrue([&] { return completed; }));
    download.reset();
    EXPECT_EQ(files(), QStringList{QStringLiteral("kept")});
}

TEST_F(QtNetworkTest, downloadAsksForTheBytesAsTheyLie)
{
    const LoopbackServer server([](int connection, const QByteArray &) {
        LoopbackServer::write(connection, LoopbackServer::head("200 OK", 0));
    });
    run(server.url());
    ASSERT_EQ(server.requests().size(), 1U);
    EXPECT_TRUE(server.requests().front().toLower().contains("accept-encoding: identity"));
}

TEST_F(QtNetworkTest, withoutALengthTheTotalIsUnknown)
{
    const auto content = body(300'000);
    const LoopbackServer server([&](int connection, const QByteArray &) {
        LoopbackServer::write(connection, "HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n" + content);
    });
    const auto result = run(server.url());
    EXPECT_EQ(result->error, std::nullopt);
    EXPECT_TRUE(result->content == content);
    for (const auto &[written, expected] : result->writes)
        EXPECT_EQ(expected, -1);
}

TEST_F(QtNetworkTest, downloadOfAnotherStatusTellsIt)
{
    const LoopbackServer server([](int connection, const QByteArray &) {
        LoopbackServer::write(connection, LoopbackServer::head("404 Not Found", 5) + "sorry");
    });
    const auto result = run(server.url());
    EXPECT_EQ(result->status, 404);
    EXPECT_EQ(result->error, std::nullopt);
}

TEST_F(QtNetworkTest, aCutConnectionIsAnErrorAtEveryPlace)
{
    const auto content = body(200'000);
    for (const qsizetype size : {0, 1, 1000, 199'999}) {
        const LoopbackServer server([&](int connection, const QByteArray &) {
            LoopbackServer::write(connection, LoopbackServer::head("200 OK", content.size()) + content.first(size));
        });
        const auto result = run(server.url());
        EXPECT_EQ(result->status, std::nullopt) << size;
        EXPECT_TRUE(result->error && !result->error->isEmpty()) << size;
        const auto fetched = fetch(server.url());
        EXPECT_FALSE(fetched.answer) << size;
    }
}

TEST_F(QtNetworkTest, aCutThatArrivesTogetherWithTheLastBytesIsAnError)
{
    // Whether the library sees such a cut is a matter of microseconds, so here it is one that doesn't.
    class Reply : public QNetworkReply
    {
    public:
        explicit Reply(const QNetworkRequest &request)
        {
            setRequest(request);
            setUrl(request.url());
            setHeader(QNetworkRequest::ContentLengthHeader, 20);
            setAttribute(QNetworkRequest::HttpStatusCodeAttribute, 200);
            open(QIODevice::ReadOnly);
            QTimer::singleShot(0, this, [this] { Q_EMIT finished(); });
        }
        void abort() override { }

    protected:
        qint64 readData(char *data, qint64 size) override
        {
            const auto count = std::min<qint64>(size, std::exchange(m_left, 0));
            std::fill_n(data, count, 'x');
            return count;
        }

    private:
        qint64 m_left = 19;
    };
    class Manager : public QNetworkAccessManager
    {
    protected:
        QNetworkReply *createRequest(Operation, const QNetworkRequest &request, QIODevice *) override
        {
            return new Reply(request);
        }
    };
    Manager manager;
    std::optional<QString> error;
    int status = -1;
    const QPointer transfer = new HttpTransfer(
        manager, QUrl(QStringLiteral("http://localhost/x")), HttpTransfer::Body::asStored, 30s,
        {.onPiece = [](std::span<const char>, qint64) { return std::nullopt; },
         .onEnd =
             [&](int number, const std::optional<QString> &words) {
                 status = number;
                 error = words;
             }},
        nullptr);
    EXPECT_TRUE(comesTrue([&] { return !transfer; }));
    EXPECT_EQ(status, 0);
    EXPECT_EQ(error, QStringLiteral("Connection closed after 19 of 20 bytes"));
}

TEST_F(QtNetworkTest, aChunkedBodyThatIsCutIsAnError)
{
    const LoopbackServer server([&](int connection, const QByteArray &) {
        LoopbackServer::write(
            connection, "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4\r\nfour\r\nff\r\nnot all");
        // The toolkit takes a cut that arrives together with the last bytes for the end; what is fetched in chunks is
        // checked by what reads it. Here the server dies a moment later.
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
    });
    const auto result = run(server.url());
    EXPECT_EQ(result->status, std::nullopt);
    EXPECT_TRUE(result->error && !result->error->isEmpty());
}

TEST_F(QtNetworkTest, aCutInTheHeadIsAnError)
{
    for (const QByteArray head : {"", "HTT", "HTTP/1.1 200 OK\r\nContent-Le", "garbage\r\n\r\n"}) {
        const LoopbackServer server(
            [&](int connection, const QByteArray &) { LoopbackServer::write(connection, head); });
        const auto result = run(server.url());
        EXPECT_EQ(result->status, std::nullopt) << head.constData();
        EXPECT_TRUE(result->error && !result->error->isEmpty()) << head.constData();
    }
}

TEST_F(QtNetworkTest, silenceEndsATransferAndAMovingOneGoesOn)
{
    const LoopbackServer server([](int connection, const QByteArray &head) {
        LoopbackServer::write(connection, LoopbackServer::head("200 OK", 20));
        // Twice as long as the patience in all, but never silent for that long.
        for (int i = 0; i < 10; ++i) {
            std::this_thread::sleep_for(60ms);
            LoopbackServer::write(connection, "x");
        }
        if (head.startsWith("GET /slow"))
            LoopbackServer::write(connection, "xxxxxxxxxx");
        else
            LoopbackServer::waitsForEnd(connection);
    });
    const auto slow = run(server.url(QStringLiteral("/slow")));
    EXPECT_EQ(slow->error, std::nullopt);
    EXPECT_EQ(slow->content.size(), 20);
    const auto silent = run(server.url(QStringLiteral("/silent")));
    EXPECT_EQ(silent->error, QStringLiteral("The server has gone silent"));
    EXPECT_EQ(silent->status, std::nullopt);
}

TEST_F(QtNetworkTest, aServerThatNeverAnswersIsGivenUp)
{
    const LoopbackServer server([](int connection, const QByteArray &) { LoopbackServer::waitsForEnd(connection); });
    EXPECT_EQ(fetch(server.url()).error, QStringLiteral("The server has gone silent"));
}

TEST_F(QtNetworkTest, redirectionsAreFollowedButNotOutOfTheWeb)
{
    QFile secret(folder.filePath(QStringLiteral("../secret")));
    const LoopbackServer server([](int connection, const QByteArray &head) {
        if (head.startsWith("GET /file"))
            LoopbackServer::write(connection, LoopbackServer::head("302 Found", 0, "Location: /there\r\n"));
        else if (head.startsWith("GET /loop"))
            LoopbackServer::write(connection, LoopbackServer::head("302 Found", 0, "Location: /loop\r\n"));
        else if (head.startsWith("GET /out"))
            LoopbackServer::write(
                connection, LoopbackServer::head("302 Found", 0, "Location: file:///etc/hostname\r\n"));
        else
            LoopbackServer::write(connection, LoopbackServer::head("200 OK", 4) + "here");
    });
    const auto followed = run(server.url());
    EXPECT_EQ(followed->status, 200);
    EXPECT_EQ(followed->content, "here");
    for (const auto *path : {"/loop", "/out"}) {
        const auto result = run(server.url(QLatin1String(path)));
        EXPECT_NE(result->status, 200) << path;
        EXPECT_EQ(result->content, QByteArray()) << path;
        EXPECT_TRUE(result->error) << path;
    }
}

TEST_F(QtNetworkTest, onlyTheWebIsAsked)
{
    QFile file(folder.filePath(QStringLiteral("file")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    for (const auto &url :
         {QUrl::fromLocalFile(file.fileName()), QUrl(QStringLiteral("data:text/plain,hello")),
          QUrl(QStringLiteral("ftp://127.0.0.1/file")), QUrl(QStringLiteral("qrc:/file")), QUrl(),
          QUrl(QStringLiteral("http:///file"))}) {
        const auto result = fetch(url);
        EXPECT_FALSE(result.answer) << qPrintable(url.toString());
        EXPECT_FALSE(result.error.isEmpty());
    }
}

TEST_F(QtNetworkTest, aFullDiskEndsTheTransferInTheHostsWords)
{
    const auto content = body(3'000'000);
    const LoopbackServer server([&](int connection, const QByteArray &) {
        LoopbackServer::write(connection, LoopbackServer::head("200 OK", content.size()) + content);
    });
    // A file that may grow no further is refused as a full disk refuses it.
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small{1'000'000, before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &small);
    const auto result = run(server.url());
    ::setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(result->error, qt_error_string(EFBIG));
    EXPECT_EQ(result->status, std::nullopt);
}

TEST_F(QtNetworkTest, aFolderThatIsNotThereIsAnError)
{
    bool completed = false;
    auto download = network.download(
        QUrl(QStringLiteral("http://127.0.0.1/")), folder.filePath(QStringLiteral("none")),
        {.onFinished = [](int, const QString &) { ADD_FAILURE(); },
         .onCompleted =
             [&](const std::optional<QString> &error) {
                 completed = true;
                 EXPECT_EQ(error, qt_error_string(ENOENT));
             }});
    EXPECT_FALSE(completed) << "within the call";
    EXPECT_TRUE(comesTrue([&] { return completed; }));
}

TEST_F(QtNetworkTest, aDroppedDownloadEndsItsConnectionAndSaysNothing)
{
    std::atomic<bool> ended = false;
    const LoopbackServer server([&](int connection, const QByteArray &) {
        LoopbackServer::write(connection, LoopbackServer::head("200 OK", 1'000'000) + body(1000));
        ended = LoopbackServer::waitsForEnd(connection);
    });
    auto result = start(server.url());
    ASSERT_TRUE(comesTrue([&] { return !result->writes.empty(); }));
    EXPECT_EQ(files().size(), 1);
    const auto told = result->writes.size();
    result->download.reset();
    EXPECT_EQ(files(), QStringList());
    EXPECT_TRUE(comesTrue([&] { return ended.load(); }));
    EXPECT_FALSE(result->completed);
    EXPECT_EQ(result->writes.size(), told);
}

TEST_F(QtNetworkTest, aHandlerMayDropTheDownload)
{
    const LoopbackServer server([&](int connection, const QByteArray &) {
        LoopbackServer::write(connection, LoopbackServer::head("200 OK", 1000) + body(1000));
    });
    for (const bool atWrite : {true, false}) {
        std::unique_ptr<Download> download;
        bool dropped = false;
        const auto drop = [&] {
            download.reset();
            dropped = true;
        };
        download = network.download(
            server.url(), folder.path(),
            {.onWrite =
                 [&](qint64, qint64) {
                     if (atWrite)
                         drop();
                 },
             .onFinished = [&](int, const QString &) { drop(); },
             .onCompleted = [](const std::optional<QString> &) { ADD_FAILURE() << "after it was dropped"; }});
        ASSERT_TRUE(comesTrue([&] { return dropped; }));
        // Whatever else was on its way has come by the end of another transfer.
        run(server.url());
    }
}

TEST_F(QtNetworkTest, aNetworkMayGoBeforeItsDownloads)
{
    const LoopbackServer server([&](int connection, const QByteArray &) {
        LoopbackServer::write(connection, LoopbackServer::head("200 OK", 1'000'000) + body(1000));
        LoopbackServer::waitsForEnd(connection);
    });
    auto other = std::make_unique<QtNetwork>(executor);
    bool written = false;
    auto download = other->download(
        server.url(), folder.path(),
        {.onWrite = [&](qint64, qint64) { written = true; },
         .onCompleted = [](const std::optional<QString> &) { ADD_FAILURE(); }});
    ASSERT_TRUE(comesTrue([&] { return written; }));
    other.reset();
    download.reset();
    EXPECT_EQ(files(), QStringList());
}

TEST_F(QtNetworkTest, nothingRunsBeforeTheFirstRequest)
{
    const int before = ownThreads();
    const QtNetwork idle(executor);
    EXPECT_EQ(ownThreads(), before);
}
