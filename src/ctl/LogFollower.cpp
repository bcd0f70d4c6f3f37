#include "ctl/LogFollower.h"

#include "platform/Files.h"

#include <QFileInfo>

#include <algorithm>

namespace quillnest::ctl
{

namespace
{
constexpr qint64 chunkSize = 64 * 1024;
}

LogFollower::LogFollower(const QString &path, std::optional<int> lines, std::function<void(const QByteArray &)> onText)
    : m_path(path), m_lines(lines), m_onText(std::move(onText)), m_file(path)
{
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, &LogFollower::look);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &LogFollower::look);
    look();
    // Only what was there at the beginning is cut down to its last lines.
    m_lines.reset();
}

void LogFollower::look()
{
    if (m_file.isOpen() && isReplaced()) {
        readOn();
        m_file.close();
        // What is watched is the old file, though under the name of the new one.
        m_watcher.removePath(m_path);
    }
    watch();
    if (!m_file.isOpen()) {
        if (!m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
            return;
        if (m_lines)
            m_file.seek(beginOfLastLines(m_file, *m_lines));
    }
    if (m_file.size() < m_file.pos())
        m_file.seek(0);
    readOn();
}

void LogFollower::watch()
{
    // The nearest folder that exists tells when the next one, or the file, comes. The next one may have been made
    // before this one was watched, so the search is done once more until it ends where it did before.
    QString watched;
    while (true) {
        auto folder = QFileInfo(m_path).absolutePath();
        while (!QFileInfo::exists(folder))
            folder = QFileInfo(folder).absolutePath();
        if (folder == watched)
            break;
        watched = folder;
        for (const auto &other : m_watcher.directories()) {
            if (other != folder)
                m_watcher.removePath(other);
        }
        if (!m_watcher.directories().contains(folder))
            m_watcher.addPath(folder);
    }
    if (QFileInfo::exists(m_path) && !m_watcher.files().contains(m_path))
        m_watcher.addPath(m_path);
}

bool LogFollower::isReplaced() const
{
    const auto open = identityOf(m_file);
    return !open || open != identityOf(m_path);
}

void LogFollower::readOn()
{
    while (true) {
        const auto text = m_file.read(chunkSize);
        if (text.isEmpty())
            return;
        m_onText(text);
    }
}

qint64 beginOfLastLines(QFile &file, int lines)
{
    const auto size = file.size();
    // The line end behind the last line ends it and begins no other.
    auto position = size > 0 ? size - 1 : 0;
    for (auto left = lines; position > 0;) {
        const auto begin = std::max<qint64>(0, position - chunkSize);
        file.seek(begin);
        const auto chunk = file.read(position - begin);
        for (auto i = chunk.size() - 1; i >= 0; --i) {
            if (chunk[i] == '\n' && --left == 0)
                return begin + i + 1;
        }
        position = begin;
    }
    return lines > 0 ? 0 : size;
}

} // namespace quillnest::ctl
