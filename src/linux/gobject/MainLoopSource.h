#pragma once

#include <glib.h>

#include <chrono>
#include <functional>
#include <memory>

namespace kelo::gobject {

struct SourceDeleter {
    void operator()(GSource* source) const {
        g_source_destroy(source);
        g_source_unref(source);
    }
};

/// Owns a source of the main loop. Destroying it takes the source out of the loop; the source's own
/// callback may do so, too.
using MainLoopSource = std::unique_ptr<GSource, SourceDeleter>;

/// At most one job that the main loop runs later, once. Destroying this drops the job, and the job
/// may destroy this or schedule the next job. Main thread only.
class ScheduledJob {
public:
    ScheduledJob() = default;
    ScheduledJob(const ScheduledJob&) = delete;
    ScheduledJob& operator=(const ScheduledJob&) = delete;

    /// Runs the job when the main loop has nothing more urgent to do. Replaces a job that waits.
    void whenIdle(std::function<void()> job);
    /// Runs the job once the time has passed. Replaces a job that waits.
    void after(std::chrono::milliseconds delay, std::function<void()> job);
    /// Drops the job that waits, if there is one.
    void cancel();
    bool isWaiting() const { return source != nullptr; }

private:
    struct Waiting;

    void attach(GSource* made, std::function<void()> job);

    MainLoopSource source;
};

/// Calls a function from the main loop whenever a descriptor is readable, at its end or in error.
/// The destructor ends the watch, and the function may call it. The descriptor stays the caller's.
/// Main thread only.
class DescriptorWatch {
public:
    DescriptorWatch(int descriptor, std::function<void()> ready);

private:
    MainLoopSource source;
};

} // namespace kelo::gobject
