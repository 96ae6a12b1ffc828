#include "testing/rig/AccessibilityBus.h"

#include <stdexcept>
#include <string_view>

namespace kelo::rig {

namespace {

constexpr int callTimeoutMilliseconds = 10'000;
constexpr const char* registryName = "org.a11y.atspi.Registry";
constexpr const char* pageNameMark = ".Sandboxed.WebProcess-";
constexpr const char* pageRootPrefix = "/org/a11y/webkit/accessible/";

std::string messageOf(GError* error) {
    gobject::GErrorPointer owned(error);
    return owned ? owned->message : "unknown error";
}

gobject::GObjectPointer<GDBusConnection> sessionBus() {
    GError* error = nullptr;
    GDBusConnection* bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, &error);
    if (!bus)
        throw std::runtime_error("There is no session bus: " + messageOf(error));
    return gobject::GObjectPointer<GDBusConnection>::adopt(bus);
}

std::string accessibilityAddress(GDBusConnection* session) {
    GError* error = nullptr;
    VariantPointer reply(g_dbus_connection_call_sync(
        session, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", nullptr,
        G_VARIANT_TYPE("(s)"), G_DBUS_CALL_FLAGS_NONE, callTimeoutMilliseconds, nullptr, &error));
    if (!reply)
        throw std::runtime_error("There is no accessibility bus: " + messageOf(error));
    const char* address = nullptr;
    g_variant_get(reply.get(), "(&s)", &address);
    return address;
}

void announceListener(GDBusConnection* session) {
    VariantPointer reply(g_dbus_connection_call_sync(
        session, "org.a11y.Bus", "/org/a11y/bus", "org.freedesktop.DBus.Properties", "Set",
        g_variant_new("(ssv)", "org.a11y.Status", "IsEnabled", g_variant_new_boolean(TRUE)),
        nullptr, G_DBUS_CALL_FLAGS_NONE, callTimeoutMilliseconds, nullptr, nullptr));
}

gboolean turnTheLoop(gpointer) {
    return G_SOURCE_CONTINUE;
}

class Ticker {
public:
    explicit Ticker(std::chrono::milliseconds interval)
        : source(g_timeout_add(static_cast<guint>(interval.count()), turnTheLoop, nullptr)) {}
    ~Ticker() { g_source_remove(source); }
    Ticker(const Ticker&) = delete;
    Ticker& operator=(const Ticker&) = delete;

private:
    guint source;
};

} // namespace

AccessibilityBus::AccessibilityBus() {
    const auto session = sessionBus();
    GError* error = nullptr;
    address_ = accessibilityAddress(session.get());
    GDBusConnection* opened = g_dbus_connection_new_for_address_sync(
        address_.c_str(),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, &error);
    if (!opened)
        throw std::runtime_error("The accessibility bus cannot be reached: " + messageOf(error));
    connection = gobject::GObjectPointer<GDBusConnection>::adopt(opened);
    announceListener(session.get());
    call({"org.freedesktop.DBus", "/org/freedesktop/DBus"}, "org.freedesktop.DBus",
         "StartServiceByName", g_variant_new("(su)", registryName, 0));
    for (const char* events : {"object:", "window:", "focus:", "document:"})
        call({registryName, "/org/a11y/atspi/registry"}, registryName, "RegisterEvent",
             g_variant_new("(sass)", events, nullptr, ""));
    subscription =
        g_dbus_connection_signal_subscribe(connection.get(), nullptr, nullptr, nullptr, nullptr,
                                           nullptr, G_DBUS_SIGNAL_FLAGS_NONE, heard, this, nullptr);
}

AccessibilityBus::~AccessibilityBus() {
    g_dbus_connection_signal_unsubscribe(connection.get(), subscription);
}

