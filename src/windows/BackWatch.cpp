#include "windows/BackWatch.h"

#include <algorithm>
#include <array>
#include <utility>

namespace quillnest
{

namespace
{
constexpr std::array lookDelays{
    std::chrono::milliseconds(200), std::chrono::milliseconds(450), std::chrono::milliseconds(800),
    std::chrono::milliseconds(1300)};

bool appIsThere(const AndroidCommands &commands, const QString &package)
{
    const auto output = commands.runADB(
        {QStringLiteral("shell"), QStringLiteral("dumpsys activity activities | grep ResumedActivity")});
    return BackWatch::isResumed(output, package);
}
} // namespace

/// Held by the watch alone; everything under way knows it weakly.
class BackWatch::Watch : public std::enable_shared_from_this<Watch>
{
public:
    Watch(const WindowServices &services, QString package, std::function<void()> onLeft)
        : m_clock(services.platform.clock)
        , m_executor(services.platform.executor)
        , m_commands(services.commands)
        , m_package(std::move(package))
        , m_onLeft(std::move(onLeft))
    {
    }

    void backSent()
    {
        // A generation that has moved on means that the user has acted since, and a stale answer must not close the
        // window.
        const int generation = ++m_generation;
        for (const auto delay : lookDelays) {
            m_clock->later(delay, [weak = weak_from_this(), generation] {
                if (const auto self = weak.lock())
                    self->look(generation);
            });
        }
    }

    void stop() { m_isStopped = true; }

private:
    bool isCurrent(int generation) const { return m_generation == generation && !m_isStopped; }

    void look(int generation)
    {
        if (!isCurrent(generation))
            return;
        m_executor->inBackground(
            [weak = weak_from_this(), executor = m_executor, commands = m_commands, package = m_package, generation] {
                if (appIsThere(*commands, package))
                    return;
                executor->onMain([weak, generation] {
                    // What is told may destroy the watch; this hold keeps what tells it.
                    if (const auto self = weak.lock())
                        self->appHasLeft(generation);
                });
            });
    }

    void appHasLeft(int generation)
    {
        if (isCurrent(generation))
            m_onLeft();
    }

    const std::shared_ptr<Clock> m_clock;
    const std::shared_ptr<Executor> m_executor;
    const std::shared_ptr<const AndroidCommands> m_commands;
    const QString m_package;
    const std::function<void()> m_onLeft;
    int m_generation = 0;
    bool m_isStopped = false;
};

BackWatch::BackWatch(const WindowServices &services, QString package, std::function<void()> onLeft)
    : m_watch(std::make_shared<Watch>(services, std::move(package), std::move(onLeft)))
{
}

BackWatch::~BackWatch()
{
    stop();
}

void BackWatch::backSent()
{
    m_watch->backSent();
}

void BackWatch::stop()
{
    m_watch->stop();
}

bool BackWatch::isResumed(const QString &output, const QString &package)
{
    const auto lines = output.split(QLatin1Char('\n'));
    const QString mark = QLatin1Char(' ') + package + QLatin1Char('/');
    return std::any_of(lines.begin(), lines.end(), [&mark](const QString &line) { return line.contains(mark); });
}

} // namespace quillnest
