#pragma once

#include "base/async/MainLoop.h"
#include "linux/gobject/GLibMainLoop.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace kelo::test {

/// The GLib loop, with timers that the test fires. It fires the last one alone.
class ManualTimers final : public MainLoop {
public:
    void post(std::function<void()> job) override { loop.post(std::move(job)); }
    std::shared_ptr<Timer> scheduleTimer(std::chrono::duration<double> delay,
                                         std::function<void()> action) override {
        ++scheduled;
        delays.push_back(delay);
        pending = std::make_shared<ManualTimer>(std::move(action));
        all.push_back(pending);
        return pending;
    }

    bool isPending() const { return pending && pending->action; }
    /// Whether any timer runs, not only the last one.
    bool anyPending() const {
        return std::ranges::any_of(all, [](const auto& timer) { return bool(timer->action); });
    }
    void fire() { std::exchange(pending->action, nullptr)(); }

    int scheduled = 0;
    std::vector<std::chrono::duration<double>> delays;

private:
    struct ManualTimer final : Timer {
        explicit ManualTimer(std::function<void()> action) : action(std::move(action)) {}
        void invalidate() override { action = nullptr; }
        std::function<void()> action;
    };

    gobject::GLibMainLoop loop;
    std::shared_ptr<ManualTimer> pending;
    std::vector<std::shared_ptr<ManualTimer>> all;
};

} // namespace kelo::test
