#include "fakes/ManualClock.h"

#include <algorithm>

namespace quillnest
{

class ManualClock::Handle : public Timer
{
public:
    explicit Handle(std::shared_ptr<bool> active) : m_active(std::move(active)) { }
    bool isActive() const override { return *m_active; }

private:
    std::shared_ptr<bool> m_active;
};

std::chrono::nanoseconds ManualClock::monotonic() const
{
    const std::scoped_lock guard(m_lock);
    return m_now;
}

QDateTime ManualClock::wallTime() const
{
    const std::scoped_lock guard(m_lock);
    const auto passed = std::chrono::duration_cast<std::chrono::milliseconds>(m_now - m_wallBase);
    return m_wallTime.addMSecs(passed.count());
}

std::unique_ptr<Timer> ManualClock::after(Duration delay, std::function<void()> action)
{
    return add(delay, Duration::zero(), std::move(action));
}

std::unique_ptr<Timer> ManualClock::every(Duration interval, std::function<void()> action)
{
    // An interval of nothing would never let `advance` end.
    const auto positive = std::max(interval, Duration(1));
    return add(positive, positive, std::move(action));
}

void ManualClock::later(Duration delay, std::function<void()> action)
{
    const std::scoped_lock guard(m_lock);
    m_actions.push_back({m_now + delay, m_nextOrder++, {}, std::nullopt, std::move(action)});
}

std::unique_ptr<Timer> ManualClock::add(Duration delay, Duration interval, std::function<void()> action)
{
    const std::scoped_lock guard(m_lock);
    auto active = std::make_shared<bool>(true);
    const bool once = interval == Duration::zero();
    auto run = [weak = std::weak_ptr(active), once, action = std::move(action)] {
        if (const auto flag = weak.lock(); flag && once)
            *flag = false;
        action();
    };
    m_actions.push_back({m_now + delay, m_nextOrder++, interval, std::weak_ptr<void>(active), std::move(run)});
    return std::make_unique<Handle>(std::move(active));
}

void ManualClock::removeCancelled() const
{
    std::erase_if(m_actions, [](const Action &action) { return action.owner && action.owner->expired(); });
}

std::optional<std::chrono::nanoseconds> ManualClock::nextDue() const
{
    const std::scoped_lock guard(m_lock);
    removeCancelled();
    const auto next = std::min_element(
        m_actions.begin(), m_actions.end(), [](const Action &a, const Action &b) { return a.due < b.due; });
    return next == m_actions.end() ? std::nullopt : std::optional(next->due);
}

std::optional<ManualClock::Action> ManualClock::takeDue(std::chrono::nanoseconds until)
{
    const std::scoped_lock guard(m_lock);
    removeCancelled();
    const auto next = std::min_element(m_actions.begin(), m_actions.end(), [](const Action &a, const Action &b) {
        return std::pair(a.due, a.order) < std::pair(b.due, b.order);
    });
    if (next == m_actions.end() || next->due > until)
        return std::nullopt;
    auto action = *next;
    m_now = std::max(m_now, action.due);
    if (next->interval.count() > 0) {
        next->due += next->interval;
        next->order = m_nextOrder++;
    } else {
        m_actions.erase(next);
    }
    return action;
}

void ManualClock::advance(Duration duration)
{
    const auto until = monotonic() + duration;
    while (const auto action = takeDue(until))
        action->run();
    const std::scoped_lock guard(m_lock);
    m_now = std::max(m_now, until);
}

bool ManualClock::advanceToNext()
{
    const auto due = nextDue();
    if (!due)
        return false;
    while (const auto action = takeDue(*due))
        action->run();
    return true;
}

void ManualClock::setWallTime(const QDateTime &time)
{
    const std::scoped_lock guard(m_lock);
    m_wallTime = time.toUTC();
    m_wallBase = m_now;
}

std::size_t ManualClock::pending() const
{
    const std::scoped_lock guard(m_lock);
    removeCancelled();
    return m_actions.size();
}

} // namespace quillnest
