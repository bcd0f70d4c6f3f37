#pragma once

#include "platform/ChildProcesses.h"

#include <atomic>
#include <mutex>
#include <vector>

namespace quillnest
{

/// A started child in a test's hands.
class ScriptedChild : public RunningChild
{
public:
    ScriptedChild(ChildCommand command, ChildProcesses::Handlers handlers);

    bool isRunning() const override { return m_running; }
    qint64 processId() const override { return 4711; }
    /// Ends the child with status 143, unless `ignoresTerminate` is set.
    void terminate() override;
    void kill() override { exit(137); }

    const ChildCommand &command() const { return m_command; }
    /// Hands captured output to the handlers, on the caller's thread.
    void emitOutput(const QByteArray &chunk);
    /// Ends the child, on the caller's thread. A second call does nothing.
    void exit(int status);
    int terminations() const { return m_terminations; }

    std::atomic_bool ignoresTerminate = false;

private:
    const ChildCommand m_command;
    const ChildProcesses::Handlers m_handlers;
    std::atomic_bool m_running = true;
    std::atomic_int m_terminations = 0;
};

/// Child processes that exist only as a script. A rule matches a command whose program and arguments, joined by single
/// spaces, contain its text; the rule that was added last wins. Every command is recorded. Any thread.
class ScriptedProcesses : public ChildProcesses
{
public:
    struct Answer {
        QByteArray output{};
        int status = 0;
        std::optional<QString> launchError{};
        bool tookTooLong = false;
    };
    using Script = std::function<Answer(const ChildCommand &)>;
    using StartScript = std::function<void(ScriptedChild &)>;

    /// What a command gets that no rule matches.
    Answer fallback{};

    void on(const QString &text, Script script);
    void on(const QString &text, Answer answer);
    void on(const QString &text, const QByteArray &output) { on(text, Answer{output}); }

    /// For `start` alone: the child goes on running unless the script ends it. A LaunchError that the script throws is
    /// what `start` throws. Without such a rule a started child goes by the rules of `on` and ends at once, and without
    /// any rule it stays running, so code that waits for a started child needs one.
    void onStart(const QString &text, StartScript script);

    ChildResult run(const ChildCommand &command) override;
    std::shared_ptr<RunningChild> start(const ChildCommand &command, Handlers handlers) override;
    using ChildProcesses::start;
    void endRunsWithin(std::chrono::milliseconds time) override { runsEndWithin = time; }
    void waitForRuns() override { }

    /// What `endRunsWithin` was called with.
    std::optional<std::chrono::milliseconds> runsEndWithin;

    /// All commands so far, in order, and the same as lines "{program} {arguments}".
    std::vector<ChildCommand> calls() const;
    QStringList lines() const;
    /// How many of the lines contain a text.
    qsizetype count(const QString &text) const;
    void forget();

    /// The children that `start` made, in order.
    std::vector<std::shared_ptr<ScriptedChild>> children() const;

    static QString line(const ChildCommand &command);

private:
    struct Rule {
        QString text;
        Script script;
        StartScript startScript;
    };
    std::optional<Rule> ruleFor(const QString &line, bool started) const;

    mutable std::mutex m_lock;
    std::vector<Rule> m_rules;
    std::vector<ChildCommand> m_calls;
    std::vector<std::shared_ptr<ScriptedChild>> m_children;
};

} // namespace quillnest
