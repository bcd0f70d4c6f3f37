#include "platform/desktop/QtExecutor.h"

#include "platform/CurrentThread.h"

#include <QCoreApplication>
#include <QEvent>
#include <QThread>

#include <deque>
#include <mutex>
#include <thread>

namespace quillnest
{

namespace
{

class ThreadQueue : public SerialQueue
{
public:
    explicit ThreadQueue(const char *label)
        : m_thread([this, name = std::string(label)] {
            nameCurrentThread(name);
            work();
        })
    {
    }

    ~ThreadQueue() override
    {
        // Destroyed outside the lock: what a closure owns may post once more on its way out.
        std::deque<std::function<void()>> discarded;
        {
            const std::scoped_lock guard(m_lock);
            m_ending = true;
            discarded.swap(m_closures);
        }
        m_wake.notify_one();
        discarded.clear();
        // A closure that held the last reference to the queue drops it on the queue's own thread.
        if (m_thread.get_id() == std::this_thread::get_id())
            qFatal("a serial queue was dropped by one of its own closures");
        m_thread.join();
    }

    void post(std::function<void()> closure) override
    {
        {
            const std::scoped_lock guard(m_lock);
            if (m_ending)
                return;
            m_closures.push_back(std::move(closure));
        }
        m_wake.notify_one();
    }

private:
    void work()
    {
        std::unique_lock guard(m_lock);
        while (true) {
            m_wake.wait(guard, [this] { return m_ending || !m_closures.empty(); });
            if (m_ending)
                return;
            auto closure = std::move(m_closures.front());
            m_closures.pop_front();
            guard.unlock();
            closure();
            closure = nullptr;
            guard.lock();
        }
    }

    std::mutex m_lock;
    std::condition_variable m_wake;
    std::deque<std::function<void()>> m_closures;
    bool m_ending = false;
    std::thread m_thread;
};

/// Once is enough for a thread of the pool.
void lowerPriority()
{
    thread_local bool lowered = false;
    if (!std::exchange(lowered, true))
        lowerCurrentThread();
}

} // namespace

void QtExecutor::Handover::put(std::function<void()> work)
{
    const std::scoped_lock guard(m_lock);
    m_waiting.push_back(std::move(work));
}

void QtExecutor::Handover::runNext()
{
    std::function<void()> work;
    {
        const std::scoped_lock guard(m_lock);
        if (m_waiting.empty())
            return;
        work = std::move(m_waiting.front());
        m_waiting.pop_front();
        ++m_running;
    }
    work();
    work = nullptr;
    const std::scoped_lock guard(m_lock);
    --m_running;
    // Under the lock: whoever waits may destroy all this as soon as it is free.
    m_idle.notify_all();
}

void QtExecutor::Handover::waitForDone()
{
    std::unique_lock guard(m_lock);
    m_idle.wait(guard, [this] { return m_running == 0 && m_waiting.empty(); });
}

void QtExecutor::Handover::drop()
{
    // Destroyed outside the lock: what a closure owns may post once more on its way out.
    std::deque<std::function<void()>> dropped;
    {
        const std::scoped_lock guard(m_lock);
        dropped.swap(m_waiting);
    }
}

void QtExecutor::MainContext::customEvent(QEvent *)
{
    m_handover.runNext();
}

QtExecutor::QtExecutor() : m_context(m_main)
{
    // Workers mostly wait for child processes, so there may be many more of them than processors.
    m_pool.setMaxThreadCount(64);
    m_pool.setExpiryTimeout(5000);
    m_utilityPool.setMaxThreadCount(std::max(1, QThread::idealThreadCount()));
    m_utilityPool.setExpiryTimeout(5000);
}

QtExecutor::~QtExecutor()
{
    m_utilityPool.clear();
    m_utility.drop();
    // The pools' threads are through with what belongs to this object, in an order that both sides' locks make.
    m_utility.waitForDone();
    m_background.waitForDone();
    m_utilityPool.waitForDone();
    m_pool.waitForDone();
}

void QtExecutor::onMain(std::function<void()> work)
{
    m_main.put(std::move(work));
    QCoreApplication::postEvent(&m_context, new QEvent(QEvent::User));
}

void QtExecutor::inBackground(std::function<void()> work)
{
    m_background.put(std::move(work));
    m_pool.start([this] { m_background.runNext(); });
}

void QtExecutor::asUtility(std::function<void()> work)
{
    m_utility.put(std::move(work));
    m_utilityPool.start([this] {
        lowerPriority();
        m_utility.runNext();
    });
}

std::unique_ptr<SerialQueue> QtExecutor::serialQueue(const char *label)
{
    return std::make_unique<ThreadQueue>(label);
}

} // namespace quillnest
