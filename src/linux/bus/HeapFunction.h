#pragma once

#include <glib.h>

#include <memory>
#include <utility>

namespace kelo::bus {

/// Puts a function on the heap, as user data for a C callback. Its owner is then whoever calls
/// takeBack, or drop, with the same type.
template <typename Function>
gpointer give(Function function) {
    return std::make_unique<Function>(std::move(function)).release();
}

template <typename Function>
std::unique_ptr<Function> takeBack(gpointer data) {
    return std::unique_ptr<Function>(static_cast<Function*>(data));
}

/// A GDestroyNotify.
template <typename Function>
void drop(gpointer data) {
    takeBack<Function>(data);
}

} // namespace kelo::bus
