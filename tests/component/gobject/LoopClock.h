#pragma once

#include "component/http/TestMainLoop.h"

#include <glib.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <vector>

namespace kelo::test {

/// The clock by which the loop decides which timers are due.
inline std::chrono::microseconds loopTime() {
    return std::chrono::microseconds(g_get_monotonic_time());
}

/// How long the loop would sleep now without any event, in milliseconds, rounded up; negative for
/// without end.
inline std::chrono::milliseconds plannedSleep() {
    GMainContext* const context = g_main_context_default();
    int sleep = -1;
    if (!g_main_context_acquire(context))
        return std::chrono::milliseconds(sleep);
    int priority = 0;
    if (g_main_context_prepare(context, &priority))
        sleep = 0;
    else {
        std::vector<GPollFD> descriptors(16);
        g_main_context_query(context, priority, &sleep, descriptors.data(),
                             static_cast<int>(descriptors.size()));
    }
    g_main_context_release(context);
    return std::chrono::milliseconds(sleep);
}

/// Turns the loop until a timer of GLib's own goes off; false when it never does. The loop deals
/// with timers that are due at once in the order in which they were set, so that those set before
/// and due by then have fired, too.
inline bool passOn(TestMainLoop& loop, std::chrono::milliseconds span) {
    bool passed = false;
    const GSourceFunc note = [](gpointer flag) -> gboolean {
        *static_cast<bool*>(flag) = true;
        return G_SOURCE_REMOVE;
    };
    g_timeout_add(static_cast<guint>(span.count()), note, &passed);
    return loop.runUntil([&] { return passed; });
}

} // namespace kelo::test
