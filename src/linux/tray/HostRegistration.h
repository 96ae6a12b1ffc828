#pragma once

#include <giomm/dbusconnection.h>

#include <string>

namespace kelo::tray {

/// Announces an item to the desktop's tray: now, when a tray appears later, and again each time it
/// has been restarted. The item must be exported before. There is no word for taking it back: the
/// tray drops an item when its program has left the bus.
class HostRegistration {
public:
    HostRegistration(const Glib::RefPtr<Gio::DBus::Connection>& connection, std::string itemPath);
    ~HostRegistration();
    HostRegistration(const HostRegistration&) = delete;
    HostRegistration& operator=(const HostRegistration&) = delete;

private:
    guint watch = 0;
};

} // namespace kelo::tray
