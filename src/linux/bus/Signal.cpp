#include "linux/bus/Signal.h"

#include "linux/bus/HeapFunction.h"

#include <utility>

namespace kelo::bus {

Signal::Signal(Connection bus, const Object& object, const char* signal, Heard heard)
    : connection(std::move(bus)) {
    const GDBusSignalCallback arrived =
        [](GDBusConnection*, const gchar*, const gchar* path, const gchar*, const gchar*,
           GVariant* values, gpointer data) { (*static_cast<Heard*>(data))(path, values); };
    // GLib keeps the data until a running callback has returned.
    subscription = g_dbus_connection_signal_subscribe(
        connection.get(), object.owner.c_str(), object.interface.c_str(), signal,
        object.path.empty() ? nullptr : object.path.c_str(), nullptr, G_DBUS_SIGNAL_FLAGS_NONE,
        arrived, give(std::move(heard)), drop<Heard>);
}

Signal::~Signal() {
    g_dbus_connection_signal_unsubscribe(connection.get(), subscription);
}

} // namespace kelo::bus
