#include "linux/gobject/GLibMainLoop.h"

#include "linux/gobject/MainLoopSource.h"

#include <glib.h>

#include <utility>

namespace kelo::gobject {

namespace {

using Job = std::function<void()>;

gboolean runJob(gpointer data) {
    (*static_cast<Job*>(data))();
    return G_SOURCE_REMOVE;
}

void dropJob(gpointer data) {
    std::unique_ptr<Job>(static_cast<Job*>(data));
}

class GLibTimer final : public Timer, public std::enable_shared_from_this<GLibTimer> {
public:
    void start(std::chrono::duration<double> delay, Job action) {
        // The job owns the timer, so a timer fires even if its caller has dropped it.
        job.after(std::chrono::ceil<std::chrono::milliseconds>(delay),
                  [self = shared_from_this(), action = std::move(action)] { action(); });
    }
    void invalidate() override { job.cancel(); }

private:
    ScheduledJob job;
};

} // namespace

void GLibMainLoop::post(std::function<void()> job) {
    auto owned = std::make_unique<Job>(std::move(job));
    g_idle_add_full(G_PRIORITY_DEFAULT, runJob, owned.release(), dropJob);
}

std::shared_ptr<Timer> GLibMainLoop::scheduleTimer(std::chrono::duration<double> delay,
                                                   std::function<void()> action) {
    auto timer = std::make_shared<GLibTimer>();
    timer->start(delay, std::move(action));
    return timer;
}

} // namespace kelo::gobject
