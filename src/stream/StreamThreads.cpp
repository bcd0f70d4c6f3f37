#include "stream/StreamThreads.h"

#include <condition_variable>
#include <list>
#include <mutex>
#include <thread>
#include <utility>

namespace quillnest
{

struct StreamThreads::State {
    struct Entry {
        std::thread thread;
        bool hasEnded = false;
    };

    /// Takes out the threads that have nothing left to do but to end.
    std::list<Entry> takeEnded()
    {
        std::list<Entry> ended;
        for (auto entry = entries.begin(); entry != entries.end();) {
            const auto next = std::next(entry);
            if (entry->hasEnded)
                ended.splice(ended.end(), entries, entry);
            entry = next;
        }
        return ended;
    }

    std::mutex lock;
    std::condition_variable changed;
    std::list<Entry> entries;
};

StreamThreads::StreamThreads() : m_state(std::make_shared<State>()) { }

StreamThreads::~StreamThreads()
{
    const std::scoped_lock guard(m_state->lock);
    for (auto &entry : m_state->entries)
        entry.thread.detach();
}

void StreamThreads::run(std::function<void()> work)
{
    std::list<State::Entry> ended;
    {
        const std::scoped_lock guard(m_state->lock);
        ended = m_state->takeEnded();
        std::list<State::Entry> made(1);
        // The entry can't be looked at by the new thread before the lock is free.
        made.front().thread = std::thread([state = m_state, &entry = made.front(), work = std::move(work)]() mutable {
            work();
            work = nullptr;
            const std::scoped_lock inner(state->lock);
            entry.hasEnded = true;
            state->changed.notify_all();
        });
        // A thread that couldn't be made leaves nothing behind.
        m_state->entries.splice(m_state->entries.end(), made);
    }
    for (auto &entry : ended)
        entry.thread.join();
}

bool StreamThreads::waitForEnd(std::chrono::milliseconds limit)
{
    std::list<State::Entry> ended;
    bool all = false;
    {
        std::unique_lock guard(m_state->lock);
        all = m_state->changed.wait_for(guard, limit, [this] {
            for (const auto &entry : m_state->entries) {
                if (!entry.hasEnded)
                    return false;
            }
            return true;
        });
        ended = m_state->takeEnded();
    }
    for (auto &entry : ended)
        entry.thread.join();
    return all;
}

} // namespace quillnest
