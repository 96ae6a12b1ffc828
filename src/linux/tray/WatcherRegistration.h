#pragma once

#include <giomm/dbusconnection.h>

#include <string>

namespace kelo::tray {

/// Registers an item with the desktop's StatusNotifierWatcher: now or as soon as there is one, and
/// again after each restart of the watcher. The item must already be exported. The protocol has no
/// call for the opposite: the watcher drops an item when the item's program leaves the bus.
class WatcherRegistration {
public:
    WatcherRegistration(const Glib::RefPtr<Gio::DBus::Connection>& connection,
                        std::string itemPath);
    ~WatcherRegistration();
    WatcherRegistration(const WatcherRegistration&) = delete;
    WatcherRegistration& operator=(const WatcherRegistration&) = delete;

private:
    guint watch = 0;
};

} // namespace kelo::tray
