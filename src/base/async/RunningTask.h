#pragma once

#include "base/async/Task.h"

#include <coroutine>
#include <exception>
#include <utility>

namespace kelo {

/// A task that starts when this object is constructed and is destroyed with it, wherever it is
/// suspended. The object must not be destroyed while the task is executing, and the task must not
/// throw.
class RunningTask {
public:
    /// Without a task, until one is assigned.
    RunningTask() noexcept = default;
    explicit RunningTask(Task<void> task) : RunningTask(run(std::move(task))) {}
    RunningTask(RunningTask&& other) noexcept : handle(std::exchange(other.handle, nullptr)) {}
    RunningTask& operator=(RunningTask&& other) noexcept {
        std::swap(handle, other.handle);
        return *this;
    }
    RunningTask(const RunningTask&) = delete;
    RunningTask& operator=(const RunningTask&) = delete;
    ~RunningTask() {
        if (handle)
            handle.destroy();
    }

    struct promise_type {
        RunningTask get_return_object() noexcept {
            return RunningTask(std::coroutine_handle<promise_type>::from_promise(*this));
        }
        std::suspend_never initial_suspend() const noexcept { return {}; }
        std::suspend_always final_suspend() const noexcept { return {}; }
        void return_void() const noexcept {}
        [[noreturn]] void unhandled_exception() const noexcept { std::terminate(); }
    };

private:
    explicit RunningTask(std::coroutine_handle<promise_type> handle) noexcept : handle(handle) {}

    static RunningTask run(Task<void> task) { co_await task; }

    std::coroutine_handle<promise_type> handle = nullptr;
};

} // namespace kelo
