#pragma once

#include <QByteArray>
#include <QFile>
#include <QFileSystemWatcher>
#include <QObject>

#include <functional>
#include <optional>

namespace quillnest::ctl
{

/// Hands over what a file holds and what is added to it, whether it exists yet, is cut short or is replaced by another.
/// Nothing runs while nothing is written. Needs an event loop.
class LogFollower : public QObject
{
    Q_OBJECT

public:
    /// Begins with the last `lines` lines of a file that is there already, or with all of it.
    LogFollower(const QString &path, std::optional<int> lines, std::function<void(const QByteArray &)> onText);

private:
    void look();
    void watch();
    bool isReplaced() const;
    void readOn();

    const QString m_path;
    std::optional<int> m_lines;
    const std::function<void(const QByteArray &)> m_onText;
    QFile m_file;
    QFileSystemWatcher m_watcher;
};

/// Where the last `lines` lines of an open file begin. A last line without an end counts.
qint64 beginOfLastLines(QFile &file, int lines);

} // namespace quillnest::ctl
