#pragma once

#include <coroutine>
#include <exception>
#include <optional>
#include <utility>

namespace kelo {

template <typename T>
class Task;

namespace detail {

/// What the promises of all tasks share: the awaiting coroutine and the failure.
class TaskPromiseBase {
public:
    std::suspend_always initial_suspend() const noexcept { return {}; }

    struct FinalAwaiter {
        bool await_ready() const noexcept { return false; }
        template <typename Promise>
        std::coroutine_handle<> await_suspend(std::coroutine_handle<Promise> self) const noexcept {
            return self.promise().waiter;
        }
        void await_resume() const noexcept {}
    };
    FinalAwaiter final_suspend() const noexcept { return {}; }

    void unhandled_exception() noexcept { failure = std::current_exception(); }

    std::coroutine_handle<> waiter = std::noop_coroutine();
    std::exception_ptr failure;
};

template <typename T>
class TaskPromise : public TaskPromiseBase {
public:
    Task<T> get_return_object() noexcept;
    template <typename U>
    void return_value(U&& result) {
        value.emplace(std::forward<U>(result));
    }
    T take() {
        if (failure)
            std::rethrow_exception(failure);
        return std::move(*value);
    }

private:
    std::optional<T> value;
};

template <>
class TaskPromise<void> : public TaskPromiseBase {
public:
    Task<void> get_return_object() noexcept;
    void return_void() const noexcept {}
    void take() const {
        if (failure)
            std::rethrow_exception(failure);
    }
};

} // namespace detail

/// A lazy asynchronous operation: it does nothing until it is awaited, runs on the main thread, and
/// passes its result or exception to the awaiting coroutine. It is awaited at most once.
///
/// Destroying a task destroys everything it has suspended. Write coroutines as functions that take
/// their parameters by value. A lambda coroutine must not capture: captures die before it ends.
template <typename T = void>
class [[nodiscard]] Task {
public:
    using promise_type = detail::TaskPromise<T>;

    explicit Task(std::coroutine_handle<promise_type> handle) noexcept : handle(handle) {}
    Task(Task&& other) noexcept : handle(std::exchange(other.handle, nullptr)) {}
    Task& operator=(Task&& other) noexcept {
        std::swap(handle, other.handle);
        return *this;
    }
    Task(const Task&) = delete;
    Task& operator=(const Task&) = delete;
    ~Task() {
        if (handle)
            handle.destroy();
    }

    struct Awaiter {
        std::coroutine_handle<promise_type> handle;
        bool await_ready() const noexcept { return false; }
        std::coroutine_handle<> await_suspend(std::coroutine_handle<> waiter) const noexcept {
            handle.promise().waiter = waiter;
            return handle;
        }
        T await_resume() const { return handle.promise().take(); }
    };
    Awaiter operator co_await() const noexcept { return {handle}; }

private:
    std::coroutine_handle<promise_type> handle;
};

namespace detail {

template <typename T>
Task<T> TaskPromise<T>::get_return_object() noexcept {
    return Task<T>(std::coroutine_handle<TaskPromise<T>>::from_promise(*this));
}

inline Task<void> TaskPromise<void>::get_return_object() noexcept {
    return Task<void>(std::coroutine_handle<TaskPromise<void>>::from_promise(*this));
}

} // namespace detail

} // namespace kelo
