#include "linux/input/portal/BusClient.h"

#include <utility>

namespace kelo::input {

namespace {

constexpr auto connectionFlags = static_cast<GDBusConnectionFlags>(
    G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);

constexpr int usualTimeout = -1;

/// Puts a function on the heap, as user data for a C callback.
template <typename Function>
gpointer give(Function function) {
    return std::make_unique<Function>(std::move(function)).release();
}

template <typename Function>
std::unique_ptr<Function> takeBack(gpointer data) {
    return std::unique_ptr<Function>(static_cast<Function*>(data));
}

template <typename Function>
void drop(gpointer data) {
    takeBack<Function>(data);
}

bool wasGivenUp(const gobject::GErrorPointer& failure) {
    return failure && g_error_matches(failure.get(), G_IO_ERROR, G_IO_ERROR_CANCELLED);
}

void callFinished(GObject* source, GAsyncResult* result, gpointer data) {
    const auto answered = takeBack<BusCalls::Answered>(data);
    GError* error = nullptr;
    GVariantOwner answer(g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error));
    gobject::GErrorPointer failure(error);
    if (!wasGivenUp(failure))
        (*answered)(std::move(answer), std::move(failure));
}

void connectFinished(GObject*, GAsyncResult* result, gpointer data) {
    const auto connected = takeBack<std::function<void(BusConnection)>>(data);
    GError* error = nullptr;
    auto connection =
        BusConnection::adopt(g_dbus_connection_new_for_address_finish(result, &error));
    const gobject::GErrorPointer failure(error);
    if (!wasGivenUp(failure))
        (*connected)(std::move(connection));
}

} // namespace

BusCalls::~BusCalls() {
    g_cancellable_cancel(cancellable.get());
}

void BusCalls::call(const BusConnection& connection, const BusObject& object, const char* interface,
                    const char* method, GVariant* parameters, Answered answered) const {
    g_dbus_connection_call(connection.get(), object.owner.c_str(), object.path.c_str(), interface,
                           method, parameters, nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START,
                           usualTimeout, cancellable.get(), callFinished,
                           give(std::move(answered)));
}

void BusCalls::connect(const std::string& address,
                       std::function<void(BusConnection)> connected) const {
    g_dbus_connection_new_for_address(address.c_str(), connectionFlags, nullptr, cancellable.get(),
                                      connectFinished, give(std::move(connected)));
}

void tellBus(const BusConnection& connection, const BusObject& object, const char* interface,
             const char* method) {
    // A pending call keeps the connection alive. Without the callback, the connection could be
    // closed before the call is written.
    const GAsyncReadyCallback answered = [](GObject* source, GAsyncResult* result, gpointer) {
        const GVariantOwner answer(
            g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, nullptr));
    };
    g_dbus_connection_call(connection.get(), object.owner.c_str(), object.path.c_str(), interface,
                           method, nullptr, nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, usualTimeout,
                           nullptr, answered, nullptr);
}

BusSignal::BusSignal(BusConnection bus, const std::string& sender, const char* interface,
                     const char* signal, Heard heard)
    : connection(std::move(bus)) {
    const GDBusSignalCallback arrived =
        [](GDBusConnection*, const gchar*, const gchar* path, const gchar*, const gchar*,
           GVariant* values, gpointer data) { (*static_cast<Heard*>(data))(path, values); };
    // GLib keeps the data until a running callback has returned.
    subscription = g_dbus_connection_signal_subscribe(
        connection.get(), sender.c_str(), interface, signal, nullptr, nullptr,
        G_DBUS_SIGNAL_FLAGS_NONE, arrived, give(std::move(heard)), drop<Heard>);
}

BusSignal::~BusSignal() {
    g_dbus_connection_signal_unsubscribe(connection.get(), subscription);
}

BusNameWatch::BusNameWatch(const BusConnection& connection, const char* name, Changed changed) {
    const GBusNameAppearedCallback appeared = [](GDBusConnection*, const gchar*, const gchar* owner,
                                                 gpointer data) {
        (*static_cast<Changed*>(data))(owner);
    };
    const GBusNameVanishedCallback vanished = [](GDBusConnection*, const gchar*, gpointer data) {
        (*static_cast<Changed*>(data))("");
    };
    watch =
        g_bus_watch_name_on_connection(connection.get(), name, G_BUS_NAME_WATCHER_FLAGS_AUTO_START,
                                       appeared, vanished, give(std::move(changed)), drop<Changed>);
}

BusNameWatch::~BusNameWatch() {
    g_bus_unwatch_name(watch);
}

std::string sessionBusAddress() {
    // GLib's own lookup could start a new bus, to which no desktop is connected.
    if (const char* address = g_getenv("DBUS_SESSION_BUS_ADDRESS"); address && *address)
        return address;
    const gobject::GText path(g_build_filename(g_get_user_runtime_dir(), "bus", nullptr));
    if (!g_file_test(path.get(), G_FILE_TEST_EXISTS))
        return "";
    const gobject::GText escaped(g_dbus_address_escape_value(path.get()));
    return std::string("unix:path=") + escaped.get();
}

} // namespace kelo::input