// That a signal arrives turns the main loop, which is all that await() needs of the others.
void AccessibilityBus::heard(GDBusConnection*, const char*, const char*, const char*,
                             const char* signal, GVariant* arguments, gpointer self) {
    if (std::string_view(signal) != "Announcement" || g_variant_n_children(arguments) < 4)
        return;
    const VariantPointer boxed(g_variant_get_child_value(arguments, 3));
    const VariantPointer text(g_variant_get_variant(boxed.get()));
    static_cast<const AccessibilityBus*>(self)->announced.emplace_back(
        g_variant_get_string(text.get(), nullptr));
}

VariantPointer AccessibilityBus::call(const ObjectAddress& object, const char* interface,
                                      const char* method, GVariant* arguments) const {
    return VariantPointer(g_dbus_connection_call_sync(
        connection.get(), object.busName.c_str(), object.path.c_str(), interface, method, arguments,
        nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, callTimeoutMilliseconds, nullptr, nullptr));
}

VariantPointer AccessibilityBus::property(const ObjectAddress& object, const char* interface,
                                          const char* name) const {
    const VariantPointer reply = call(object, "org.freedesktop.DBus.Properties", "Get",
                                      g_variant_new("(ss)", interface, name));
    if (!reply || !g_variant_is_of_type(reply.get(), G_VARIANT_TYPE("(v)")))
        return nullptr;
    GVariant* value = nullptr;
    g_variant_get(reply.get(), "(v)", &value);
    return VariantPointer(value);
}

std::vector<ObjectAddress> AccessibilityBus::applications() const {
    std::vector<ObjectAddress> roots;
    const VariantPointer reply = call({registryName, "/org/a11y/atspi/accessible/root"},
                                      "org.a11y.atspi.Accessible", "GetChildren");
    if (!reply || !g_variant_is_of_type(reply.get(), G_VARIANT_TYPE("(a(so))")))
        return roots;
    GVariantIter* children = nullptr;
    g_variant_get(reply.get(), "(a(so))", &children);
    const char* busName = nullptr;
    const char* path = nullptr;
    while (g_variant_iter_next(children, "(&s&o)", &busName, &path))
        roots.push_back({busName, path});
    g_variant_iter_free(children);
    return roots;
}

std::vector<std::string> AccessibilityBus::names() const {
    std::vector<std::string> all;
    const VariantPointer reply = call({"org.freedesktop.DBus", "/org/freedesktop/DBus"},
                                      "org.freedesktop.DBus", "ListNames");
    if (!reply)
        return all;
    GVariantIter* iterator = nullptr;
    g_variant_get(reply.get(), "(as)", &iterator);
    const char* name = nullptr;
    while (g_variant_iter_next(iterator, "&s", &name))
        all.emplace_back(name);
    g_variant_iter_free(iterator);
    return all;
}

std::vector<ObjectAddress> AccessibilityBus::pages() const {
    std::vector<ObjectAddress> roots;
    for (const auto& name : names()) {
        if (name.find(pageNameMark) == std::string::npos)
            continue;
        const VariantPointer reply =
            call({name, "/org/a11y/atspi/cache"}, "org.a11y.atspi.Cache", "GetItems");
        if (!reply)
            continue;
        const VariantPointer items(g_variant_get_child_value(reply.get(), 0));
        for (gsize index = 0; index < g_variant_n_children(items.get()); ++index) {
            const VariantPointer item(g_variant_get_child_value(items.get(), index));
            const VariantPointer object(g_variant_get_child_value(item.get(), 0));
            const VariantPointer path(g_variant_get_child_value(object.get(), 1));
            const std::string text = g_variant_get_string(path.get(), nullptr);
            if (text.starts_with(pageRootPrefix))
                roots.push_back({name, text, true});
        }
    }
    return roots;
}

bool AccessibilityBus::await(const std::function<bool()>& condition, std::chrono::seconds deadline,
                             std::chrono::milliseconds interval) const {
    const Ticker ticker(interval);
    const auto end = std::chrono::steady_clock::now() + deadline;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end)
            return false;
        g_main_context_iteration(nullptr, TRUE);
        while (g_main_context_iteration(nullptr, FALSE)) {
        }
    }
    return true;
}

} // namespace kelo::rig
