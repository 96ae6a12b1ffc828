#include "component/gtk/AccessibilityListener.h"

#include "component/gtk/RunningProgram.h"
#include "linux/gobject/GLibHandles.h"

#include <optional>
#include <stdexcept>

namespace kelo::tests {

namespace {

constexpr const char* registry = "org.a11y.atspi.Registry";

std::string printed(GVariant* value) {
    char* text = g_variant_print(value, FALSE);
    std::string result = text;
    g_free(text);
    return result;
}

std::string busAddress() {
    GDBusConnection* session = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    GVariant* reply =
        session
            ? g_dbus_connection_call_sync(session, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus",
                                          "GetAddress", nullptr, G_VARIANT_TYPE("(s)"),
                                          G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr)
            : nullptr;
    if (!reply)
        throw std::runtime_error("there is no accessibility bus");
    const char* address = nullptr;
    g_variant_get(reply, "(&s)", &address);
    std::string result = address;
    g_variant_unref(reply);
    g_object_unref(session);
    return result;
}

} // namespace

AccessibilityListener::AccessibilityListener() {
    constexpr auto asClient =
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    GDBusConnection* opened = g_dbus_connection_new_for_address_sync(busAddress().c_str(), asClient,
                                                                     nullptr, nullptr, nullptr);
    if (!opened)
        throw std::runtime_error("the accessibility bus cannot be reached");
    connection = gobject::GObjectPointer<GDBusConnection>::adopt(opened);
    // Toolkits may stay silent as long as nobody has said what they want to hear.
    GVariant* reply = g_dbus_connection_call_sync(
        opened, registry, "/org/a11y/atspi/registry", registry, "RegisterEvent",
        g_variant_new("(sass)", "object:", nullptr, ""), nullptr, G_DBUS_CALL_FLAGS_NONE, -1,
        nullptr, nullptr);
    if (!reply)
        throw std::runtime_error("there is no accessibility registry");
    g_variant_unref(reply);
    subscription =
        g_dbus_connection_signal_subscribe(opened, nullptr, nullptr, nullptr, nullptr, nullptr,
                                           G_DBUS_SIGNAL_FLAGS_NONE, heard, this, nullptr);
}

AccessibilityListener::~AccessibilityListener() {
    g_dbus_connection_signal_unsubscribe(connection.get(), subscription);
}

void AccessibilityListener::heard(GDBusConnection*, const char* sender, const char* path,
                                  const char*, const char* name, GVariant* arguments,
                                  gpointer self) {
    static_cast<AccessibilityListener*>(self)->events.push_back(
        {sender, path, name, printed(arguments)});
}

std::string AccessibilityListener::ask(const Event& object, const char* interface,
                                       const char* method, GVariant* arguments) {
    std::optional<std::string> answer;
    const GAsyncReadyCallback answered = [](GObject* source, GAsyncResult* result, gpointer to) {
        GVariant* reply = g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, nullptr);
        *static_cast<std::optional<std::string>*>(to) = reply ? printed(reply) : "refused";
        if (reply)
            g_variant_unref(reply);
    };
    g_dbus_connection_call(connection.get(), object.sender.c_str(), object.path.c_str(), interface,
                           method, arguments, nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr,
                           answered, &answer);
    RunningProgram::until("the program answers on the accessibility bus",
                          [&] { return answer.has_value(); });
    return *answer;
}

} // namespace kelo::tests
