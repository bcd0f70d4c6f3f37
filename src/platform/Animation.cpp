#include "platform/Animation.h"

#include <algorithm>
#include <utility>

namespace quillnest
{

namespace
{
/// Slow at both ends.
double eased(double part)
{
    return part * part * (3 - 2 * part);
}
} // namespace

/// Outlives the animation by a callback that destroys it.
struct Animation::State {
    std::shared_ptr<Clock> clock;
    std::function<void(double)> onStep;
    std::function<void()> onEnd;
    std::unique_ptr<Timer> timer;
    std::chrono::nanoseconds startedAt{};
    std::chrono::nanoseconds duration{};
    double from = 0;
    double target = 0;
    double value = 0;

    void tell(double reached)
    {
        value = reached;
        // A callback may drop the animation and itself with it.
        const auto told = onStep;
        if (told)
            told(reached);
    }

    void step()
    {
        const auto passed = clock->monotonic() - startedAt;
        if (passed < duration) {
            const double part = std::chrono::duration<double>(passed) / std::chrono::duration<double>(duration);
            return tell(from + (target - from) * eased(std::clamp(part, 0.0, 1.0)));
        }
        const auto ended = std::exchange(onEnd, nullptr);
        timer.reset();
        tell(target);
        if (ended)
            ended();
    }
};

Animation::Animation(std::shared_ptr<Clock> clock, std::function<void(double)> onStep)
    : m_state(std::make_shared<State>())
{
    m_state->clock = std::move(clock);
    m_state->onStep = std::move(onStep);
}

Animation::~Animation()
{
    stop();
    m_state->onStep = nullptr;
}

void Animation::runTo(double target, Clock::Duration duration, std::function<void()> onEnd)
{
    const auto state = m_state;
    state->startedAt = state->clock->monotonic();
    state->duration = duration;
    state->from = state->value;
    state->target = target;
    state->onEnd = std::move(onEnd);
    if (duration <= Clock::Duration::zero())
        return state->step();
    state->timer = state->clock->every(interval, [weak = std::weak_ptr(state)] {
        if (const auto held = weak.lock())
            held->step();
    });
}

void Animation::jumpTo(double value)
{
    const auto state = m_state;
    stop();
    state->tell(value);
}

void Animation::stop()
{
    m_state->timer.reset();
    m_state->onEnd = nullptr;
}

bool Animation::isRunning() const
{
    return static_cast<bool>(m_state->timer);
}

double Animation::value() const
{
    return m_state->value;
}

} // namespace quillnest
