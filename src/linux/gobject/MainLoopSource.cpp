#include "linux/gobject/MainLoopSource.h"

#include <glib-unix.h>

#include <utility>

namespace kelo::gobject {

struct ScheduledJob::Waiting {
    ScheduledJob* owner;
    std::function<void()> job;
};

void ScheduledJob::whenIdle(std::function<void()> job) {
    attach(g_idle_source_new(), std::move(job));
}

void ScheduledJob::after(std::chrono::milliseconds delay, std::function<void()> job) {
    attach(g_timeout_source_new(static_cast<guint>(delay.count())), std::move(job));
}

void ScheduledJob::attach(GSource* made, std::function<void()> job) {
    const GSourceFunc run = [](gpointer data) -> gboolean {
        auto& waiting = *static_cast<Waiting*>(data);
        // First, because the job may schedule the next one, or destroy the owner.
        const MainLoopSource done = std::exchange(waiting.owner->source, nullptr);
        waiting.job();
        return G_SOURCE_REMOVE;
    };
    // GLib keeps the data until a running dispatch has returned.
    const GDestroyNotify drop = [](gpointer data) {
        std::unique_ptr<Waiting>(static_cast<Waiting*>(data));
    };
    auto waiting = std::make_unique<Waiting>(Waiting{this, std::move(job)});
    g_source_set_callback(made, run, waiting.release(), drop);
    g_source_attach(made, nullptr);
    source.reset(made);
}

// A job may own the last share of the object that this is part of. Nothing of this is used after
// the job is dropped.
void ScheduledJob::cancel() {
    const MainLoopSource dropped = std::exchange(source, nullptr);
}

DescriptorWatch::DescriptorWatch(int descriptor, std::function<void()> ready)
    : source(g_unix_fd_source_new(descriptor,
                                  static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR))) {
    using Ready = std::function<void()>;
    const GUnixFDSourceFunc dispatch = [](gint, GIOCondition, gpointer data) -> gboolean {
        (*static_cast<Ready*>(data))();
        return G_SOURCE_CONTINUE;
    };
    // GLib keeps the data until a running dispatch has returned.
    const GDestroyNotify drop = [](gpointer data) {
        std::unique_ptr<Ready>(static_cast<Ready*>(data));
    };
    g_source_set_callback(source.get(), G_SOURCE_FUNC(dispatch),
                          std::make_unique<Ready>(std::move(ready)).release(), drop);
    g_source_attach(source.get(), nullptr);
}

} // namespace kelo::gobject
