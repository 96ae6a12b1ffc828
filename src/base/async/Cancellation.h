#pragma once

#include "base/async/Continuation.h"
#include "base/async/RunningTask.h"
#include "base/async/Task.h"

#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace kelo {

/// A cancellation token. Copies share one state. Main thread only.
class Cancellation {
public:
    /// May be called at any time and any number of times; only the first call counts.
    void cancel() const {
        if (std::exchange(state->cancelled, true))
            return;
        if (const auto action = std::exchange(state->action, nullptr))
            action();
    }
    bool cancelled() const { return state->cancelled; }
    /// Sets the callback that cancel() runs once; it replaces the previous one, null for none.
    /// Must not be set after cancellation.
    void whenCancelled(std::function<void()> action) const { state->action = std::move(action); }

private:
    struct State {
        bool cancelled = false;
        std::function<void()> action;
    };
    std::shared_ptr<State> state = std::make_shared<State>();
};

namespace detail {

/// Shared by the two ways to finish: only the first one resumes the waiting flow.
template <typename T>
struct Race {
    std::optional<CheckedContinuation<std::optional<T>>> waiting;

    std::optional<CheckedContinuation<std::optional<T>>> claim() {
        return std::exchange(waiting, std::nullopt);
    }
};

template <typename T>
Task<void> runInto(std::shared_ptr<Race<T>> race, Task<T> task) {
    std::optional<T> result;
    std::exception_ptr failure;
    try {
        result = co_await task;
    } catch (...) {
        failure = std::current_exception();
    }
    const auto waiting = race->claim();
    if (!waiting)
        co_return;
    if (failure)
        waiting->fail(failure);
    else
        waiting->resume(std::move(result));
}

} // namespace detail

/// The result of the task, or empty if it was cancelled first. A cancelled task is destroyed, with
/// everything it has suspended, in a later turn of the main loop.
template <typename T>
Task<std::optional<T>> untilCancelled(Cancellation cancellation, Task<T> task) {
    if (cancellation.cancelled())
        co_return std::nullopt;
    const auto race = std::make_shared<detail::Race<T>>();
    cancellation.whenCancelled([race] {
        if (const auto waiting = race->claim())
            waiting->resume(std::nullopt);
    });
    RunningTask running;
    auto start = [&](CheckedContinuation<std::optional<T>> continuation) {
        race->waiting = std::move(continuation);
        running = RunningTask(detail::runInto(race, std::move(task)));
    };
    std::optional<T> result = co_await withCheckedContinuation<std::optional<T>>(std::move(start));
    cancellation.whenCancelled(nullptr);
    co_return result;
}

} // namespace kelo
