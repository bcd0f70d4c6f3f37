#pragma once

#include "platform/Clock.h"

#include <chrono>
#include <functional>
#include <memory>

namespace quillnest
{

/// A number on its way from one value to another: how bright, how far, how large. It is stepped by the platform's
/// clock, so that a test walks through it by hand, and how far it has come is a matter of time and not of the number of
/// steps: a step that comes late is a larger one. It begins and ends gently. Main thread.
class Animation
{
public:
    /// How often it is stepped.
    static constexpr Clock::Duration interval{16};

    /// `onStep` gets each value, the last one of all exactly.
    Animation(std::shared_ptr<Clock> clock, std::function<void(double)> onStep);
    /// Stops it where it is. It may be destroyed by one of its own callbacks.
    ~Animation();
    Animation(const Animation &) = delete;
    Animation &operator=(const Animation &) = delete;

    /// Goes from where it is to `target`, from 0 at first. What was under way ends here, and its `onEnd` isn't called.
    /// With no duration it is there at once.
    void runTo(double target, Clock::Duration duration, std::function<void()> onEnd = {});

    /// Is there at once and tells so; what was under way has ended.
    void jumpTo(double value);

    /// Stays where it is.
    void stop();

    bool isRunning() const;
    double value() const;

private:
    struct State;

    const std::shared_ptr<State> m_state;
};

} // namespace quillnest
