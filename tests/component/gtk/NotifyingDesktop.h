#pragma once

#include "component/gtk/RunningProgram.h"

#include <gio/gio.h>
#include <giomm/dbusconnection.h>

#include <string>
#include <vector>

namespace kelo::tests {

/// The desktop as the program finds it on the session bus: what shows notifications, and, where it
/// has one, the tray. In this process, on a connection of its own.
class NotifyingDesktop {
public:
    explicit NotifyingDesktop(bool hasTray) {
        const char* const address = g_getenv("DBUS_SESSION_BUS_ADDRESS");
        connection = g_dbus_connection_new_for_address_sync(
            address,
            static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                              G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
            nullptr, nullptr, nullptr);
        serve("org.freedesktop.Notifications", "/org/freedesktop/Notifications",
              "<node><interface name='org.freedesktop.Notifications'>"
              "<method name='Notify'><arg type='s'/><arg type='u'/><arg type='s'/><arg type='s'/>"
              "<arg type='s'/><arg type='as'/><arg type='a{sv}'/><arg type='i'/>"
              "<arg type='u' direction='out'/></method>"
              "<method name='CloseNotification'><arg type='u'/></method>"
              "<signal name='ActionInvoked'><arg type='u'/><arg type='s'/></signal>"
              "</interface></node>");
        if (hasTray)
            serve("org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher",
                  "<node><interface name='org.kde.StatusNotifierWatcher'>"
                  "<method name='RegisterStatusNotifierItem'><arg type='s'/></method>"
                  "<property name='IsStatusNotifierHostRegistered' type='b' access='read'/>"
                  "</interface></node>");
    }
    ~NotifyingDesktop() {
        g_dbus_connection_close_sync(connection, nullptr, nullptr);
        g_object_unref(connection);
    }
    NotifyingDesktop(const NotifyingDesktop&) = delete;
    NotifyingDesktop& operator=(const NotifyingDesktop&) = delete;

    /// Presses the notification's button, as the desktop tells of it.
    void press(const std::string& button) const {
        g_dbus_connection_emit_signal(connection, nullptr, "/org/freedesktop/Notifications",
                                      "org.freedesktop.Notifications", "ActionInvoked",
                                      g_variant_new("(us)", 7U, button.c_str()), nullptr);
    }

    std::string name() const { return g_dbus_connection_get_unique_name(connection); }

    int questionsForTray = 0;
    int closed = 0;
    std::vector<std::string> shown; ///< the summaries
    std::vector<std::string> bodies;
    std::vector<std::string> buttons; ///< of the last one: each action, then its label

private:
    void serve(const char* name, const char* path, const char* description) {
        GDBusNodeInfo* const node = g_dbus_node_info_new_for_xml(description, nullptr);
        static const GDBusInterfaceVTable methods{
            &NotifyingDesktop::called, &NotifyingDesktop::asked, nullptr, {}};
        g_dbus_connection_register_object(connection, path, node->interfaces[0], &methods, this,
                                          nullptr, nullptr);
        g_dbus_node_info_unref(node);
        GVariant* const answer = g_dbus_connection_call_sync(
            connection, "org.freedesktop.DBus", "/", "org.freedesktop.DBus", "RequestName",
            g_variant_new("(su)", name, 0U), nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
        g_variant_unref(answer);
    }
    static void called(GDBusConnection*, const char*, const char*, const char*, const char* method,
                       GVariant* arguments, GDBusMethodInvocation* invocation, gpointer data) {
        auto* const self = static_cast<NotifyingDesktop*>(data);
        if (std::string(method) == "Notify") {
            const char* summary = nullptr;
            g_variant_get_child(arguments, 3, "&s", &summary);
            self->shown.emplace_back(summary);
            const char* body = nullptr;
            g_variant_get_child(arguments, 4, "&s", &body);
            self->bodies.emplace_back(body);
            GVariant* const actions = g_variant_get_child_value(arguments, 5);
            self->buttons.clear();
            for (gsize index = 0; index < g_variant_n_children(actions); ++index) {
                const char* word = nullptr;
                g_variant_get_child(actions, index, "&s", &word);
                self->buttons.emplace_back(word);
            }
            g_variant_unref(actions);
            g_dbus_method_invocation_return_value(invocation, g_variant_new("(u)", 7U));
            return;
        }
        if (std::string(method) == "CloseNotification")
            ++self->closed;
        g_dbus_method_invocation_return_value(invocation, nullptr);
    }
    static GVariant* asked(GDBusConnection*, const char*, const char*, const char*, const char*,
                           GError**, gpointer data) {
        ++static_cast<NotifyingDesktop*>(data)->questionsForTray;
        return g_variant_new_boolean(TRUE);
    }

    GDBusConnection* connection = nullptr;
};

/// Until the program has what the desktop has answered by now. On the program's own connection,
/// messages keep their order.
inline void awaitAnswers(const NotifyingDesktop& desktop) {
    bool isAnswered = false;
    const auto bus = Gio::DBus::Connection::get_sync(Gio::DBus::BusType::SESSION);
    bus->call(
        "/", "org.freedesktop.DBus.Peer", "Ping", {},
        [&](const Glib::RefPtr<Gio::AsyncResult>&) { isAnswered = true; }, desktop.name());
    RunningProgram::until("the desktop has answered", [&] { return isAnswered; });
    RunningProgram::settle();
}

} // namespace kelo::tests
