#pragma once

#include "linux/gobject/GObjectPointer.h"

#include <glib-object.h>

#include <memory>

namespace kelo::gobject {

/// Connects a signal to a plain function whose last argument is a std::shared_ptr<State>*. The
/// connection owns its share of the state, so that a signal that comes late never finds it gone.
template <typename State, typename Function>
gulong connectWithState(gpointer instance, const char* signal, Function* handler,
                        std::shared_ptr<State> state) {
    auto owned = std::make_unique<std::shared_ptr<State>>(std::move(state));
    const GClosureNotify drop = [](gpointer data, GClosure*) {
        std::unique_ptr<std::shared_ptr<State>>(static_cast<std::shared_ptr<State>*>(data));
    };
    return g_signal_connect_data(instance, signal, reinterpret_cast<GCallback>(handler),
                                 owned.release(), drop, static_cast<GConnectFlags>(0));
}

} // namespace kelo::gobject
