#include "linux/gobject/GLibMainLoop.h"

#include <glib.h>

#include <cmath>
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
        // The source owns the timer, so a timer fires even if its caller has dropped it.
        auto fire = std::make_unique<Job>([self = shared_from_this(), action = std::move(action)] {
            self->source = 0;
            action();
        });
        const auto milliseconds = static_cast<guint>(std::ceil(delay.count() * 1000));
        source =
            g_timeout_add_full(G_PRIORITY_DEFAULT, milliseconds, runJob, fire.release(), dropJob);
    }
    void invalidate() override {
        if (const guint pending = std::exchange(source, 0))
            g_source_remove(pending);
    }

private:
    guint source = 0;
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
