#include "platform/desktop/QtNetwork.h"

#include "platform/desktop/HttpTransfer.h"

#include <QFile>
#include <QPointer>
#include <QTemporaryFile>

#include <atomic>
#include <mutex>

namespace quillnest
{

QtNetwork::QtNetwork(std::shared_ptr<Executor> executor, std::chrono::milliseconds patience)
    : m_executor(std::move(executor)), m_patience(patience)
{
    m_thread.setObjectName(QStringLiteral("network"));
}

QtNetwork::~QtNetwork()
{
    m_thread.quit();
    m_thread.wait();
}

void QtNetwork::onThread(Work work)
{
    if (!m_thread.isRunning()) {
        m_context = new QObject;
        m_context->moveToThread(&m_thread);
        // On that thread, as its last: the transfers go before what carries them.
        QObject::connect(&m_thread, &QThread::finished, [this] {
            delete m_context;
            delete m_manager;
        });
        m_thread.start();
    }
    QMetaObject::invokeMethod(
        m_context,
        [this, work = std::move(work)] {
            if (!m_manager)
                m_manager = new QNetworkAccessManager;
            work(*m_manager, m_context);
        },
        Qt::QueuedConnection);
}

void QtNetwork::startFetch(const QUrl &url, const Completion<HttpAnswer> &waiting)
{
    // Put together on the network's thread.
    const auto answer = std::make_shared<HttpAnswer>();
    HttpTransfer::Handlers handlers{
        .onPiece = [answer](std::span<const char> piece, qint64) -> std::optional<QString> {
            auto &body = answer->body;
            if (body.size() + static_cast<qint64>(piece.size()) > largestAnswer)
                return QStringLiteral("The answer is too long");
            body.append(piece.data(), static_cast<qsizetype>(piece.size()));
            return std::nullopt;
        },
        .onEnd =
            [answer, waiting, executor = m_executor](int status, const std::optional<QString> &error) {
                answer->status = status;
                executor->onMain([answer, waiting, error] {
                    if (error)
                        waiting.fail(std::make_exception_ptr(NetworkError(*error)));
                    else
                        waiting.finish(std::move(*answer));
                });
            }};
    onThread(
        [url, patience = m_patience, handlers = std::move(handlers)](QNetworkAccessManager &manager, QObject *owner) {
            new HttpTransfer(manager, url, HttpTransfer::Body::anyEncoding, patience, handlers, owner);
        });
}

Task<HttpAnswer> QtNetwork::fetch(QUrl url)
{
    const Completion<HttpAnswer> answer;
    startFetch(url, answer);
    co_return co_await answer;
}

/// What the main thread holds of a download.
class QtNetwork::FileDownload : public Download
{
public:
    /// Shared with the transfer.
    struct State {
        // Main thread.
        DownloadEvents events;
        bool dropped = false;
        // Constant while the transfer runs.
        QString path;
        std::optional<QString> problem;
        // The network's thread.
        QFile file;
        QPointer<HttpTransfer> transfer;
        // Both.
        std::mutex lock;
        qint64 written = 0;
        qint64 expected = -1;
        bool isAnnounced = false;
        std::atomic<bool> isCancelled = false;
    };

    FileDownload(QtNetwork &network, const QUrl &url, const QString &folder, DownloadEvents events)
        : m_state(std::make_shared<State>()), m_executor(network.m_executor), m_context(network.m_context)
    {
        m_state->events = std::move(events);
        // Gives a name that is free. The file goes with this object, and may have been moved away by then.
        QTemporaryFile reserved(folder + QStringLiteral("/download-XXXXXX.part"));
        reserved.setAutoRemove(false);
        auto &file = m_state->file;
        if (reserved.open())
            file.setFileName(reserved.fileName());
        if (!reserved.isOpen() || !file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
            ended(m_state, *m_executor, 0, reserved.isOpen() ? file.errorString() : reserved.errorString());
            return;
        }
        m_state->path = file.fileName();
        network.onThread([url, patience = network.m_patience, state = m_state,
                          executor = m_executor](QNetworkAccessManager &manager, QObject *owner) {
            if (state->isCancelled)
                return;
            state->transfer = new HttpTransfer(
                manager, url, HttpTransfer::Body::asStored, patience,
                {.onPiece =
                     [state, executor](std::span<const char> piece, qint64 expected) {
                         return take(state, *executor, piece, expected);
                     },
                 .onEnd
                 = [state, executor](
                       int status, const std::optional<QString> &error) { ended(state, *executor, status, error); }},
                owner);
        });
        m_context = network.m_context;
    }

    ~FileDownload() override
    {
        m_state->dropped = true;
        m_state->isCancelled = true;
        m_state->events = {};
        if (!m_state->path.isEmpty())
            QFile::remove(m_state->path);
        if (m_context)
            QMetaObject::invokeMethod(
                m_context, [state = m_state] { delete state->transfer; }, Qt::QueuedConnection);
    }

private:
    using Shared = std::shared_ptr<State>;

    /// Writes a piece down; the words of a disk that refuses it.
    static std::optional<QString>
    take(const Shared &state, Executor &executor, std::span<const char> piece, qint64 expected)
    {
        auto &file = state->file;
        const auto size = static_cast<qint64>(piece.size());
        // A disk that is nearly full takes a part, and says only at the next one that it is.
        for (qint64 done = 0; done < size;) {
            const auto count = file.write(piece.data() + done, size - done);
            if (count < 0)
                return file.errorString();
            done += count;
        }
        const std::scoped_lock guard(state->lock);
        state->written += size;
        state->expected = expected;
        // The main thread hears of the newest count only, however slow it is.
        if (!std::exchange(state->isAnnounced, true))
            executor.onMain([state] { announce(state); });
        return std::nullopt;
    }

    static void announce(const Shared &state)
    {
        qint64 written = 0;
        qint64 expected = 0;
        {
            const std::scoped_lock guard(state->lock);
            state->isAnnounced = false;
            written = state->written;
            expected = state->expected;
        }
        // By a copy, as everywhere here: the handler may drop the download.
        if (const auto call = state->events.onWrite)
            call(written, expected);
    }

    static void ended(const Shared &state, Executor &executor, int status, const std::optional<QString> &error)
    {
        executor.onMain([state, status, error] {
            if (state->dropped)
                return;
            if (!error) {
                if (const auto call = state->events.onFinished)
                    call(status, state->path);
                if (!state->dropped)
                    QFile::remove(state->path);
            }
            if (const auto call = state->events.onCompleted)
                call(error);
        });
    }

    const Shared m_state;
    const std::shared_ptr<Executor> m_executor;
    QPointer<QObject> m_context;
};

std::unique_ptr<Download> QtNetwork::download(const QUrl &url, const QString &folder, DownloadEvents events)
{
    return std::make_unique<FileDownload>(*this, url, folder, std::move(events));
}

} // namespace quillnest
