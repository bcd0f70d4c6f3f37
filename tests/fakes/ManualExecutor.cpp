#include "fakes/ManualExecutor.h"

namespace quillnest
{

namespace
{
class ManualQueue : public SerialQueue
{
public:
    explicit ManualQueue(ManualExecutor &executor) : m_executor(executor) { }
    void post(std::function<void()> work) override
    {
        m_executor.inBackground([alive = std::weak_ptr(m_alive), work = std::move(work)] {
            if (!alive.expired())
                work();
        });
    }

private:
    ManualExecutor &m_executor;
    std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
};
} // namespace

void ManualExecutor::onMain(std::function<void()> work)
{
    const std::scoped_lock guard(m_lock);
    m_main.push_back(std::move(work));
}

void ManualExecutor::inBackground(std::function<void()> work)
{
    const std::scoped_lock guard(m_lock);
    m_background.push_back(std::move(work));
}

void ManualExecutor::asUtility(std::function<void()> work)
{
    const std::scoped_lock guard(m_lock);
    m_utility.push_back(std::move(work));
}

std::unique_ptr<SerialQueue> ManualExecutor::serialQueue(const char *)
{
    return std::make_unique<ManualQueue>(*this);
}

std::function<void()> ManualExecutor::take(std::deque<std::function<void()>> &queue)
{
    const std::scoped_lock guard(m_lock);
    if (queue.empty())
        return {};
    auto work = std::move(queue.front());
    queue.pop_front();
    return work;
}

bool ManualExecutor::runOneInBackground()
{
    const auto work = take(m_background);
    if (!work)
        return false;
    work();
    return true;
}

bool ManualExecutor::runOneAsUtility()
{
    const auto work = take(m_utility);
    if (!work)
        return false;
    work();
    return true;
}

std::size_t ManualExecutor::drainMain()
{
    std::size_t count = 0;
    while (const auto work = take(m_main)) {
        work();
        ++count;
    }
    return count;
}

std::size_t ManualExecutor::drain()
{
    std::size_t total = 0;
    for (;;) {
        const auto main = drainMain();
        const bool other = runOneInBackground() || runOneAsUtility();
        if (main == 0 && !other)
            return total;
        total += main + (other ? 1 : 0);
    }
}

std::size_t ManualExecutor::pendingInBackground() const
{
    const std::scoped_lock guard(m_lock);
    return m_background.size();
}

std::size_t ManualExecutor::pendingAsUtility() const
{
    const std::scoped_lock guard(m_lock);
    return m_utility.size();
}

} // namespace quillnest
