#include "windows/BackWatch.h"

#include <array>

namespace quillnest
{

namespace
{
constexpr std::array lookDelays{
    std::chrono::milliseconds(200), std::chrono::milliseconds(450), std::chrono::milliseconds(800),
    std::chrono::milliseconds(1300)};
}

BackWatch::BackWatch(const WindowServices &services, QString package, std::function<void()> onLeft)
    : m_services(services)
    , m_package(std::move(package))
    , m_state(std::make_shared<State>(State{0, false, std::move(onLeft)}))
{
}

void BackWatch::backSent()
{
    const int generation = ++m_state->generation;
    for (const auto delay : lookDelays) {
        m_services.platform.clock->later(
            delay, [state = m_state, generation, services = m_services, package = m_package] {
                if (state->generation != generation || state->stopped)
                    return;
                services.platform.executor->inBackground([state, generation, services, package] {
                    const auto output = services.commands->runADB(
                        {QStringLiteral("shell"),
                         QStringLiteral("dumpsys activity activities | grep ResumedActivity")});
                    if (isResumed(output, package))
                        return;
                    services.platform.executor->onMain([state, generation] {
                        if (state->generation == generation && !state->stopped)
                            state->onLeft();
                    });
                });
            });
    }
}

void BackWatch::stop()
{
    m_state->stopped = true;
    m_state->onLeft = nullptr;
}

bool BackWatch::isResumed(const QString &output, const QString &package)
{
    const auto lines = output.split(QLatin1Char('\n'));
    const QString mark = QLatin1Char(' ') + package + QLatin1Char('/');
    return std::any_of(lines.begin(), lines.end(), [&mark](const QString &line) { return line.contains(mark); });
}

} // namespace quillnest
