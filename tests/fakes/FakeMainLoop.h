#pragma once

#include "base/async/MainLoop.h"

#include <algorithm>
#include <deque>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace kelo::fakes {

/// A main loop that runs only when told to, with a clock of its own.
class FakeMainLoop final : public MainLoop {
public:
    void post(std::function<void()> job) override {
        const std::lock_guard lock(mutex);
        jobs.push_back(std::move(job));
    }

    std::shared_ptr<Timer> scheduleTimer(std::chrono::duration<double> delay,
                                         std::function<void()> action) override {
        auto timer = std::make_shared<FakeTimer>();
        timer->deadline = now + delay;
        timer->action = std::move(action);
        timers.push_back(timer);
        return timer;
    }

    /// Runs posted jobs, and those they post, until none is left.
    void runUntilIdle() {
        while (auto job = next())
            job();
    }

    /// Lets time pass: timers that come due fire in their order, each followed by the jobs it
    /// posts.
    void advance(std::chrono::duration<double> span) {
        const auto end = now + span;
        while (auto due = nextDue(end)) {
            now = due->deadline;
            std::exchange(due->action, nullptr)();
            runUntilIdle();
        }
        now = end;
    }

    /// Timers that have neither fired nor been invalidated.
    std::size_t pendingTimers() const {
        return static_cast<std::size_t>(
            std::count_if(timers.begin(), timers.end(),
                          [](const auto& timer) { return timer->action != nullptr; }));
    }

private:
    struct FakeTimer final : Timer {
        void invalidate() override { action = nullptr; }
        std::chrono::duration<double> deadline{};
        std::function<void()> action;
    };

    std::function<void()> next() {
        const std::lock_guard lock(mutex);
        if (jobs.empty())
            return nullptr;
        auto job = std::move(jobs.front());
        jobs.pop_front();
        return job;
    }

    std::shared_ptr<FakeTimer> nextDue(std::chrono::duration<double> end) const {
        std::shared_ptr<FakeTimer> first;
        for (const auto& timer : timers)
            if (timer->action && timer->deadline <= end &&
                (!first || timer->deadline < first->deadline))
                first = timer;
        return first;
    }

    std::mutex mutex;
    std::deque<std::function<void()>> jobs;
    std::vector<std::shared_ptr<FakeTimer>> timers;
    std::chrono::duration<double> now{};
};

} // namespace kelo::fakes
