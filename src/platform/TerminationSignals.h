#pragma once

#include <QObject>

#include <atomic>
#include <functional>
#include <thread>

namespace quillnest
{

/// Turns SIGTERM, SIGINT and SIGHUP into an orderly end of the event loop, and lets writes to closed pipes fail
/// instead of ending the process. One instance, on the main thread.
class TerminationSignals : public QObject
{
    Q_OBJECT

public:
    /// Keeps the signals from their default action in this thread and those that it starts: to be called before there
    /// is any other thread.
    static void block();

    /// Needs the application object. `atOnce` runs when a signal has come, on a thread that waits for nothing else,
    /// whatever the main thread is doing.
    explicit TerminationSignals(std::function<void()> atOnce = {});
    ~TerminationSignals() override;

Q_SIGNALS:
    void requested();

private:
    std::atomic_bool m_ending = false;
    std::thread m_waiting;
};

} // namespace quillnest
