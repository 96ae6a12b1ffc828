#include "linux/gtk/application/StayingNotice.h"

#include "base/Translation.h"

#include <giomm/dbusconnection.h>
#include <giomm/notification.h>

namespace kelo::gtk {

namespace {

constexpr const char* identifier = "staying";
constexpr const char* group = "notices";

} // namespace

void StayingNotice::windowClosed() {
    const auto bus = application.get_dbus_connection();
    if (!bus || state.flag(group, identifier))
        return;
    question.emplace(bus::Connection::share(bus->gobj()), [this](bool hasTray) {
        if (!hasTray)
            show();
    });
}

void StayingNotice::windowOpened() {
    question.reset();
    application.withdraw_notification(identifier);
}

void StayingNotice::show() {
    const auto notice = Gio::Notification::create(translated("Kelo keeps running"));
    notice->set_body(translated("Start Kelo again to see its window."));
    notice->set_default_action("app.open");
    // For desktops that do nothing when a notification is clicked, as XFCE's does.
    notice->add_button(translated("Show Window"), "app.open");
    notice->add_button(translated("Quit"), "app.quit");
    application.send_notification(identifier, notice);
    state.setFlag(group, identifier, true);
    state.save();
}

} // namespace kelo::gtk
