#include "platform/desktop/QtClock.h"

#include <QTimer>

namespace quillnest
{

namespace
{

class QtTimer : public Timer
{
public:
    QtTimer(Clock::Duration interval, bool once, std::function<void()> action)
    {
        m_timer.setSingleShot(once);
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.setInterval(interval);
        // The action may drop this handle, so it is called through a copy that outlives it.
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [action = std::move(action)] {
            const auto call = action;
            call();
        });
        m_timer.start();
    }

    bool isActive() const override { return m_timer.isActive(); }

private:
    QTimer m_timer;
};

} // namespace

std::chrono::nanoseconds QtClock::monotonic() const
{
    return std::chrono::steady_clock::now().time_since_epoch();
}

QDateTime QtClock::wallTime() const
{
    return QDateTime::currentDateTimeUtc();
}

std::unique_ptr<Timer> QtClock::after(Duration delay, std::function<void()> action)
{
    return std::make_unique<QtTimer>(delay, true, std::move(action));
}

std::unique_ptr<Timer> QtClock::every(Duration interval, std::function<void()> action)
{
    return std::make_unique<QtTimer>(interval, false, std::move(action));
}

void QtClock::later(Duration delay, std::function<void()> action)
{
    QTimer::singleShot(delay, Qt::PreciseTimer, &m_context, std::move(action));
}

} // namespace quillnest
