#include "fakes/ScriptedProcesses.h"

#include <QFile>

#include <algorithm>

namespace quillnest
{

ScriptedChild::ScriptedChild(ChildCommand command, ChildProcesses::Handlers handlers)
    : m_command(std::move(command)), m_handlers(std::move(handlers))
{
}

void ScriptedChild::terminate()
{
    ++m_terminations;
    if (!ignoresTerminate)
        exit(143);
}

void ScriptedChild::emitOutput(const QByteArray &chunk)
{
    if (m_running && !chunk.isEmpty() && m_handlers.onOutput)
        m_handlers.onOutput(chunk);
}

void ScriptedChild::exit(int status)
{
    if (m_running.exchange(false) && m_handlers.onExit)
        m_handlers.onExit(status);
}

QString ScriptedProcesses::line(const ChildCommand &command)
{
    return (QStringList{command.program} + command.arguments).join(QLatin1Char(' '));
}

void ScriptedProcesses::on(const QString &text, Script script)
{
    const std::scoped_lock guard(m_lock);
    m_rules.push_back({text, std::move(script), {}});
}

void ScriptedProcesses::on(const QString &text, Answer answer)
{
    on(text, [answer = std::move(answer)](const ChildCommand &) { return answer; });
}

void ScriptedProcesses::onStart(const QString &text, StartScript script)
{
    const std::scoped_lock guard(m_lock);
    m_rules.push_back({text, {}, std::move(script)});
}

std::optional<ScriptedProcesses::Rule> ScriptedProcesses::ruleFor(const QString &line, bool started) const
{
    const std::scoped_lock guard(m_lock);
    const auto rule = std::find_if(m_rules.rbegin(), m_rules.rend(), [&](const Rule &candidate) {
        return line.contains(candidate.text) && (started || candidate.script);
    });
    return rule == m_rules.rend() ? std::nullopt : std::optional(*rule);
}

ChildResult ScriptedProcesses::run(const ChildCommand &command)
{
    {
        const std::scoped_lock guard(m_lock);
        m_calls.push_back(command);
    }
    const auto rule = ruleFor(line(command), false);
    const auto answer = rule ? rule->script(command) : fallback;
    if (answer.launchError)
        return {answer.launchError, -1, {}, false};
    if (command.output == ChildCommand::Output::descriptor) {
        QFile file;
        if (file.open(command.descriptor, QIODevice::WriteOnly | QIODevice::Unbuffered, QFileDevice::DontCloseHandle))
            file.write(answer.output);
        return {std::nullopt, answer.status, {}, answer.tookTooLong};
    }
    auto output = command.output == ChildCommand::Output::pipe ? answer.output : QByteArray();
    return {std::nullopt, answer.status, std::move(output), answer.tookTooLong};
}

std::shared_ptr<RunningChild> ScriptedProcesses::start(const ChildCommand &command, Handlers handlers)
{
    const auto child = std::make_shared<ScriptedChild>(command, std::move(handlers));
    {
        const std::scoped_lock guard(m_lock);
        m_calls.push_back(command);
    }
    const auto rule = ruleFor(line(command), true);
    if (rule && rule->startScript) {
        rule->startScript(*child);
    } else if (rule) {
        const auto answer = rule->script(command);
        if (answer.launchError)
            throw LaunchError(*answer.launchError);
        child->emitOutput(answer.output);
        child->exit(answer.status);
    }
    const std::scoped_lock guard(m_lock);
    m_children.push_back(child);
    return child;
}

std::vector<ChildCommand> ScriptedProcesses::calls() const
{
    const std::scoped_lock guard(m_lock);
    return m_calls;
}

QStringList ScriptedProcesses::lines() const
{
    QStringList lines;
    for (const auto &command : calls())
        lines.append(line(command));
    return lines;
}

qsizetype ScriptedProcesses::count(const QString &text) const
{
    return lines().filter(text).size();
}

void ScriptedProcesses::forget()
{
    const std::scoped_lock guard(m_lock);
    m_calls.clear();
}

std::vector<std::shared_ptr<ScriptedChild>> ScriptedProcesses::children() const
{
    const std::scoped_lock guard(m_lock);
    return m_children;
}

} // namespace quillnest
