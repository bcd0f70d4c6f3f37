#pragma once

#include "common/UniqueFd.h"

#include <QByteArray>
#include <mutex>
#include <sys/types.h>

namespace standin
{

/// A command in the device's shell: a child in a session of its own, inside the tree. The device tool moves the
/// child into the tree, so that nothing of this many-threaded process runs between the fork and the new program.
class ShellProcess
{
public:
    enum class Streams {
        separate, ///< standard output and error have a pipe each
        merged, ///< both write into one pipe
        terminal, ///< one pseudo terminal for all three
    };

    /// An empty command means an interactive shell. Check `isRunning` for success.
    ShellProcess(const QByteArray &root, const QByteArray &command, const QByteArray &terminal, Streams streams);
    ~ShellProcess();
    ShellProcess(const ShellProcess &) = delete;
    ShellProcess &operator=(const ShellProcess &) = delete;

    bool isRunning() const { return m_pid > 0; }
    int input() const { return m_input.get(); }
    int output() const { return m_output.get(); }
    int error() const { return m_error.get(); } ///< -1 unless the streams are separate
    void closeInput() { m_input.reset(); }
    void resizeTerminal(int rows, int columns) const;

    /// Ends the command and all that it started in its process group.
    void kill() const;
    /// Waits for the end; the exit status as a shell would give it.
    int wait();

private:
    mutable std::mutex m_mutex; // over the process id, which the kill reads on another thread
    pid_t m_pid = -1;
    UniqueFd m_input;
    UniqueFd m_output;
    UniqueFd m_error;
};

} // namespace standin
