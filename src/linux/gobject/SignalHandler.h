#pragma once

#include "linux/gobject/GObjectPointer.h"

#include <glib-object.h>

#include <memory>
#include <utility>

namespace kelo::gobject {

/// A signal connection; destroying it disconnects the handler. Keeps the object that emits the
/// signal alive.
class SignalConnection {
public:
    SignalConnection() = default;
    SignalConnection(gpointer instance, gulong handler)
        : instance(GObjectPointer<GObject>::share(static_cast<GObject*>(instance))),
          handler(handler) {}
    SignalConnection(SignalConnection&& other) noexcept
        : instance(std::exchange(other.instance, {})), handler(other.handler) {}
    SignalConnection& operator=(SignalConnection other) noexcept {
        std::swap(instance, other.instance);
        std::swap(handler, other.handler);
        return *this;
    }
    ~SignalConnection() {
        if (instance)
            g_signal_handler_disconnect(instance.get(), handler);
    }

private:
    GObjectPointer<GObject> instance;
    gulong handler = 0;
};

/// Connects a signal to a plain function whose last argument is the given pointer, which must
/// outlive the connection.
template <typename State, typename Function>
SignalConnection connectSignal(gpointer instance, const char* signal, Function* handler,
                               State* state) {
    return {instance, g_signal_connect_data(instance, signal, reinterpret_cast<GCallback>(handler),
                                            state, nullptr, static_cast<GConnectFlags>(0))};
}

/// Connects a signal to a plain function whose last argument is a std::shared_ptr<State>*. The
/// connection owns a share of the state, so the state outlives the last signal.
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
