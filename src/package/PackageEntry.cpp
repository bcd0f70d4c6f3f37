#include "package/PackageEntry.h"

#include "platform/ChildProcesses.h"

#include <QByteArray>
#include <QString>

#include <condition_variable>
#include <deque>
#include <mutex>

namespace quillnest
{

namespace
{
/// Written by the child's reader, waited for by the caller.
struct Capture {
    std::mutex lock;
    std::condition_variable changed;
    std::vector<std::uint8_t> bytes;
    bool tooLarge = false;
    bool ended = false;

    void take(const QByteArray &chunk)
    {
        const std::scoped_lock guard(lock);
        if (tooLarge)
            return;
        if (bytes.size() + static_cast<std::size_t>(chunk.size()) > PackageEntry::maximumSize) {
            tooLarge = true;
            bytes = {};
            changed.notify_all();
            return;
        }
        bytes.insert(bytes.end(), chunk.begin(), chunk.end());
    }

    void end()
    {
        const std::scoped_lock guard(lock);
        ended = true;
        changed.notify_all();
    }
};

/// Each character that a pattern gives a meaning becomes a set of that one character.
std::string asPattern(const std::string &text)
{
    std::string pattern;
    for (const char character : text) {
        switch (character) {
        case '\\':
            pattern += "\\\\";
            break;
        case '[':
        case '*':
        case '?':
            pattern += std::string("[") + character + "]";
            break;
        default:
            pattern += character;
        }
    }
    return pattern;
}
/// One entry on its way out of an archive.
class Reading
{
public:
    Reading(ChildProcesses &processes, const std::string &archivePath, const std::string &entryName)
    {
        const auto hasNul = [](const std::string &text) { return text.find('\0') != std::string::npos; };
        if (archivePath.empty() || entryName.empty() || hasNul(archivePath) || hasNul(entryName))
            return;
        ChildCommand command;
        command.program = QStringLiteral("/usr/bin/unzip");
        command.arguments
            = {QStringLiteral("-p"), QString::fromStdString(PackageEntry::archiveArgument(archivePath)),
               QString::fromStdString(PackageEntry::entryArgument(entryName))};
        try {
            m_child = processes.start(
                command,
                {.onOutput = [capture = m_capture](const QByteArray &chunk) { capture->take(chunk); },
                 .onExit = [capture = m_capture](int) { capture->end(); }});
        } catch (const LaunchError &) {
        }
    }

    /// Waits for the end.
    std::vector<std::uint8_t> bytes()
    {
        if (!m_child)
            return {};
        std::unique_lock guard(m_capture->lock);
        m_capture->changed.wait(guard, [this] { return m_capture->ended || m_capture->tooLarge; });
        if (!m_capture->ended) {
            guard.unlock();
            m_child->terminate();
            return {};
        }
        return std::move(m_capture->bytes);
    }

private:
    std::shared_ptr<Capture> m_capture = std::make_shared<Capture>();
    std::shared_ptr<RunningChild> m_child;
};
} // namespace

std::string PackageEntry::archiveArgument(const std::string &path)
{
    const std::string safe = path.starts_with('-') ? "./" + path : path;
    // The archive's path is a pattern only if it holds one of these, and then its last component alone is matched
    // while the folders are taken as they stand.
    if (safe.find_first_of("[*?") == std::string::npos)
        return safe;
    const auto slash = safe.rfind('/');
    const auto split = slash == std::string::npos ? 0 : slash + 1;
    return safe.substr(0, split) + asPattern(safe.substr(split));
}

std::string PackageEntry::entryArgument(const std::string &name)
{
    const auto pattern = asPattern(name);
    // Behind the archive "-x" and "-d" are still options.
    return pattern.starts_with('-') ? "[-]" + pattern.substr(1) : pattern;
}

std::vector<std::uint8_t>
PackageEntry::read(ChildProcesses &processes, const std::string &archivePath, const std::string &entryName)
{
    return Reading(processes, archivePath, entryName).bytes();
}

std::vector<std::vector<std::uint8_t>> PackageEntry::readAll(
    ChildProcesses &processes, const std::string &archivePath, const std::vector<std::string> &entryNames)
{
    constexpr std::size_t sideBySide = 4;
    std::deque<Reading> running;
    std::vector<std::vector<std::uint8_t>> results;
    for (const auto &name : entryNames) {
        if (running.size() == sideBySide) {
            results.push_back(running.front().bytes());
            running.pop_front();
        }
        running.emplace_back(processes, archivePath, name);
    }
    for (auto &reading : running)
        results.push_back(reading.bytes());
    return results;
}

} // namespace quillnest
