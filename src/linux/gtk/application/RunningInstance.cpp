#include "linux/gtk/application/RunningInstance.h"

#include "deployment/Deployment.h"

#include <giomm/dbusconnection.h>
#include <giomm/init.h>
#include <glibmm/error.h>
#include <glibmm/miscutils.h>
#include <gtkmm/application.h>

#include <algorithm>
#include <map>

namespace kelo::gtk {

namespace {

using Parameters = std::vector<Glib::VariantBase>;
using Data = std::map<Glib::ustring, Glib::VariantBase>;

std::string objectPath() {
    std::string path = "/" + std::string(deployment::applicationIdentifier);
    std::replace(path.begin(), path.end(), '.', '/');
    return path;
}

// With this data the running process may bring a window to the front, if the action opens one.
Data startUpData() {
    Data data;
    const auto add = [&data](const char* variable, const char* name) {
        if (const auto value = Glib::getenv(variable); !value.empty())
            data[name] = Glib::Variant<Glib::ustring>::create(value);
    };
    add("XDG_ACTIVATION_TOKEN", "activation-token");
    add("DESKTOP_STARTUP_ID", "desktop-startup-id");
    return data;
}

} // namespace

bool askRunningInstance(const std::vector<std::string>& actions, const std::optional<Url>& page) {
    constexpr int milliseconds = 5000;
    const std::string name(deployment::applicationIdentifier);
    try {
        Gio::init();
        const auto bus = Gio::DBus::Connection::get_sync(Gio::DBus::BusType::SESSION);
        const auto ask = [&](const std::string& action, const Parameters& parameters) {
            bus->call_sync(objectPath(), "org.freedesktop.Application", "ActivateAction",
                           Glib::Variant<std::tuple<Glib::ustring, Parameters, Data>>::create(
                               {action, parameters, startUpData()}),
                           name, milliseconds, Gio::DBus::CallFlags::NO_AUTO_START);
        };
        for (const auto& action : actions)
            ask(action, {});
        if (page)
            ask(showPageAction, {Glib::Variant<Glib::ustring>::create(page->absoluteString())});
        return true;
    } catch (const Glib::Error&) {
        return false;
    }
}

// The program that runs may be at its end, and then breaks the conversation off. The next attempt
// no longer finds it. What else may be wrong, the toolkit reports when the application runs.
void registerApplication(Gtk::Application& application) {
    constexpr int mostAttempts = 5;
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        try {
            application.register_application();
            return;
        } catch (const Glib::Error& error) {
            if (!error.matches(G_DBUS_ERROR, G_DBUS_ERROR_NO_REPLY))
                return;
        }
    }
}

} // namespace kelo::gtk
