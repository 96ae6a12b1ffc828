#pragma once

#include <glib.h>

#include <memory>

namespace kelo::input {

struct SourceDeleter {
    void operator()(GSource* source) const {
        g_source_destroy(source);
        g_source_unref(source);
    }
};

/// Owns a source of the main loop. Destroying it takes the source out of the loop; the source's own
/// callback may do so, too.
using MainLoopSource = std::unique_ptr<GSource, SourceDeleter>;

} // namespace kelo::input
