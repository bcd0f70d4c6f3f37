#pragma once

#include "platform/Clock.h"

#include <mutex>
#include <optional>
#include <vector>

namespace quillnest
{

/// Time that stands still until a test moves it. Actions run on the thread that calls `advance`. Setting timers and
/// reading the time is safe on any thread.
class ManualClock : public Clock
{
public:
    std::chrono::nanoseconds monotonic() const override;
    QDateTime wallTime() const override;
    [[nodiscard]] std::unique_ptr<Timer> after(Duration delay, std::function<void()> action) override;
    [[nodiscard]] std::unique_ptr<Timer> every(Duration interval, std::function<void()> action) override;
    void later(Duration delay, std::function<void()> action) override;

    /// Moves time on and runs what falls due on the way, in the order of the due times, then of the calls. An action
    /// sees its own due time; what it sets runs too if it falls due in the same stretch.
    void advance(Duration duration);

    /// Moves time to the next due action and runs all that is due then; false if nothing is set.
    bool advanceToNext();

    /// Sets the wall clock alone; it goes on from there as time moves.
    void setWallTime(const QDateTime &time);

    /// How many actions are set.
    std::size_t pending() const;

private:
    class Handle;

    struct Action {
        std::chrono::nanoseconds due{};
        std::uint64_t order = 0;
        /// Zero for a one-shot.
        std::chrono::nanoseconds interval{};
        /// Expires with the handle; absent for what nothing can cancel.
        std::optional<std::weak_ptr<void>> owner;
        std::function<void()> run;
    };

    std::unique_ptr<Timer> add(Duration delay, Duration interval, std::function<void()> action);
    void removeCancelled() const;
    std::optional<Action> takeDue(std::chrono::nanoseconds until);
    std::optional<std::chrono::nanoseconds> nextDue() const;

    mutable std::recursive_mutex m_lock;
    std::chrono::nanoseconds m_now = std::chrono::seconds(1000);
    std::chrono::nanoseconds m_wallBase = std::chrono::seconds(1000);
    QDateTime m_wallTime = QDateTime(QDate(2026, 1, 2), QTime(3, 4, 5, 678), Qt::UTC);
    mutable std::vector<Action> m_actions;
    std::uint64_t m_nextOrder = 0;
};

} // namespace quillnest
