#pragma once

#include "platform/Executor.h"

#include <QObject>
#include <QThreadPool>

#include <condition_variable>
#include <deque>
#include <mutex>

namespace quillnest
{

/// The main thread's event loop, two pools of threads, and a thread for each serial queue. Made on the main thread.
class QtExecutor : public Executor
{
public:
    QtExecutor();
    ~QtExecutor() override;

    void onMain(std::function<void()> work) override;
    void inBackground(std::function<void()> work) override;
    void asUtility(std::function<void()> work) override;
    std::unique_ptr<SerialQueue> serialQueue(const char *label) override;

private:
    /// Closures on their way to the thread that runs them. Qt is only told that there is one more: it orders threads by
    /// means that a thread sanitizer doesn't know, and this lock is one that it does.
    class Handover
    {
    public:
        void put(std::function<void()> work);
        /// Nothing if what was to run has been dropped.
        void runNext();
        void drop();
        /// Until nothing waits and nothing runs.
        void waitForDone();

    private:
        std::mutex m_lock;
        std::condition_variable m_idle;
        int m_running = 0;
        std::deque<std::function<void()>> m_waiting;
    };

    /// Takes one closure for each event that it gets.
    class MainContext : public QObject
    {
    public:
        explicit MainContext(Handover &handover) : m_handover(handover) { }
        void customEvent(QEvent *event) override;

    private:
        Handover &m_handover;
    };

    Handover m_main;
    Handover m_background;
    Handover m_utility;
    MainContext m_context;
    QThreadPool m_pool;
    QThreadPool m_utilityPool;
};

} // namespace quillnest
