#pragma once

#include "platform/Clock.h"
#include "platform/Executor.h"

#include <QCoroTask>

#include <coroutine>
#include <exception>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

namespace quillnest
{

/// The one asynchronous result. A coroutine that returns it starts at once and runs on the main thread; every step
/// after a `co_await` must look its subject up again, because the world moved on meanwhile.
template <typename T = void> using Task = QCoro::Task<T>;

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
