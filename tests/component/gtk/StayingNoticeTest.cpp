#include "component/gtk/RunningProgram.h"

#include "testing/TemporaryFolder.h"

#include <gio/gio.h>
#include <giomm/dbusconnection.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kelo::tests {
namespace {

/// The desktop as the program finds it on the session bus: what shows notifications, and, where it
/// has one, the tray. In this process, on a connection of its own.
class Desktop {
public:
    explicit Desktop(bool hasTray) {
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
    ~Desktop() {
        g_dbus_connection_close_sync(connection, nullptr, nullptr);
        g_object_unref(connection);
    }
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;

    /// Presses the notification's button, as the desktop tells of it.
    void press(const std::string& button) const {
        g_dbus_connection_emit_signal(connection, nullptr, "/org/freedesktop/Notifications",
                                      "org.freedesktop.Notifications", "ActionInvoked",
                                      g_variant_new("(us)", 7U, button.c_str()), nullptr);
    }

    std::string name() const { return g_dbus_connection_get_unique_name(connection); }

    int questionsForTray = 0;
    int closed = 0;
    std::vector<std::string> shown;   ///< the summaries
    std::vector<std::string> buttons; ///< of the last one: each action, then its label

private:
    void serve(const char* name, const char* path, const char* description) {
        GDBusNodeInfo* const node = g_dbus_node_info_new_for_xml(description, nullptr);
        static const GDBusInterfaceVTable methods{&Desktop::called, &Desktop::asked, nullptr, {}};
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
        auto* const self = static_cast<Desktop*>(data);
        if (std::string(method) == "Notify") {
            const char* summary = nullptr;
            g_variant_get_child(arguments, 3, "&s", &summary);
            self->shown.emplace_back(summary);
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
        ++static_cast<Desktop*>(data)->questionsForTray;
        return g_variant_new_boolean(TRUE);
    }

    GDBusConnection* connection = nullptr;
};

void closeWindow(RunningProgram& program) {
    program.window("Kelo").close();
    RunningProgram::settle();
}

/// Until the program has what the desktop has answered by now. On the program's own connection,
/// messages keep their order.
void awaitAnswers(const Desktop& desktop) {
    bool isAnswered = false;
    const auto bus = Gio::DBus::Connection::get_sync(Gio::DBus::BusType::SESSION);
    bus->call(
        "/", "org.freedesktop.DBus.Peer", "Ping", {},
        [&](const Glib::RefPtr<Gio::AsyncResult>&) { isAnswered = true; }, desktop.name());
    RunningProgram::until("the desktop has answered", [&] { return isAnswered; });
    RunningProgram::settle();
}

/// The toolkit can withdraw a notice only after it has the desktop's answer.
void awaitNotice(const Desktop& desktop) {
    RunningProgram::until("the notice is shown", [&] { return !desktop.shown.empty(); });
    awaitAnswers(desktop);
}

TEST(StayingNotice, SaysOnceThatTheProgramKeepsRunning) {
    const test::TemporaryFolder folder;
    gtk::HostSettings settings;
    settings.stateFile = (folder / "windows").string();
    Desktop desktop(/*hasTray=*/false);
    for (int start = 0; start < 2; ++start) {
        RunningProgram program(settings);
        program.run([&] {
            closeWindow(program);
            awaitNotice(desktop);
            EXPECT_EQ(desktop.shown, std::vector<std::string>{"Kelo keeps running"});
            program.host.openWindow("main");
            program.untilActive(program.window("Kelo"));
            closeWindow(program);
            EXPECT_EQ(desktop.shown.size(), 1U);
        });
    }
}

TEST(StayingNotice, GoesWithTheNextWindow) {
    Desktop desktop(/*hasTray=*/false);
    RunningProgram program;
    program.run([&] {
        closeWindow(program);
        awaitNotice(desktop);
        EXPECT_EQ(desktop.closed, 0);
        program.host.openWindow("main");
        RunningProgram::until("the notice is gone", [&] { return desktop.closed == 1; });
    });
}

TEST(StayingNotice, EndsTheProgramByItsButton) {
    Desktop desktop(/*hasTray=*/false);
    RunningProgram program;
    program.runToItsOwnEnd([&] {
        closeWindow(program);
        awaitNotice(desktop);
        ASSERT_EQ(desktop.buttons.size(), 4U);
        EXPECT_EQ(desktop.buttons[3], "Quit");
        desktop.press(desktop.buttons[2]);
    });
    EXPECT_EQ(program.status, 0);
}

TEST(StayingNotice, IsNotShownWhereATrayShowsTheProgram) {
    Desktop desktop(/*hasTray=*/true);
    RunningProgram program;
    program.run([&] {
        closeWindow(program);
        RunningProgram::until("the tray was asked for",
                              [&] { return desktop.questionsForTray == 1; });
        // The program has the answer after one round trip, and its notice would be here after two.
        awaitAnswers(desktop);
        awaitAnswers(desktop);
        EXPECT_TRUE(desktop.shown.empty());
    });
}

} // namespace
} // namespace kelo::tests
