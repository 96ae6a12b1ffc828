#pragma once

#include "base/async/Continuation.h"
#include "base/async/Task.h"

#include <functional>
#include <type_traits>

namespace kelo {

/// Runs blocking jobs (keyring, disk) off the main thread, one after another in the order they
/// were submitted.
class Worker {
public:
    virtual ~Worker() = default;
    virtual void perform(std::function<void()> job) = 0;
};

/// Runs the function on the worker and returns to the main thread with its result or exception.
/// The function must own what it uses: the awaiting flow may be destroyed before it runs.
template <typename Function>
Task<std::invoke_result_t<Function&>> onWorker(Worker& worker, Function function) {
    using Result = std::invoke_result_t<Function&>;
    co_return co_await withCheckedContinuation<Result>(
        [&worker, &function](CheckedContinuation<Result> continuation) {
            worker.perform([continuation, function = std::move(function)]() mutable {
                try {
                    if constexpr (std::is_void_v<Result>) {
                        function();
                        continuation.resume();
                    } else {
                        continuation.resume(function());
                    }
                } catch (...) {
                    continuation.fail(std::current_exception());
                }
            });
        });
}

} // namespace kelo
