#include "daemon/ShellProcess.h"

#include "common/Programs.h"

#include <QList>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/wait.h>

namespace standin
{

namespace
{

struct Pipe {
    UniqueFd reader;
    UniqueFd writer;

    Pipe()
    {
        std::array<int, 2> ends = {-1, -1};
        if (::pipe2(ends.data(), O_CLOEXEC) == 0) {
            reader.reset(ends[0]);
            writer.reset(ends[1]);
        }
    }
};

/// The pseudo terminal's two ends: ours, and the child's.
Pipe makeTerminal()
{
    Pipe terminal;
    terminal.reader.reset(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
    std::array<char, 128> name;
    if (::grantpt(terminal.reader.get()) == 0 && ::unlockpt(terminal.reader.get()) == 0
        && ::ptsname_r(terminal.reader.get(), name.data(), name.size()) == 0)
        terminal.writer.reset(::open(name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    return terminal;
}

QList<QByteArray> environmentOfDevice(const QByteArray &terminal)
{
    return {
        "PATH=/system/bin",
        "HOME=/",
        "ANDROID_ROOT=/system",
        "ANDROID_DATA=/data",
        "TMPDIR=/data/local/tmp",
        "EXTERNAL_STORAGE=/sdcard",
        "SHELL=/system/bin/sh",
        "USER=shell",
        "LOGNAME=shell",
        "PS1=emu64xa:$PWD $ ",
        "TERM=" + (terminal.isEmpty() ? QByteArray("dumb") : terminal)};
}

std::vector<char *> pointersTo(QList<QByteArray> &texts)
{
    std::vector<char *> pointers;
    for (QByteArray &text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

pid_t spawn(QList<QByteArray> arguments, QList<QByteArray> environment, int input, int output, int error)
{
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, error, STDERR_FILENO);
    posix_spawnattr_t attributes;
    ::posix_spawnattr_init(&attributes);
    sigset_t signals;
    ::sigemptyset(&signals);
    ::posix_spawnattr_setsigmask(&attributes, &signals);
    ::sigaddset(&signals, SIGPIPE); // ignored in this process, but a pipeline in the shell lives on it
    ::posix_spawnattr_setsigdefault(&attributes, &signals);
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
    pid_t pid = -1;
    const std::vector<char *> argv = pointersTo(arguments);
    const std::vector<char *> envp = pointersTo(environment);
    if (::posix_spawn(&pid, argv.front(), &actions, &attributes, argv.data(), envp.data()) != 0)
        pid = -1;
    ::posix_spawnattr_destroy(&attributes);
    ::posix_spawn_file_actions_destroy(&actions);
    return pid;
}

} // namespace

ShellProcess::ShellProcess(
    const QByteArray &root, const QByteArray &command, const QByteArray &terminal, Streams streams)
{
    QList<QByteArray> arguments = {deviceToolPath().toLocal8Bit(), "enter", root, "/system/bin/sh"};
    if (command.isEmpty())
        arguments.append("-i");
    else
        arguments.append({"-c", command});
    const QList<QByteArray> environment = environmentOfDevice(terminal);
    if (streams == Streams::terminal) {
        Pipe ends = makeTerminal();
        const int child = ends.writer.get();
        m_pid = spawn(arguments, environment, child, child, child);
        m_input.reset(::fcntl(ends.reader.get(), F_DUPFD_CLOEXEC, 3));
        m_output = std::move(ends.reader);
        return;
    }
    Pipe input;
    Pipe output;
    if (streams == Streams::merged) {
        m_pid = spawn(arguments, environment, input.reader.get(), output.writer.get(), output.writer.get());
    } else {
        Pipe error;
        m_pid = spawn(arguments, environment, input.reader.get(), output.writer.get(), error.writer.get());
        m_error = std::move(error.reader);
    }
    m_input = std::move(input.writer);
    m_output = std::move(output.reader);
}

ShellProcess::~ShellProcess()
{
    if (m_pid > 0) {
        kill();
        wait();
    }
}

void ShellProcess::resizeTerminal(int rows, int columns) const
{
    winsize size = {};
    size.ws_row = static_cast<unsigned short>(rows);
    size.ws_col = static_cast<unsigned short>(columns);
    ::ioctl(m_output.get(), TIOCSWINSZ, &size);
}

void ShellProcess::kill() const
{
    const std::lock_guard lock(m_mutex);
    if (m_pid > 0)
        ::kill(-m_pid, SIGKILL);
}

int ShellProcess::wait()
{
    // First wait without taking the status: until it is taken the process id cannot be another's, so a kill from
    // another thread hits the right group.
    siginfo_t info = {};
    while (::waitid(P_PID, static_cast<id_t>(m_pid), &info, WEXITED | WNOWAIT) < 0 && errno == EINTR) { }
    const std::lock_guard lock(m_mutex);
    int status = 0;
    const pid_t ended = ::waitpid(m_pid, &status, 0);
    m_pid = -1;
    if (ended < 0)
        return 255;
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

} // namespace standin
