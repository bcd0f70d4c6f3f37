#pragma once

#include "platform/DescribedError.h"
#include "platform/Tasks.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <functional>
#include <memory>

namespace quillnest
{

/// A transfer that came to no answer, in the host's words.
class NetworkError : public DescribedError
{
public:
    using DescribedError::DescribedError;
};

struct HttpAnswer {
    /// 0 for an answer that isn't HTTP's.
    int status = 0;
    QByteArray body;
};

/// What happens to a download, each on the main thread. The download may be dropped inside each of them.
struct DownloadEvents {
    /// Bytes written so far, and all that there will be; -1 while that is unknown.
    std::function<void(qint64 written, qint64 expected)> onWrite{};
    /// All has come; `onCompleted` follows. The file is gone when this returns unless it was moved away.
    std::function<void(int status, const QString &temporaryFile)> onFinished{};
    /// The last event, with the host's words if the transfer failed.
    std::function<void(const std::optional<QString> &error)> onCompleted{};
};

/// A download that goes on until it has ended or the object is dropped; no event comes after that.
class Download
{
public:
    virtual ~Download() = default;
};

/// HTTP. Redirections are followed, but never from a safe address to an unsafe one. A transfer in which nothing moves
/// for a minute has failed. Main thread.
class Network
{
public:
    virtual ~Network() = default;

    /// The most that `fetch` takes: far more than any list has.
    static constexpr qint64 largestAnswer = 64 * 1024 * 1024;

    /// The answer's whole body, whatever its status; throws NetworkError when there is no answer.
    virtual Task<HttpAnswer> fetch(QUrl url) = 0;

    /// Downloads into a temporary file in `folder`, never holding more than a piece of it in memory. The temporary file
    /// goes with the download; what a killed program left of one is named "*.part".
    virtual std::unique_ptr<Download> download(const QUrl &url, const QString &folder, DownloadEvents events) = 0;
};

} // namespace quillnest
