#pragma once

#include "base/Invariant.h"
#include "base/async/MainLoop.h"

#include <atomic>
#include <coroutine>
#include <exception>
#include <memory>
#include <optional>
#include <utility>
#include <variant>

namespace kelo {

namespace detail {

template <typename T>
struct ContinuationState {
    using Value = std::conditional_t<std::is_void_v<T>, std::monostate, T>;
    std::coroutine_handle<> waiter; ///< main thread only; null once resumed or destroyed
    std::optional<Value> value;
    std::exception_ptr failure;
    std::atomic<bool> resumed = false;
};

} // namespace detail

/// Resumes, once, a flow that is suspended in withCheckedContinuation(). Copies refer to the same
/// flow. May be resumed from any thread; the flow continues in a later turn of the main loop, never
/// inside the call. Resuming twice is a bug and aborts the process. A flow whose continuation is
/// destroyed without resuming stays suspended.
template <typename T>
class CheckedContinuation {
public:
    using State = detail::ContinuationState<T>;
    using Value = typename State::Value;

    explicit CheckedContinuation(std::shared_ptr<State> state) : state(std::move(state)) {}

    void resume(Value value = {}) const {
        claim();
        state->value.emplace(std::move(value));
        goOn();
    }

    void fail(std::exception_ptr error) const {
        claim();
        state->failure = std::move(error);
        goOn();
    }

private:
    void claim() const {
        if (state->resumed.exchange(true))
            invariantBroken("a continuation is resumed once");
    }
    void goOn() const {
        MainLoop::main().post([state = state] {
            if (const auto waiter = std::exchange(state->waiter, nullptr))
                waiter.resume();
        });
    }

    std::shared_ptr<State> state;
};

template <typename T, typename Body>
class [[nodiscard]] ContinuationAwaiter {
public:
    explicit ContinuationAwaiter(Body body) : body(std::move(body)) {}
    ContinuationAwaiter(const ContinuationAwaiter&) = delete;
    ContinuationAwaiter& operator=(const ContinuationAwaiter&) = delete;
    ~ContinuationAwaiter() { state->waiter = nullptr; }

    bool await_ready() const noexcept { return false; }
    void await_suspend(std::coroutine_handle<> waiter) {
        state->waiter = waiter;
        body(CheckedContinuation<T>(state));
    }
    T await_resume() {
        if (state->failure)
            std::rethrow_exception(state->failure);
        if constexpr (!std::is_void_v<T>)
            return std::move(*state->value);
    }

private:
    std::shared_ptr<detail::ContinuationState<T>> state =
        std::make_shared<detail::ContinuationState<T>>();
    Body body;
};

/// Awaiting this suspends the flow and runs body(continuation) immediately. The continuation later
/// resumes the flow with a value or a failure. An exception thrown by body propagates to the flow.
/// Main thread only.
template <typename T, typename Body>
ContinuationAwaiter<T, Body> withCheckedContinuation(Body body) {
    return ContinuationAwaiter<T, Body>(std::move(body));
}

} // namespace kelo
