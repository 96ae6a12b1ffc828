#include "component/gtk/RunningProgram.h"
#include "linux/gtk/kit/AccentColor.h"

#include <giomm/dbusconnection.h>
#include <giomm/dbusinterfacevtable.h>
#include <giomm/dbusintrospection.h>
#include <glibmm/miscutils.h>
#include <gtest/gtest.h>
#include <gtkmm/button.h>
#include <gtkmm/settings.h>
#include <gtkmm/stylecontext.h>

namespace kelo::tests {
namespace {

constexpr const char* path = "/org/freedesktop/portal/desktop";
constexpr const char* interface = "org.freedesktop.portal.Settings";

/// The part of a desktop's portal that reports colors.
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
        // Where a real portal is installed, the toolkit may have started it: it lets itself be
        // replaced.
        constexpr guint32 replaceExisting = 2;
        connection->call_sync("/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
                              Glib::Variant<std::tuple<Glib::ustring, guint32>>::create(
                                  {"org.freedesktop.portal.Desktop", replaceExisting}),
                              "org.freedesktop.DBus");
    }
    ~FakePortal() { connection->close_sync(); }

    void change(guint32 next) {
        scheme = next;
        announce("color-scheme");
    }
    void changeAccent(double red, double green, double blue) {
        accent = Glib::VariantBase(g_variant_new("(ddd)", red, green, blue));
        announce("accent-color");
    }

    /// The desktop's contrast, which is none of these settings.
    void changeContrast(guint32 next) {
        contrast = next;
        announce("contrast");
    }

private:
    void announce(const Glib::ustring& key) {
        connection->emit_signal(
            path, interface, "SettingChanged", {},
            Glib::VariantContainerBase::create_tuple(
                {Glib::Variant<Glib::ustring>::create("org.freedesktop.appearance"),
                 Glib::Variant<Glib::ustring>::create(key), value(key)}));
    }
    Glib::VariantBase value(const Glib::ustring& key) const {
        return Glib::Variant<Glib::VariantBase>::create(
            key == "accent-color"
                ? accent
                : Glib::Variant<guint32>::create(key == "contrast" ? contrast : scheme));
    }

    guint32 scheme;
    guint32 contrast = 0;
    Glib::VariantBase accent{g_variant_new("(ddd)", -1.0, -1.0, -1.0)};
    Glib::RefPtr<Gio::DBus::Connection> connection;
    Gio::DBus::InterfaceVTable table{[this](const Glib::RefPtr<Gio::DBus::Connection>&,
                                            const Glib::ustring&, const Glib::ustring&,
                                            const Glib::ustring&, const Glib::ustring&,
                                            const Glib::VariantContainerBase& asked,
                                            const Glib::RefPtr<Gio::DBus::MethodInvocation>& call) {
        Glib::Variant<Glib::ustring> key;
        asked.get_child(key, 1);
        // Portals wrap the reply in one more variant than the interface suggests.
        call->return_value(Glib::VariantContainerBase::create_tuple(
            Glib::Variant<Glib::VariantBase>::create(value(key.get()))));
    }};
};

/// In the style of this display; empty where there is no such color.
std::string namedColor(const char* name) {
    Gtk::Button anything;
    Gdk::RGBA color;
    const bool isThere = anything.get_style_context()->lookup_color(name, color);
    return isThere ? color.to_string() : "";
}

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

TEST(ColorScheme, FollowsAPortalThatComesLater) {
    RunningProgram program;
    program.run([&] {
        EXPECT_FALSE(isDark());
        FakePortal portal(1);
        RunningProgram::until("it is dark", isDark);
        portal.change(0);
        RunningProgram::until("it is as the toolkit has it", [] { return !isDark(); });
    });
}

TEST(AccentColor, IsThatOfTheDesktopAndFollowsItsChanges) {
    RunningProgram program;
    FakePortal portal(2);
    portal.changeAccent(0, 0.5, 0);
    program.run([&] {
        const auto accentIs = [](const char* color) {
            return [color] {
                return namedColor("kelo_accent") == color &&
                       namedColor("theme_selected_bg_color") == color;
            };
        };
        RunningProgram::until("it is green", accentIs("rgb(0,128,0)"));
        EXPECT_EQ(namedColor("theme_selected_fg_color"), "rgb(255,255,255)");
        portal.changeContrast(1);
        portal.changeAccent(1, 1, 0);
        RunningProgram::until("it is yellow", accentIs("rgb(255,255,0)"));
        EXPECT_FALSE(isDark()) << "what is told of the contrast is no color scheme";
        EXPECT_EQ(namedColor("theme_selected_fg_color"), "rgb(0,0,0)");
        portal.changeAccent(-1, -1, -1);
        RunningProgram::until("it is the theme's own", [] {
            return namedColor("kelo_accent").empty() &&
                   namedColor("theme_selected_bg_color") != "rgb(255,255,0)";
        });
    });
}

TEST(AccentColor, IsTheThemesOwnWhileTheThemeIsOneOfHighContrast) {
    RunningProgram program;
    FakePortal portal(2);
    portal.changeAccent(0, 0.5, 0);
    program.run([&] {
        auto theme = Gtk::Settings::get_default()->property_gtk_theme_name();
        const Glib::ustring usual = theme;
        const auto isGreen = [] { return namedColor("kelo_accent") == "rgb(0,128,0)"; };
        RunningProgram::until("it is green", isGreen);
        for (const char* const contrasting : {"Default-hc", "HighContrastInverse"}) {
            theme = contrasting;
            EXPECT_EQ(namedColor("kelo_accent"), "") << contrasting;
        }
        theme = usual;
        EXPECT_TRUE(isGreen());
    });
}

TEST(AccentColor, TextIsWhiteUnlessThatCanHardlyBeRead) {
    const auto textOn = [](float red, float green, float blue) {
        return gtk::textColorOn(Gdk::RGBA(red, green, blue)).to_string();
    };
    EXPECT_EQ(textOn(0.21F, 0.52F, 0.89F), "rgb(255,255,255)");
    EXPECT_EQ(textOn(0.56F, 0.94F, 0.64F), "rgb(0,0,0)");
    EXPECT_EQ(textOn(0, 0, 0), "rgb(255,255,255)");
    EXPECT_EQ(textOn(1, 1, 1), "rgb(0,0,0)");
}

TEST(ColorScheme, WithoutAPortalTheToolkitsOwnSettingStands) {
    RunningProgram program;
    program.run([] { EXPECT_FALSE(isDark()); });
}

} // namespace
} // namespace kelo::tests
