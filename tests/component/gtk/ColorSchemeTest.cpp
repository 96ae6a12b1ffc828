#include "component/gtk/RunningProgram.h"

#include <giomm/dbusconnection.h>
#include <giomm/dbusinterfacevtable.h>
#include <giomm/dbusintrospection.h>
#include <glibmm/miscutils.h>
#include <gtest/gtest.h>
#include <gtkmm/settings.h>

namespace kelo::tests {
namespace {

constexpr const char* path = "/org/freedesktop/portal/desktop";
constexpr const char* interface = "org.freedesktop.portal.Settings";

/// The part of a desktop's portal that reports the color scheme.
class FakePortal {
public:
    explicit FakePortal(guint32 scheme)
        : scheme(scheme),
          connection(Gio::DBus::Connection::create_for_address_sync(
              Glib::getenv("DBUS_SESSION_BUS_ADDRESS"),
              Gio::DBus::ConnectionFlags::AUTHENTICATION_CLIENT |
                  Gio::DBus::ConnectionFlags::MESSAGE_BUS_CONNECTION)) {
        const auto description = Gio::DBus::NodeInfo::create_for_xml(
            "<node><interface name='org.freedesktop.portal.Settings'><method name='Read'>"
            "<arg type='s' direction='in'/><arg type='s' direction='in'/>"
            "<arg type='v' direction='out'/></method></interface></node>");
        connection->register_object(path, description->lookup_interface(interface), table);
        connection->call_sync("/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
                              Glib::Variant<std::tuple<Glib::ustring, guint32>>::create(
                                  {"org.freedesktop.portal.Desktop", 0}),
                              "org.freedesktop.DBus");
    }
    ~FakePortal() { connection->close_sync(); }

    void change(guint32 next) {
        scheme = next;
        connection->emit_signal(
            path, interface, "SettingChanged", {},
            Glib::VariantContainerBase::create_tuple(
                {Glib::Variant<Glib::ustring>::create("org.freedesktop.appearance"),
                 Glib::Variant<Glib::ustring>::create("color-scheme"), value()}));
    }

private:
    Glib::VariantBase value() const {
        return Glib::Variant<Glib::VariantBase>::create(Glib::Variant<guint32>::create(scheme));
    }

    guint32 scheme;
    Glib::RefPtr<Gio::DBus::Connection> connection;
    Gio::DBus::InterfaceVTable table{[this](const Glib::RefPtr<Gio::DBus::Connection>&,
                                            const Glib::ustring&, const Glib::ustring&,
                                            const Glib::ustring&, const Glib::ustring&,
                                            const Glib::VariantContainerBase&,
                                            const Glib::RefPtr<Gio::DBus::MethodInvocation>& call) {
        // Portals wrap the reply in one more variant than the interface suggests.
        call->return_value(Glib::VariantContainerBase::create_tuple(
            Glib::Variant<Glib::VariantBase>::create(value())));
    }};
};

bool isDark() {
    return Gtk::Settings::get_default()->property_gtk_application_prefer_dark_theme();
}

TEST(ColorScheme, FollowsTheDesktopAndItsChanges) {
    RunningProgram program;
    FakePortal portal(1);
    program.run([&] {
        RunningProgram::until("it is dark", isDark);
        portal.change(2);
        RunningProgram::until("it is light", [] { return !isDark(); });
        portal.change(1);
        RunningProgram::until("it is dark again", isDark);
        portal.change(0);
        RunningProgram::until("it is as the toolkit has it", [] { return !isDark(); });
    });
}

TEST(ColorScheme, WithoutAPortalTheToolkitsOwnSettingStands) {
    RunningProgram program;
    program.run([] { EXPECT_FALSE(isDark()); });
}

} // namespace
} // namespace kelo::tests
