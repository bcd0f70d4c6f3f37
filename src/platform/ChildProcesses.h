#pragma once

#include "platform/DescribedError.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>

namespace quillnest
{

/// What to start and where its three standard streams go.
struct ChildCommand {
    enum class Input { null, inherit };
    /// Pipe: captured. Merged: standard error goes where standard output goes.
    enum class Output { null, pipe, descriptor };
    enum class Errors { null, merged };

    QString program;
    QStringList arguments;
    /// Variables to set on top of this process's own environment.
    std::map<QString, QString> environment{};
    Input input = Input::null;
    Output output = Output::pipe;
    Errors errors = Errors::null;
    /// For Output::descriptor: an open descriptor that stays the caller's.
    int descriptor = -1;
    /// For `run`: the child is ended when it lasts longer.
    std::optional<std::chrono::milliseconds> limit{};
};

struct ChildResult {
    /// Why the child could not be started; absent when it ran.
    std::optional<QString> launchError;
    /// The exit status, or 128 plus the signal that ended the child.
    int status = -1;
    /// What was captured, for Output::pipe.
    QByteArray output;
    /// The child was ended because its time was over.
    bool tookTooLong = false;
};

/// A child process that has been started and goes on by itself. The object outlives the child if need be; dropping it
/// leaves the child running.
class RunningChild
{
public:
    virtual ~RunningChild() = default;
    virtual bool isRunning() const = 0;
    virtual qint64 processId() const = 0;
    /// Asks the child to end (SIGTERM). Nothing happens when it has ended. Any thread.
    virtual void terminate() = 0;
    /// Ends the child at once (SIGKILL), whatever it is doing. Any thread.
    virtual void kill() = 0;
};

/// Starts child processes. Children inherit no descriptor but their three standard streams and are always reaped.
/// Any thread.
class ChildProcesses
{
public:
    struct Handlers {
        /// A chunk of captured output, never empty. On a thread of the layer's choice.
        std::function<void(QByteArray)> onOutput{};
        /// The child has ended and all its output has been handed over. Same thread; the last call.
        std::function<void(int status)> onExit{};
    };

    virtual ~ChildProcesses() = default;

    /// Runs the command to its end and blocks the caller, which therefore isn't the main thread.
    virtual ChildResult run(const ChildCommand &command) = 0;

    /// The same, for a command that somebody may want to end before its time: `started` gets the child on the caller's
    /// thread before it is waited for.
    using Started = std::function<void(const std::shared_ptr<RunningChild> &)>;
    virtual ChildResult runEndable(const ChildCommand &command, const Started & /*started*/) { return run(command); }

    /// The program ends: what `run` still waits for then is ended, and nothing more is run. Returns at once.
    virtual void endRunsWithin(std::chrono::milliseconds time) = 0;
    /// After that: waits until nothing is run any more, so that no child is left when the process ends.
    virtual void waitForRuns() = 0;

    /// Starts the command and returns at once; throws LaunchError when it can't be started.
    virtual std::shared_ptr<RunningChild> start(const ChildCommand &command, Handlers handlers) = 0;
    std::shared_ptr<RunningChild> start(const ChildCommand &command) { return start(command, Handlers{}); }
};

/// A command that could not be started, in the host's words.
class LaunchError : public DescribedError
{
public:
    using DescribedError::DescribedError;
};

} // namespace quillnest
