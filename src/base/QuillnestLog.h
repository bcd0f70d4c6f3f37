#pragma once

#include "platform/Clock.h"

#include <QFile>
#include <QString>

#include <memory>
#include <mutex>

namespace quillnest
{

/// An append-only text file of lines "{timestamp} {text}", the timestamp in ISO 8601, UTC, with milliseconds. Nothing
/// here ever fails visibly: a log that can't be opened is silent. Any thread.
class QuillnestLog
{
public:
    /// `directory` is made when it is missing. With `truncate` a file that is already there starts anew.
    QuillnestLog(std::shared_ptr<Clock> clock, const QString &directory, const QString &name, bool truncate);

    QString path() const { return m_path; }

    /// Appends the message, each of its non-empty lines as a line of its own with the same timestamp.
    void write(const QString &message);

    /// The last `maxLines` lines in file order without their timestamps, joined by line feeds. A negative count is a
    /// programmer's error and ends the program.
    QString tail(int maxLines) const;

private:
    const std::shared_ptr<Clock> m_clock;
    const QString m_path;
    mutable std::mutex m_lock;
    std::unique_ptr<QFile> m_handle;
};

} // namespace quillnest
