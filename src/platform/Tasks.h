#pragma once

#include "platform/Clock.h"
#include "platform/Executor.h"

#include <QCoroTask>

#include <coroutine>
#include <exception>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace quillnest
{

/// The one asynchronous result. A coroutine that returns it starts at once and runs on the main thread; every step
/// after a `co_await` must look its subject up again, because the world moved on meanwhile.
template <typename T = void> using Task = QCoro::Task<T>;

/// Something that ends once, well or with an error, and whoever waits for it. Copies share it, so the side that ends it
/// and those that wait need not know when the other goes. Main thread.
///
/// `co_await` gives the value, which with several waiters is copied, or throws the error; after the end it doesn't
/// wait.
template <typename T = void> class Completion
{
    using Stored = std::conditional_t<std::is_void_v<T>, std::monostate, T>;

public:
    /// The first end counts, later ones do nothing. Who waits goes on within the call, in the order of coming.
    void finish(Stored value = {}) const
    {
        if (m_state->hasEnded)
            return;
        m_state->value.emplace(std::move(value));
        end();
    }
    void fail(const std::exception_ptr &error) const
    {
        if (m_state->hasEnded)
            return;
        m_state->error = error;
        end();
    }
    bool hasEnded() const { return m_state->hasEnded; }

    bool await_ready() const noexcept { return m_state->hasEnded; }
    void await_suspend(std::coroutine_handle<> coroutine) const { m_state->waiters.push_back(coroutine); }
    T await_resume() const
    {
        if (m_state->error)
            std::rethrow_exception(m_state->error);
        if constexpr (!std::is_void_v<T>)
            return *m_state->value;
    }

private:
    struct State {
        bool hasEnded = false;
        std::optional<Stored> value;
        std::exception_ptr error;
        std::vector<std::coroutine_handle<>> waiters;
    };

    void end() const
    {
        // This object may go with whoever is resumed first.
        const auto state = m_state;
        state->hasEnded = true;
        for (const auto waiter : std::exchange(state->waiters, {}))
            waiter.resume();
    }

    std::shared_ptr<State> m_state = std::make_shared<State>();
};

/// One that nobody has to wait for.
inline Completion<> endedCompletion()
{
    Completion<> completion;
    completion.finish();
    return completion;
}

/// Waits on `clock`; resumes on the main thread.
class SleepFor
{
public:
    SleepFor(Clock &clock, Clock::Duration duration) : m_clock(clock), m_duration(duration) { }

    bool await_ready() const noexcept { return false; }
    void await_suspend(std::coroutine_handle<> coroutine)
    {
        m_clock.later(m_duration, [coroutine] { coroutine.resume(); });
    }
    void await_resume() const noexcept { }

private:
    Clock &m_clock;
    Clock::Duration m_duration;
};

inline SleepFor sleepFor(Clock &clock, Clock::Duration duration)
{
    return SleepFor(clock, duration);
}

/// Goes on in the next turn of the main thread's event loop, behind what waits there.
class NextTurn
{
public:
    explicit NextTurn(Executor &executor) : m_executor(executor) { }

    bool await_ready() const noexcept { return false; }
    void await_suspend(std::coroutine_handle<> coroutine)
    {
        m_executor.onMain([coroutine] { coroutine.resume(); });
    }
    void await_resume() const noexcept { }

private:
    Executor &m_executor;
};

inline NextTurn nextTurn(Executor &executor)
{
    return NextTurn(executor);
}

/// Runs `work` on the background pool and resumes on the main thread with its value, or with what it threw.
template <typename Work> class Background
{
public:
    using Result = std::invoke_result_t<Work>;

    Background(Executor &executor, Work work)
        : m_executor(executor), m_state(std::make_shared<State>(State{std::move(work), {}, nullptr}))
    {
    }

    bool await_ready() const noexcept { return false; }
    void await_suspend(std::coroutine_handle<> coroutine)
    {
        // The state is shared with the pool so that neither side depends on the other's frame.
        auto &executor = m_executor;
        executor.inBackground([&executor, state = m_state, coroutine] {
            try {
                if constexpr (std::is_void_v<Result>)
                    state->work();
                else
                    state->value.emplace(state->work());
            } catch (...) {
                state->error = std::current_exception();
            }
            executor.onMain([coroutine] { coroutine.resume(); });
        });
    }
    Result await_resume()
    {
        if (m_state->error)
            std::rethrow_exception(m_state->error);
        if constexpr (!std::is_void_v<Result>)
            return std::move(*m_state->value);
    }

private:
    using Stored = std::conditional_t<std::is_void_v<Result>, std::monostate, Result>;
    struct State {
        Work work;
        std::optional<Stored> value;
        std::exception_ptr error;
    };

    Executor &m_executor;
    std::shared_ptr<State> m_state;
};

/// `auto value = co_await background(executor, [=] { return blockingCall(); });` The closure must own what it uses.
template <typename Work> Background<Work> background(Executor &executor, Work work)
{
    return Background<Work>(executor, std::move(work));
}

} // namespace quillnest
