#pragma once

#include "platform/Executor.h"
#include "platform/Network.h"

#include <QNetworkAccessManager>
#include <QThread>

#include <chrono>

namespace quillnest
{

/// HTTP by Qt, on a thread of its own that begins with the first request: what comes is written to the disk there, and
/// the main thread only hears of it.
class QtNetwork : public Network
{
public:
    /// A transfer in which nothing moves for as long as `patience` has failed.
    explicit QtNetwork(
        std::shared_ptr<Executor> executor, std::chrono::milliseconds patience = std::chrono::minutes(1));
    /// Ends every transfer; nobody hears of it.
    ~QtNetwork() override;
    QtNetwork(const QtNetwork &) = delete;
    QtNetwork &operator=(const QtNetwork &) = delete;

    Task<HttpAnswer> fetch(QUrl url) override;
    std::unique_ptr<Download> download(const QUrl &url, const QString &folder, DownloadEvents events) override;

private:
    class FileDownload;

    void startFetch(const QUrl &url, const Completion<HttpAnswer> &waiting);

    using Work = std::function<void(QNetworkAccessManager &manager, QObject *owner)>;

    /// Runs `work` on the network's thread; what it leaves there goes with its owner.
    void onThread(Work work);

    const std::shared_ptr<Executor> m_executor;
    const std::chrono::milliseconds m_patience;
    QThread m_thread;
    /// Lives on that thread, as the owner of what runs there.
    QObject *m_context = nullptr;
    QNetworkAccessManager *m_manager = nullptr;
};

} // namespace quillnest
