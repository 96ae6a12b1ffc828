// Under X11 a window comes to the front only if the user has done nothing elsewhere since asking
// for it. So the time of the request has to reach the window manager with the window.
#include <gtest/gtest.h> // before Xlib, whose None is a macro

#include "component/gtk/RunningProgram.h"
#include "linux/gtk/kit/WindowPresentation.h"
#include "linux/window/X11Handles.h"
#include "linux/window/X11Toolkit.h"

#include <X11/Xatom.h>
#include <giomm/dbusconnection.h>
#include <glibmm/miscutils.h>

#include <string>

namespace kelo::tests {
namespace {

constexpr unsigned longBefore = 1000; // milliseconds

class UserRequest : public testing::Test {
protected:
    static GdkDisplay* display() { return gdk_display_get_default(); }
    static GdkSurface* surfaceOf(Gtk::Window& window) {
        return gtk_native_get_surface(GTK_NATIVE(window.gobj()));
    }
    /// Sets the clock of the user's last action in our windows, and returns when that was.
    static unsigned actAt(Gtk::Window& window, unsigned time) {
        window::setUserTime(surfaceOf(window), time);
        return time;
    }
    /// What other programs ask for by the bus, as desktops and second starts do.
    static void ask(const std::string& path, const std::string& interface,
                    const std::string& method, const std::string& arguments) {
        const auto connection = Gio::DBus::Connection::create_for_address_sync(
            Glib::getenv("DBUS_SESSION_BUS_ADDRESS"),
            Gio::DBus::ConnectionFlags::AUTHENTICATION_CLIENT |
                Gio::DBus::ConnectionFlags::MESSAGE_BUS_CONNECTION);
        bool isAnswered = false;
        connection->call(
            path, interface, method,
            Glib::VariantContainerBase(g_variant_new_parsed(arguments.c_str())),
            [&](const Glib::RefPtr<Gio::AsyncResult>&) { isAnswered = true; }, "app.kelo.Kelo");
        RunningProgram::until("an answer to " + method, [&] { return isAnswered; });
        connection->close_sync();
    }
    /// What the window manager reads. For one that knows of it, the toolkit keeps the time on a
    /// window of its own, which the shown one names.
    static unsigned announcedTime(Gtk::Window& window) {
        const auto shown = window::xlibWindow(surfaceOf(window));
        const auto holder = cardinal(shown, "_NET_WM_USER_TIME_WINDOW", XA_WINDOW);
        const auto told = cardinal(holder, "_NET_WM_USER_TIME", XA_CARDINAL);
        return static_cast<unsigned>(told != 0 ? told
                                               : cardinal(shown, "_NET_WM_USER_TIME", XA_CARDINAL));
    }
    /// 0 if the window has no such property.
    static unsigned long cardinal(Window window, const char* property, Atom expected) {
        Atom type = 0;
        int format = 0;
        unsigned long count = 0;
        unsigned long rest = 0;
        unsigned char* bytes = nullptr;
        XGetWindowProperty(window::xlibDisplay(display()), window,
                           window::xlibAtom(display(), property), 0, 1, False, expected, &type,
                           &format, &count, &rest, &bytes);
        const window::XMemory<unsigned char> memory(bytes);
        return count == 1 ? *reinterpret_cast<unsigned long*>(bytes) : 0;
    }
    static bool isAfter(unsigned time, unsigned other) {
        return static_cast<int>(time - other) > 0;
    }
    void expectLaterAction(unsigned before) {
        RunningProgram::until("the window has the time of the request",
                              [&] { return isAfter(window::userTime(display()), before); });
    }

    RunningProgram program;
};

TEST_F(UserRequest, InTheTrayBringsItsTimeToTheWindow) {
    program.run([&] {
        const unsigned before =
            actAt(program.window("Kelo"), window::serverTime(display()) - longBefore);
        ask("/StatusNotifierItem", "org.kde.StatusNotifierItem", "Activate", "(0, 0)");
        expectLaterAction(before);
    });
}

TEST_F(UserRequest, ByAnotherStartBringsItsTimeToTheWindow) {
    program.run([&] {
        const unsigned before =
            actAt(program.window("Kelo"), window::serverTime(display()) - longBefore);
        ask("/app/kelo/Kelo", "org.freedesktop.Application", "Activate", "(@a{sv} {},)");
        expectLaterAction(before);
    });
}

TEST_F(UserRequest, OnANotificationBringsItsTimeToTheWindow) {
    program.run([&] {
        const unsigned before =
            actAt(program.window("Kelo"), window::serverTime(display()) - longBefore);
        Gio::Application::get_default()->activate_action("open");
        expectLaterAction(before);
    });
}

TEST_F(UserRequest, GoesToAWindowThatIsYetToBeMade) {
    program.run([&] {
        Gtk::Window window;
        const unsigned before =
            actAt(program.window("Kelo"), window::serverTime(display()) - longBefore);
        gtk::noteUserRequest();
        gtk::presentWithActivationToken(window);
        EXPECT_TRUE(isAfter(window::userTime(display()), before));
        window.close();
    });
}

TEST_F(UserRequest, IsForgottenAfterALaterActionInOurWindows) {
    program.run([&] {
        auto& window = program.window("Kelo");
        gtk::noteUserRequest();
        const unsigned later = actAt(window, window::serverTime(display()) + longBefore);
        gtk::presentWithActivationToken(window);
        EXPECT_EQ(window::userTime(display()), later);
        EXPECT_EQ(announcedTime(window), later);
    });
}

} // namespace
} // namespace kelo::tests
