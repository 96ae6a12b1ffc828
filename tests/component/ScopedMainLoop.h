#pragma once

#include "base/async/Spawn.h"
#include "linux/gobject/GLibMainLoop.h"

#include <glib.h>

#include <functional>

namespace kelo {

/// The GLib main loop as the process's own, until the test ends.
class ScopedMainLoop {
public:
    ScopedMainLoop() = default;
    ScopedMainLoop(const ScopedMainLoop&) = delete;
    ScopedMainLoop& operator=(const ScopedMainLoop&) = delete;
    ~ScopedMainLoop() {
        dropSpawnedTasks();
        while (g_main_context_iteration(nullptr, FALSE)) {
        }
    }

    /// Runs until the condition holds; false when it did not within a minute.
    static bool runUntil(const std::function<bool()>& condition) {
        bool late = false;
        const guint deadline = g_timeout_add_seconds(
            60,
            [](gpointer flag) -> gboolean {
                *static_cast<bool*>(flag) = true;
                return G_SOURCE_CONTINUE;
            },
            &late);
        while (!condition() && !late)
            g_main_context_iteration(nullptr, TRUE);
        g_source_remove(deadline);
        return condition();
    }

private:
    gobject::GLibMainLoop loop;
    MainLoop::Installation installation{loop};
};

} // namespace kelo
