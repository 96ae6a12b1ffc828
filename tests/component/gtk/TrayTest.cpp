#include "component/gtk/RunningProgram.h"
#include "linux/gtk/application/MenuBarExtras.h"
#include "linux/gtk/kit/ColorScheme.h"

#include <giomm/dbusconnection.h>
#include <glibmm/miscutils.h>
#include <gtest/gtest.h>
#include <gtkmm/settings.h>

#include <string>
#include <vector>

namespace kelo::tests {
namespace {

constexpr const char* program = "app.kelo.Kelo";

/// The program as a tray sees it, on a separate connection.
class Tray {
public:
    Tray()
        : connection(Gio::DBus::Connection::create_for_address_sync(
              Glib::getenv("DBUS_SESSION_BUS_ADDRESS"),
              Gio::DBus::ConnectionFlags::AUTHENTICATION_CLIENT |
                  Gio::DBus::ConnectionFlags::MESSAGE_BUS_CONNECTION)) {}
    ~Tray() { connection->close_sync(); }

    /// The reply as GVariant text; empty for an error.
    std::string call(const std::string& path, const std::string& interface,
                     const std::string& method, const std::string& arguments) {
        std::string answer;
        bool isThere = false;
        connection->call(
            path, interface, method,
            Glib::VariantContainerBase(g_variant_new_parsed(arguments.c_str())),
            [&](const Glib::RefPtr<Gio::AsyncResult>& result) {
                isThere = true;
                try {
                    answer = connection->call_finish(result).print(false);
                } catch (const Glib::Error&) {
                    answer.clear();
                }
            },
            program);
        RunningProgram::until("an answer to " + method, [&] { return isThere; });
        return answer;
    }
    std::string property(const std::string& name, const std::string& path = "") {
        return call("/StatusNotifierItem" + path, "org.freedesktop.DBus.Properties", "Get",
                    "('org.kde.StatusNotifierItem', '" + name + "')");
    }
    std::string menu(const std::string& method, const std::string& arguments) {
        return call("/StatusNotifierItem/Menu", "com.canonical.dbusmenu", method, arguments);
    }
    std::string layout() { return menu("GetLayout", "(0, -1, @as [])"); }
    void choose(int entry) {
        menu("Event", "(" + std::to_string(entry) + ", 'clicked', <0>, uint32 0)");
    }

private:
    Glib::RefPtr<Gio::DBus::Connection> connection;
};

class TrayItem : public testing::Test {
protected:
    ~TrayItem() override {
        Gtk::Settings::get_default()->reset_property("gtk-application-prefer-dark-theme");
    }
    void whileThere(const std::function<void()>& body) {
        running.run([&] {
            RunningProgram::until("the item is there",
                                  [&] { return tray.property("Id") == "(<'app.kelo.Kelo'>,)"; });
            body();
        });
    }
    bool iconHasColor(const std::string& bytes) {
        return tray.property("IconPixmap").find("0xff, " + bytes) != std::string::npos;
    }

    Tray tray;
    RunningProgram running;
};

TEST_F(TrayItem, SaysWhatTheMenuBarExtraSays) {
    whileThere([&] {
        EXPECT_EQ(tray.property("Title"), "(<'Kelo'>,)");
        EXPECT_NE(tray.layout().find("1.4.2 (57)"), std::string::npos);
        EXPECT_NE(tray.layout().find("Settings…"), std::string::npos);
    });
}

TEST_F(TrayItem, IconStandsOutFromTheDesktopsScheme) {
    whileThere([&] {
        EXPECT_TRUE(iconHasColor("0x7f, 0x7f, 0x7f")) << "a light desktop's panel may be dark";
        Gtk::Settings::get_default()->property_gtk_application_prefer_dark_theme() = true;
        EXPECT_TRUE(iconHasColor("0xf2, 0xf2, 0xf2"));
        Gtk::Settings::get_default()->property_gtk_application_prefer_dark_theme() = false;
        EXPECT_TRUE(iconHasColor("0x7f, 0x7f, 0x7f"));
    });
}

TEST_F(TrayItem, WithoutAnInstalledIconGivesItsPicturesAlone) {
    whileThere([&] { EXPECT_EQ(tray.property("IconName"), "(<''>,)"); });
}

TEST_F(TrayItem, MenuFollowsWhatItShows) {
    whileThere([&] {
        running.app.state->version = "1.5 (60)";
        RunningProgram::settle();
        EXPECT_NE(tray.layout().find("1.5 (60)"), std::string::npos);
    });
}

TEST_F(TrayItem, ChosenEntryRunsItsAction) {
    whileThere([&] {
        tray.choose(1);
        RunningProgram::until("the action was run",
                              [&] { return running.app.count("version") == 1; });
    });
}

TEST_F(TrayItem, ActivatedItOpensTheMainWindow) {
    whileThere([&] {
        running.window("Kelo").close();
        tray.call("/StatusNotifierItem", "org.kde.StatusNotifierItem", "Activate", "(0, 0)");
        RunningProgram::until("it appears again", [&] { return running.app.count("appear") == 2; });
    });
}

TEST_F(TrayItem, SettingsEntryOpensTheSettings) {
    whileThere([&] {
        tray.choose(2);
        running.untilActive(running.window("Settings"));
    });
}

TEST_F(TrayItem, EachExtraHasAnItemOfItsOwnUntilTheyGo) {
    whileThere([&] {
        const auto connection = Gio::DBus::Connection::create_for_address_sync(
            Glib::getenv("DBUS_SESSION_BUS_ADDRESS"),
            Gio::DBus::ConnectionFlags::AUTHENTICATION_CLIENT |
                Gio::DBus::ConnectionFlags::MESSAGE_BUS_CONNECTION);
        gtk::ColorScheme scheme(nullptr);
        const platform::SceneGraph scenes{
            platform::MenuBarExtra{"One", "brain", {[] { return platform::Menu{}; }}},
            platform::MenuBarExtra{"Two", "brain", {[] { return platform::Menu{}; }}}};
        const auto titleAt = [&](const std::string& path) {
            std::string answer;
            bool isThere = false;
            connection->call(
                path, "org.freedesktop.DBus.Properties", "Get",
                Glib::VariantContainerBase(
                    g_variant_new("(ss)", "org.kde.StatusNotifierItem", "Title")),
                [&](const Glib::RefPtr<Gio::AsyncResult>& result) {
                    isThere = true;
                    try {
                        answer = connection->call_finish(result).print(false);
                    } catch (const Glib::Error&) {
                    }
                },
                connection->get_unique_name());
            RunningProgram::until("an answer", [&] { return isThere; });
            return answer;
        };
        {
            const gtk::MenuBarExtras extras(connection, scenes, scheme, {});
            EXPECT_EQ(titleAt("/StatusNotifierItem"), "(<'One'>,)");
            EXPECT_EQ(titleAt("/StatusNotifierItem/1"), "(<'Two'>,)");
        }
        EXPECT_EQ(titleAt("/StatusNotifierItem"), "");
        // They hear nothing any more.
        Gtk::Settings::get_default()->property_gtk_application_prefer_dark_theme() = true;
        connection->close_sync();
    });
}

} // namespace
} // namespace kelo::tests
