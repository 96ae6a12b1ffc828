#pragma once

#include <glib.h>

#include <cstdio>
#include <cstdlib>

namespace kelo::fuzz {

/// From the first call on, a complaint of GLib about how it is used ends the program like a broken
/// rule. Nothing else is logged, because that would take most of the time.
inline void failOnComplaints() {
    const GLogWriterFunc write = [](GLogLevelFlags level, const GLogField* fields, gsize count,
                                    gpointer) {
        if (level & (G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_ERROR)) {
            g_log_writer_standard_streams(level, fields, count, nullptr);
            std::abort();
        }
        return G_LOG_WRITER_HANDLED;
    };
    static const bool isInstalled = [write] {
        g_log_set_writer_func(write, nullptr, nullptr);
        return true;
    }();
    static_cast<void>(isInstalled);
}

} // namespace kelo::fuzz
