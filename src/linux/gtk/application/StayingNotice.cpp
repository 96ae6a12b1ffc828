#include "linux/gtk/application/StayingNotice.h"

#include "base/Translation.h"

#include <giomm/dbusconnection.h>
#include <giomm/notification.h>
#include <glibmm/error.h>
#include <glibmm/variant.h>

#include <memory>
#include <tuple>

namespace kelo::gtk {

namespace {

constexpr const char* identifier = "staying";
constexpr const char* group = "notices";
constexpr const char* watcher = "org.kde.StatusNotifierWatcher";

} // namespace

void StayingNotice::windowClosed() {
    const auto bus = application.get_dbus_connection();
    if (!bus || state.flag(group, identifier))
        return;
    isWanted = true;
    const auto answered =
        [this, bus, alive = std::weak_ptr(alive)](const Glib::RefPtr<Gio::AsyncResult>& result) {
            bool hasTray = false;
            try {
                const Glib::VariantContainerBase answer = bus->call_finish(result);
                hasTray = answer.print() == "(<true>,)";
            } catch (const Glib::Error&) {
                // Nobody on this desktop keeps a list of tray items.
            }
            if (!hasTray && !alive.expired() && isWanted)
                show();
        };
    bus->call("/StatusNotifierWatcher", "org.freedesktop.DBus.Properties", "Get",
              Glib::Variant<std::tuple<Glib::ustring, Glib::ustring>>::create(
                  {watcher, "IsStatusNotifierHostRegistered"}),
              answered, watcher, -1, Gio::DBus::CallFlags::NO_AUTO_START);
}

void StayingNotice::windowOpened() {
    isWanted = false;
    application.withdraw_notification(identifier);
}

void StayingNotice::show() {
    const auto notice = Gio::Notification::create(translated("Kelo keeps running"));
    notice->set_body(translated("Start Kelo again to see its window."));
    notice->set_default_action("app.open");
    notice->add_button(translated("Quit"), "app.quit");
    application.send_notification(identifier, notice);
    state.setFlag(group, identifier, true);
    state.save();
}

} // namespace kelo::gtk
