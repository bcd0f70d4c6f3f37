#include "platform/posix/PosixChildProcesses.h"

#include "platform/posix/HostCalls.h"

#include <QFile>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <mutex>
#include <thread>
#include <vector>

extern char **environ;

namespace quillnest
{

namespace
{

struct Spawned {
    pid_t pid = -1;
    Descriptor output;
};

/// The texts with the null-terminated pointer array that exec wants.
class TextArray
{
public:
    void append(QByteArray text) { m_texts.push_back(std::move(text)); }
    char **pointers()
    {
        m_pointers.clear();
        for (auto &text : m_texts)
            m_pointers.push_back(text.data());
        m_pointers.push_back(nullptr);
        return m_pointers.data();
    }

private:
    std::vector<QByteArray> m_texts;
    std::vector<char *> m_pointers;
};

TextArray environmentFor(const ChildCommand &command)
{
    TextArray result;
    std::map<QByteArray, QByteArray> changes;
    for (const auto &[name, value] : command.environment)
        changes.emplace(QFile::encodeName(name), QFile::encodeName(value));
    for (char **entry = environ; *entry; ++entry) {
        const char *equals = std::strchr(*entry, '=');
        const QByteArray name(*entry, equals ? static_cast<qsizetype>(equals - *entry) : -1);
        if (!changes.contains(name))
            result.append(QByteArray(*entry));
    }
    for (const auto &[name, value] : changes)
        result.append(name + '=' + value);
    return result;
}

QString errorText(int code)
{
    return QString::fromLocal8Bit(std::strerror(code));
}

Spawned spawn(const ChildCommand &command)
{
    Spawned result;
    Descriptor writeEnd;
    if (command.output == ChildCommand::Output::pipe) {
        auto pipe = newPipe();
        if (!pipe.readEnd)
            throw LaunchError(errorText(errno));
        result.output = std::move(pipe.readEnd);
        writeEnd = std::move(pipe.writeEnd);
    }

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (command.input == ChildCommand::Input::null)
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    switch (command.output) {
    case ChildCommand::Output::null:
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        break;
    case ChildCommand::Output::pipe:
        posix_spawn_file_actions_adddup2(&actions, writeEnd.get(), STDOUT_FILENO);
        break;
    case ChildCommand::Output::descriptor:
        posix_spawn_file_actions_adddup2(&actions, command.descriptor, STDOUT_FILENO);
        break;
    }
    if (command.errors == ChildCommand::Errors::merged)
        posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    else
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);

    // A session of its own: what a terminal sends its foreground processes, such as Control-C, is for this program.
    // What becomes of its children then is its own affair; the emulator may have to stay.
    short flags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSID;
    closeAllButStandardStreams(actions, flags);

    // This program ignores SIGPIPE; a tool must not inherit that.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t signals;
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&attributes, &signals);
    sigaddset(&signals, SIGPIPE);
    posix_spawnattr_setsigdefault(&attributes, &signals);
    posix_spawnattr_setflags(&attributes, flags);

    const auto program = QFile::encodeName(command.program);
    TextArray arguments;
    arguments.append(program);
    for (const auto &argument : command.arguments)
        arguments.append(QFile::encodeName(argument));
    auto environment = environmentFor(command);
    const int code = ::posix_spawn(
        &result.pid, program.constData(), &actions, &attributes, arguments.pointers(), environment.pointers());
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    if (code != 0)
        throw LaunchError(errorText(code));
    return result;
}

int reap(pid_t pid)
{
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR)
            return -1;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

/// Reads what there is, at most one buffer full. Nothing at the end or on an error.
QByteArray readChunk(int descriptor)
{
    char buffer[65536];
    ssize_t count = 0;
    do
        count = ::read(descriptor, buffer, sizeof buffer);
    while (count < 0 && errno == EINTR);
    return count > 0 ? QByteArray(buffer, count) : QByteArray();
}

class PosixRunningChild : public RunningChild
{
public:
    explicit PosixRunningChild(pid_t pid) : m_pid(pid) { }

    bool isRunning() const override
    {
        const std::scoped_lock guard(m_lock);
        return m_running;
    }

    qint64 processId() const override { return m_pid; }

    void terminate() override
    {
        // Under the lock, so that the signal can't reach a stranger that was given the same id.
        const std::scoped_lock guard(m_lock);
        if (m_running)
            ::kill(m_pid, SIGTERM);
    }

    void kill() override
    {
        const std::scoped_lock guard(m_lock);
        if (m_running)
            ::kill(m_pid, SIGKILL);
    }

    /// Waits for the end without reaping, then reaps under the lock.
    int wait()
    {
        siginfo_t info{};
        while (::waitid(P_PID, static_cast<id_t>(m_pid), &info, WEXITED | WNOWAIT) < 0 && errno == EINTR) { }
        const std::scoped_lock guard(m_lock);
        m_running = false;
        return reap(m_pid);
    }

private:
    const pid_t m_pid;
    mutable std::mutex m_lock;
    bool m_running = true;
};

/// Hands over what is written until the child has ended. A grandchild that keeps the pipe open, or writes to it on and
/// on, doesn't hold this up: the end of the child itself is watched where the system offers that, and what is in the
/// pipe by then is the last that is read.
void readToEnd(int output, pid_t pid, const std::function<void(QByteArray)> &onOutput)
{
    const auto process = endOfChild(pid);
    std::optional<qsizetype> left;
    while (!left || *left > 0) {
        if (!left) {
            pollfd entries[2]{{output, POLLIN, 0}, {process.get(), POLLIN, 0}};
            if (::poll(entries, process ? 2 : 1, -1) < 0 && errno == EINTR)
                continue;
            if (process && entries[1].revents) {
                int waiting = 0;
                ::ioctl(output, FIONREAD, &waiting);
                left = waiting;
                continue;
            }
        }
        auto chunk = readChunk(output);
        if (chunk.isEmpty())
            return;
        if (left)
            *left -= chunk.size();
        if (onOutput)
            onOutput(std::move(chunk));
    }
}

} // namespace

ChildResult PosixChildProcesses::run(const ChildCommand &command)
{
    return runEndable(command, {});
}

ChildResult PosixChildProcesses::runEndable(const ChildCommand &command, const Started &started)
{
    ChildResult result;
    try {
        ChildDeadlines::Watch watch(m_deadlines, command.limit);
        const auto spawned = spawn(command);
        const auto child = std::make_shared<PosixRunningChild>(spawned.pid);
        watch.setChild(child);
        if (started)
            started(child);
        if (spawned.output)
            readToEnd(
                spawned.output.get(), spawned.pid, [&result](const QByteArray &chunk) { result.output += chunk; });
        result.status = child->wait();
        result.tookTooLong = watch.isOver();
    } catch (const LaunchError &error) {
        result.launchError = error.description();
    }
    return result;
}

std::shared_ptr<RunningChild> PosixChildProcesses::start(const ChildCommand &command, Handlers handlers)
{
    auto spawned = spawn(command);
    auto child = std::make_shared<PosixRunningChild>(spawned.pid);
    std::thread([child, output = std::move(spawned.output), handlers = std::move(handlers)]() mutable {
        if (output)
            readToEnd(output.get(), static_cast<pid_t>(child->processId()), handlers.onOutput);
        output.reset();
        const int status = child->wait();
        if (handlers.onExit)
            handlers.onExit(status);
    }).detach();
    return child;
}

} // namespace quillnest
