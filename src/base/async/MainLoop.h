#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace kelo {

/// A pending one-shot timer. Destroying the handle does not cancel it: call invalidate().
class Timer {
public:
    virtual ~Timer() = default;
    /// Cancels the timer if it has not fired; harmless afterwards. Main thread only.
    virtual void invalidate() = 0;
};

/// The main thread's event loop. Everything of the system runs in it.
class MainLoop {
public:
    virtual ~MainLoop() = default;

    /// Runs the job on the main thread in a later turn of the loop, in the order posted. May be
    /// called from any thread.
    virtual void post(std::function<void()> job) = 0;

    /// Runs the action once on the main thread after the delay. Main thread only.
    virtual std::shared_ptr<Timer> scheduleTimer(std::chrono::duration<double> delay,
                                                 std::function<void()> action) = 0;

    /// The loop of this process. There must be one installed.
    static MainLoop& main();

    /// Installs a main loop for the lifetime of this object; the loop must outlive it.
    class Installation {
    public:
        explicit Installation(MainLoop& loop);
        ~Installation();
        Installation(const Installation&) = delete;
        Installation& operator=(const Installation&) = delete;

    private:
        MainLoop* previous;
    };
};

} // namespace kelo
