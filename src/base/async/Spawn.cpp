#include "base/async/Spawn.h"

#include "base/async/MainLoop.h"

#include <cstdint>
#include <map>

namespace kelo {

namespace {

/// The outermost frame of a spawned task. It stays registered until it ends, so that a flow that is
/// never resumed can still be found and destroyed.
class Root {
public:
    struct promise_type {
        Root get_return_object() noexcept {
            return Root(std::coroutine_handle<promise_type>::from_promise(*this));
        }
        std::suspend_always initial_suspend() const noexcept { return {}; }
        std::suspend_never final_suspend() const noexcept { return {}; }
        void return_void() const noexcept {}
        [[noreturn]] void unhandled_exception() const noexcept { std::terminate(); }
    };

    explicit Root(std::coroutine_handle<promise_type> handle) noexcept : handle(handle) {}
    std::coroutine_handle<promise_type> handle;
};

std::map<std::uint64_t, std::coroutine_handle<>>& running() {
    static std::map<std::uint64_t, std::coroutine_handle<>> tasks;
    return tasks;
}

Root runToEnd(std::uint64_t number, Task<void> task) {
    co_await task;
    running().erase(number);
}

} // namespace

void spawn(Task<void> task) {
    static std::uint64_t next = 0;
    const std::uint64_t number = next++;
    running().emplace(number, runToEnd(number, std::move(task)).handle);
    MainLoop::main().post([number] {
        const auto found = running().find(number);
        if (found != running().end())
            found->second.resume();
    });
}

std::size_t spawnedTaskCount() {
    return running().size();
}

void dropSpawnedTasks() {
    // Destroying a frame may start or end other tasks, so destroy one at a time.
    while (!running().empty()) {
        const auto first = running().extract(running().begin());
        first.mapped().destroy();
    }
}

} // namespace kelo
