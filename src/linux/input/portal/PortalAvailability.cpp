#include "linux/input/portal/PortalAvailability.h"

#include "linux/input/portal/BusClient.h"

namespace kelo::input {

namespace {

constexpr int patienceInMilliseconds = 1000;

constexpr const char* otherWay =
    "In your desktop's keyboard settings, give the command \"kelo --widget\" a shortcut.";

struct Answer {
    GVariantOwner value;
    bool late = false;
};

Answer ask(const BusConnection& bus, const char* owner, const char* path, const char* interface,
           const char* method, GVariant* parameters) {
    GError* error = nullptr;
    GVariantOwner value(g_dbus_connection_call_sync(
        bus.get(), owner, path, interface, method, parameters, nullptr,
        G_DBUS_CALL_FLAGS_NO_AUTO_START, patienceInMilliseconds, nullptr, &error));
    const gobject::GErrorPointer failure(error);
    return {std::move(value),
            failure && g_error_matches(failure.get(), G_IO_ERROR, G_IO_ERROR_TIMED_OUT)};
}

Answer askBus(const BusConnection& bus, const char* method, GVariant* parameters) {
    return ask(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method,
               parameters);
}

bool canBeStarted(const BusConnection& bus) {
    const Answer names = askBus(bus, "ListActivatableNames", nullptr);
    if (!names.value || !g_variant_is_of_type(names.value.get(), G_VARIANT_TYPE("(as)")))
        return false;
    GVariantIter* each = nullptr;
    g_variant_get(names.value.get(), "(as)", &each);
    const std::unique_ptr<GVariantIter, decltype(&g_variant_iter_free)> owned(each,
                                                                              g_variant_iter_free);
    const char* name = nullptr;
    while (g_variant_iter_next(each, "&s", &name))
        if (std::string_view(name) == portal::busName)
            return true;
    return false;
}

} // namespace

Availability portalAvailability(const std::string& busAddress) {
    if (busAddress.empty())
        return {false, "There is no session bus to reach the desktop's portal by.",
                "Start Kelo from within your desktop."};
    const auto flags =
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    const auto bus = BusConnection::adopt(g_dbus_connection_new_for_address_sync(
        busAddress.c_str(), flags, nullptr, nullptr, nullptr));
    if (!bus)
        return {false,
                "The session bus, by which the desktop's portal is reached, does not answer.",
                "Start Kelo from within your desktop, or log in anew."};

    const Answer owner = askBus(bus, "GetNameOwner", g_variant_new("(s)", portal::busName));
    if (!owner.value) {
        // Only a running portal can tell, and this query must not start it.
        if (canBeStarted(bus))
            return {true,
                    "The desktop's portal is started when Kelo needs it, and asked for "
                    "Ctrl+Alt+Space then, if it offers global shortcuts.",
                    "Ask again while Kelo is running to see whether it does."};
        return {false, "This desktop has no portal.",
                std::string("Install xdg-desktop-portal and its part for your desktop, or: ") +
                    otherWay};
    }
    const char* unique = nullptr;
    g_variant_get(owner.value.get(), "(&s)", &unique);
    const Answer version = ask(bus, unique, portal::path, "org.freedesktop.DBus.Properties", "Get",
                               g_variant_new("(ss)", portal::globalShortcuts, "version"));
    if (version.late)
        return {false, "The desktop's portal does not answer.",
                std::string("Log in anew, or: ") + otherWay};
    if (!version.value)
        return {false, "The desktop's portal does not offer global shortcuts.", otherWay};
    return {true,
            "The desktop's portal watches for Ctrl+Alt+Space, or for the keys that you choose when "
            "it asks. It does not tell of other keys, and no other shortcut counts.",
            ""};
}

} // namespace kelo::input
