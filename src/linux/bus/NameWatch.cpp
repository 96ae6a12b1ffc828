#include "linux/bus/NameWatch.h"

#include "linux/bus/HeapFunction.h"

#include <utility>

namespace kelo::bus {

/// Callbacks that run share it, so that they may destroy the watch.
struct NameWatch::State {
    Changed changed;
    Connection connection;
    guint watch = 0;
};

NameWatch::NameWatch(SharedConnection& bus, std::string name, Starting starting, Changed changed)
    : state(std::make_shared<State>(State{std::move(changed), {}, 0})) {
    const GBusNameWatcherFlags flags = starting == Starting::ifNeeded
                                           ? G_BUS_NAME_WATCHER_FLAGS_AUTO_START
                                           : G_BUS_NAME_WATCHER_FLAGS_NONE;
    bus.whenOpen(
        [weak = std::weak_ptr(state), name = std::move(name), flags](const Connection& connection) {
            const auto state = weak.lock();
            if (!state)
                return;
            if (!connection)
                return state->changed(connection, "");
            using Shared = std::shared_ptr<State>;
            const GBusNameAppearedCallback appeared = [](GDBusConnection*, const gchar*,
                                                         const gchar* owner, gpointer data) {
                const Shared& state = *static_cast<Shared*>(data);
                state->changed(state->connection, owner);
            };
            const GBusNameVanishedCallback vanished = [](GDBusConnection*, const gchar*,
                                                         gpointer data) {
                const Shared& state = *static_cast<Shared*>(data);
                state->changed(state->connection, "");
            };
            state->connection = connection;
            // GLib keeps the data until a running callback has returned.
            state->watch =
                g_bus_watch_name_on_connection(connection.get(), name.c_str(), flags, appeared,
                                               vanished, give<Shared>(state), drop<Shared>);
        });
}

NameWatch::~NameWatch() {
    if (state->watch)
        g_bus_unwatch_name(state->watch);
}

} // namespace kelo::bus
