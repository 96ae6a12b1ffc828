#pragma once

#include "base/async/Spawn.h"
#include "base/async/Task.h"
#include "linux/gobject/GLibMainLoop.h"

#include <gtest/gtest.h>

#include <glib.h>

#include <chrono>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace kelo::test {

/// Installs the GLib loop as the process's main loop; the test runs it.
class TestMainLoop {
public:
    TestMainLoop() : installation(loop) {}
    ~TestMainLoop() { dropSpawnedTasks(); }

    /// Runs the loop until the condition holds; false after 30 seconds.
    bool runUntil(const std::function<bool()>& condition) {
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        // Changes by other threads wake no loop, so look again every few milliseconds.
        const guint tick = g_timeout_add(
            5, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
        bool holds = condition();
        for (; !holds && std::chrono::steady_clock::now() < limit; holds = condition())
            g_main_context_iteration(nullptr, TRUE);
        g_source_remove(tick);
        return holds;
    }

    /// Runs the loop until the task has ended, and returns its result.
    template <typename T>
    T run(Task<T> task) {
        auto outcome = std::make_shared<Outcome<T>>();
        spawn(settle<T>(std::move(task), outcome));
        if (!runUntil([&outcome] { return outcome->ended; }))
            throw std::runtime_error("the task did not end within 30 seconds");
        if (outcome->failure)
            std::rethrow_exception(outcome->failure);
        if constexpr (!std::is_void_v<T>)
            return std::move(*outcome->value);
    }

private:
    template <typename T>
    struct Outcome {
        std::optional<std::conditional_t<std::is_void_v<T>, bool, T>> value;
        std::exception_ptr failure;
        bool ended = false;
    };

    template <typename T>
    static Task<void> settle(Task<T> task, std::shared_ptr<Outcome<T>> outcome) {
        try {
            if constexpr (std::is_void_v<T>)
                co_await task;
            else
                outcome->value.emplace(co_await task);
        } catch (...) {
            outcome->failure = std::current_exception();
        }
        outcome->ended = true;
    }

    gobject::GLibMainLoop loop;
    MainLoop::Installation installation;
};

} // namespace kelo::test
