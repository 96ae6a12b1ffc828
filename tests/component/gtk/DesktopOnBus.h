#pragma once

#include <gio/gio.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kelo::tests {

/// The desktop as the program finds it on the session bus: what shows notifications, and, where it
/// has one, the tray. In this process, on a connection of its own.
class DesktopOnBus {
public:
    explicit DesktopOnBus(bool hasTray) {
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
              "<signal name='ActivationToken'><arg type='u'/><arg type='s'/></signal>"
              "</interface></node>");
        if (hasTray)
            serve("org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher",
                  "<node><interface name='org.kde.StatusNotifierWatcher'>"
                  "<method name='RegisterStatusNotifierItem'><arg type='s'/></method>"
                  "<property name='IsStatusNotifierHostRegistered' type='b' access='read'/>"
                  "</interface></node>");
    }
    ~DesktopOnBus() {
        // Calls that have come already must not reach this object any more.
        for (const unsigned registration : registrations)
            g_dbus_connection_unregister_object(connection, registration);
        g_dbus_connection_close_sync(connection, nullptr, nullptr);
        g_object_unref(connection);
    }
    DesktopOnBus(const DesktopOnBus&) = delete;
    DesktopOnBus& operator=(const DesktopOnBus&) = delete;

    /// Presses a button of the notification that was shown last, as the desktop tells of it. A
    /// click on the notification itself is the button "default".
    void press(const std::string& button) const { tell("ActionInvoked", lastNumber, button); }

    /// The same from a desktop that sends an activation token with it.
    void press(const std::string& button, const std::string& token) const {
        tell("ActivationToken", lastNumber, token);
        press(button);
    }

    /// A click on a notification of another program, which the desktop tells everybody of.
    void pressOnAnother(const std::string& token) const {
        tell("ActivationToken", lastNumber + 1, token);
        tell("ActionInvoked", lastNumber + 1, "default");
    }

    /// Has the program run one of its actions, as desktops and portals do that start programs by
    /// the bus.
    void activateAction(const std::string& program, const std::string& path,
                        const std::string& action, const std::vector<std::string>& parameters,
                        const std::string& token) const {
        GVariantBuilder given;
        g_variant_builder_init(&given, G_VARIANT_TYPE("av"));
        for (const auto& parameter : parameters)
            g_variant_builder_add(&given, "v", g_variant_new_string(parameter.c_str()));
        g_dbus_connection_call(
            connection, program.c_str(), path.c_str(), "org.freedesktop.Application",
            "ActivateAction",
            g_variant_new("(sav@a{sv})", action.c_str(), &given, platformData(token)), nullptr,
            G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr, nullptr);
    }

    /// Has the program open its window, as desktops do that start programs by the bus. Calls back
    /// when the program has answered.
    void activate(const std::string& program, const std::string& path, const std::string& token,
                  std::function<void()> answered) const {
        g_dbus_connection_call(
            connection, program.c_str(), path.c_str(), "org.freedesktop.Application", "Activate",
            g_variant_new("(@a{sv})", platformData(token)), nullptr, G_DBUS_CALL_FLAGS_NONE, -1,
            nullptr,
            [](GObject* source, GAsyncResult* result, gpointer callback) {
                const std::unique_ptr<std::function<void()>> owned(
                    static_cast<std::function<void()>*>(callback));
                if (GVariant* answer =
                        g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, nullptr)) {
                    g_variant_unref(answer);
                    (*owned)();
                }
            },
            new std::function<void()>(std::move(answered)));
    }

    /// Takes one more name on the bus.
    void take(const char* name) const {
        GVariant* const answer = g_dbus_connection_call_sync(
            connection, "org.freedesktop.DBus", "/", "org.freedesktop.DBus", "RequestName",
            g_variant_new("(su)", name, 0U), nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
        g_variant_unref(answer);
    }

    std::string name() const { return g_dbus_connection_get_unique_name(connection); }

    int questionsForTray = 0;
    int closed = 0;
    std::uint32_t lastClosed = 0;     ///< its number
    std::vector<std::string> shown;   ///< the summaries
    std::vector<std::string> buttons; ///< of the last one: each action, then its label
    // Of the last one, too.
    std::string body;
    std::string icon;
    std::uint32_t lastNumber = 6;

private:
    static GVariant* platformData(const std::string& token) {
        GVariantBuilder data;
        g_variant_builder_init(&data, G_VARIANT_TYPE("a{sv}"));
        g_variant_builder_add(&data, "{sv}", "activation-token",
                              g_variant_new_string(token.c_str()));
        return g_variant_builder_end(&data);
    }

    void tell(const char* signal, std::uint32_t number, const std::string& text) const {
        g_dbus_connection_emit_signal(connection, nullptr, "/org/freedesktop/Notifications",
                                      "org.freedesktop.Notifications", signal,
                                      g_variant_new("(us)", number, text.c_str()), nullptr);
    }
    void serve(const char* name, const char* path, const char* description) {
        GDBusNodeInfo* const node = g_dbus_node_info_new_for_xml(description, nullptr);
        static const GDBusInterfaceVTable methods{
            &DesktopOnBus::called, &DesktopOnBus::asked, nullptr, {}};
        registrations.push_back(g_dbus_connection_register_object(
            connection, path, node->interfaces[0], &methods, this, nullptr, nullptr));
        g_dbus_node_info_unref(node);
        take(name);
    }
    static void called(GDBusConnection*, const char*, const char*, const char*, const char* method,
                       GVariant* arguments, GDBusMethodInvocation* invocation, gpointer data) {
        auto* const self = static_cast<DesktopOnBus*>(data);
        if (std::string(method) == "Notify") {
            const char* summary = nullptr;
            g_variant_get_child(arguments, 3, "&s", &summary);
            self->shown.emplace_back(summary);
            const char* text = nullptr;
            g_variant_get_child(arguments, 4, "&s", &text);
            self->body = text;
            self->readIcon(arguments);
            GVariant* const actions = g_variant_get_child_value(arguments, 5);
            self->buttons.clear();
            for (gsize index = 0; index < g_variant_n_children(actions); ++index) {
                const char* word = nullptr;
                g_variant_get_child(actions, index, "&s", &word);
                self->buttons.emplace_back(word);
            }
            g_variant_unref(actions);
            g_dbus_method_invocation_return_value(invocation,
                                                  g_variant_new("(u)", ++self->lastNumber));
            return;
        }
        if (std::string(method) == "CloseNotification") {
            g_variant_get_child(arguments, 0, "u", &self->lastClosed);
            ++self->closed;
        }
        g_dbus_method_invocation_return_value(invocation, nullptr);
    }
    void readIcon(GVariant* arguments) {
        GVariant* const hints = g_variant_get_child_value(arguments, 6);
        const char* name = "";
        g_variant_lookup(hints, "image-path", "&s", &name);
        icon = name;
        g_variant_unref(hints);
    }
    static GVariant* asked(GDBusConnection*, const char*, const char*, const char*, const char*,
                           GError**, gpointer data) {
        ++static_cast<DesktopOnBus*>(data)->questionsForTray;
        return g_variant_new_boolean(TRUE);
    }

    GDBusConnection* connection = nullptr;
    std::vector<unsigned> registrations;
};

} // namespace kelo::tests
