#pragma once

#include "platform/Platform.h"
#include "platform/Tasks.h"

#include <functional>

namespace quillnest
{

/// One download into a file. Make it, run it once. Main thread.
class DownloadDelegate
{
public:
    using Progress = std::function<void(qint64 written, qint64 expected)>;

    /// `destination` is the absolute path of the finished file, which a file of that name gives way to. More than
    /// `largest` bytes are not taken; 0 stands for any number.
    DownloadDelegate(const Platform &platform, QString destination, qint64 largest, Progress progress);
    ~DownloadDelegate();
    DownloadDelegate(const DownloadDelegate &) = delete;
    DownloadDelegate &operator=(const DownloadDelegate &) = delete;

    /// Ends when the file is there; throws RuntimeProvisionError (download), or std::runtime_error if it can't be put
    /// in its place. The object outlives the task.
    Task<> run(QUrl url);

private:
    void wrote(qint64 written, qint64 expected);
    void finished(int status, const QString &temporaryFile);

    const Platform &m_platform;
    const QString m_destination;
    const qint64 m_largest;
    const Progress m_progress;
    /// The first of the download's events that brings the end counts.
    const Completion<> m_end;
};

} // namespace quillnest
