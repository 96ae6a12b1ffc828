#include "linux/bus/Connection.h"

#include "base/async/MainLoop.h"
#include "linux/bus/HeapFunction.h"

#include <utility>

namespace kelo::bus {

namespace {

constexpr auto connectionFlags = static_cast<GDBusConnectionFlags>(
    G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);

/// The connection, or null and a line in the log.
Connection orNull(GDBusConnection* made, GError* error) {
    if (const gobject::GErrorPointer failure(error); failure)
        g_debug("bus: a bus cannot be reached: %s", failure->message);
    return Connection::adopt(made);
}

} // namespace

std::string sessionAddress() {
    // GLib's own lookup could start a new bus, to which no desktop is connected.
    if (const char* const address = g_getenv("DBUS_SESSION_BUS_ADDRESS"); address && *address)
        return address;
    const gobject::GText path(g_build_filename(g_get_user_runtime_dir(), "bus", nullptr));
    if (!g_file_test(path.get(), G_FILE_TEST_EXISTS))
        return "";
    const gobject::GText escaped(g_dbus_address_escape_value(path.get()));
    return std::string("unix:path=") + escaped.get();
}

std::string systemAddress() {
    const gobject::GText address(
        g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr));
    return address ? address.get() : "";
}

Connection openConnection(const std::string& address) {
    GError* error = nullptr;
    GDBusConnection* const made = g_dbus_connection_new_for_address_sync(
        address.c_str(), connectionFlags, nullptr, nullptr, &error);
    return orNull(made, error);
}

SharedConnection::SharedConnection(std::string address) : address(std::move(address)) {}

void SharedConnection::whenOpen(Opened opened) {
    waiting.push_back(std::move(opened));
    if (isFinished)
        MainLoop::main().post([self = shared_from_this()] { self->finish(self->connection); });
    else if (!std::exchange(isOpening, true))
        open();
}

void SharedConnection::open() {
    using Self = std::shared_ptr<SharedConnection>;
    const GAsyncReadyCallback opened = [](GObject*, GAsyncResult* result, gpointer data) {
        const auto self = takeBack<Self>(data);
        GError* error = nullptr;
        GDBusConnection* const made = g_dbus_connection_new_for_address_finish(result, &error);
        (*self)->finish(orNull(made, error));
    };
    g_dbus_connection_new_for_address(address.c_str(), connectionFlags, nullptr, nullptr, opened,
                                      give<Self>(shared_from_this()));
}

void SharedConnection::finish(Connection made) {
    isFinished = true;
    connection = std::move(made);
    for (const Opened& opened : std::exchange(waiting, {}))
        opened(connection);
}

} // namespace kelo::bus
