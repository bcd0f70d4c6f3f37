#pragma once

#include "platform/Clock.h"

#include <QObject>

namespace quillnest
{

/// The host's clock, with timers on the event loop of the thread that made it.
class QtClock : public Clock
{
public:
    std::chrono::nanoseconds monotonic() const override;
    QDateTime wallTime() const override;
    std::unique_ptr<Timer> after(Duration delay, std::function<void()> action) override;
    std::unique_ptr<Timer> every(Duration interval, std::function<void()> action) override;
    void later(Duration delay, std::function<void()> action) override;

private:
    QObject m_context;
};

} // namespace quillnest
