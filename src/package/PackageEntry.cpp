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

/// What "unzip" writes on its way here.
class Reading
{
public:
    Reading(ChildProcesses &processes, const std::vector<std::string> &arguments)
    {
        ChildCommand command;
        command.program = QStringLiteral("/usr/bin/unzip");
        for (const auto &argument : arguments) {
            // An empty name is none, and of one with a zero byte a child would see the first part alone.
            if (argument.empty() || argument.find('\0') != std::string::npos)
                return;
            command.arguments.append(QString::fromStdString(argument));
        }
        try {
            m_child = processes.start(
                command,
                {.onOutput = [capture = m_capture](const QByteArray &chunk) { capture->take(chunk); },
                 .onExit = [capture = m_capture](int) { capture->end(); }});
        } catch (const LaunchError &) {
        }
    }

    /// Waits for the end.
    std::optional<std::vector<std::uint8_t>> bytes()
    {
        if (!m_child)
            return std::nullopt;
        std::unique_lock guard(m_capture->lock);
        m_capture->changed.wait(guard, [this] { return m_capture->ended || m_capture->tooLarge; });
        if (!m_capture->ended) {
            guard.unlock();
            m_child->terminate();
            return std::nullopt;
        }
        return std::move(m_capture->bytes);
    }

private:
    std::shared_ptr<Capture> m_capture = std::make_shared<Capture>();
    std::shared_ptr<RunningChild> m_child;
};

std::vector<std::string> readArguments(const std::string &archivePath, const std::string &entryName)
{
    return {"-p", PackageEntry::archiveArgument(archivePath), PackageEntry::entryArgument(entryName)};
}
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
    return Reading(processes, readArguments(archivePath, entryName)).bytes().value_or(std::vector<std::uint8_t>());
}

std::optional<std::vector<std::uint8_t>>
PackageEntry::unzip(ChildProcesses &processes, const std::vector<std::string> &arguments)
{
    return Reading(processes, arguments).bytes();
}

std::optional<std::vector<std::uint8_t>> PackageEntry::list(ChildProcesses &processes, const std::string &archivePath)
{
    return unzip(processes, {"-Z1", archiveArgument(archivePath)});
}

std::vector<std::vector<std::uint8_t>> PackageEntry::readAll(
    ChildProcesses &processes, const std::string &archivePath, const std::vector<std::string> &entryNames)
{
    constexpr std::size_t sideBySide = 4;
    std::deque<Reading> running;
    std::vector<std::vector<std::uint8_t>> results;
    const auto finish
        = [&results](Reading &reading) { results.push_back(reading.bytes().value_or(std::vector<std::uint8_t>())); };
    for (const auto &name : entryNames) {
        if (running.size() == sideBySide) {
            finish(running.front());
            running.pop_front();
        }
        running.emplace_back(processes, readArguments(archivePath, name));
    }
    for (auto &reading : running)
        finish(reading);
    return results;
}

} // namespace quillnest
