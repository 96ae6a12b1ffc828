#include "windows/Portal.h"

#include "linux/gobject/GLibHandles.h"

#include <stdexcept>
#include <string>

namespace kelo::bench {

namespace {

constexpr int milliseconds = 10000;

gobject::GObjectPointer<GDBusConnection> ownConnection() {
    const gobject::GText address(
        g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
    const auto flags =
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    auto connection = gobject::GObjectPointer<GDBusConnection>::adopt(
        g_dbus_connection_new_for_address_sync(address.get(), flags, nullptr, nullptr, nullptr));
    if (!connection)
        throw std::runtime_error("There is no session bus.");
    return connection;
}

void call(GDBusConnection* connection, const char* name, const char* path, const char* interface,
          const char* method, GVariant* arguments) {
    const gobject::GVariantPointer reply(g_dbus_connection_call_sync(
        connection, name, path, interface, method, arguments, nullptr,
        G_DBUS_CALL_FLAGS_NO_AUTO_START, milliseconds, nullptr, nullptr));
    if (!reply)
        throw std::runtime_error(std::string(method) + " failed on the session bus.");
}

} // namespace

Portal::Portal() : connection(ownConnection()) {
    constexpr guint32 doNotQueue = 4;
    call(connection.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
         "RequestName", g_variant_new("(su)", "org.freedesktop.portal.Desktop", doNotQueue));
}

void Portal::prefer(bool dark) const {
    g_dbus_connection_emit_signal(connection.get(), nullptr, "/org/freedesktop/portal/desktop",
                                  "org.freedesktop.portal.Settings", "SettingChanged",
                                  g_variant_new("(ssv)", "org.freedesktop.appearance",
                                                "color-scheme", g_variant_new_uint32(dark ? 1 : 2)),
                                  nullptr);
    g_dbus_connection_flush_sync(connection.get(), nullptr, nullptr);
}

void Portal::activateKelo() const {
    call(connection.get(), "app.kelo.Kelo", "/app/kelo/Kelo", "org.freedesktop.Application",
         "Activate", g_variant_new("(a{sv})", nullptr));
}

} // namespace kelo::bench
