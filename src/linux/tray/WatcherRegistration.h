#pragma once

#include <giomm/dbusconnection.h>

#include <functional>
#include <memory>
#include <string>

namespace kelo::tray {

/// The trays that an item has to take into account.
enum class Tray {
    /// GNOME's shell opens the menu of an item that can be activated only when no second click has
    /// come.
    gnome,
    /// LXQt's panel draws nothing for an icon that it finds as SVG, if it has no plugin for that.
    lxqt,
    other,
};

/// Registers an item with the desktop's StatusNotifierWatcher: now or as soon as there is one, and
/// again after each restart of the watcher. The item must already be exported. The protocol has no
/// call for the opposite: the watcher drops an item when the item's program leaves the bus.
class WatcherRegistration {
public:
    /// Called before each registration.
    using Prepare = std::function<void(Tray tray)>;

    WatcherRegistration(Glib::RefPtr<Gio::DBus::Connection> connection, std::string itemPath,
                        Prepare prepare);
    ~WatcherRegistration();
    WatcherRegistration(const WatcherRegistration&) = delete;
    WatcherRegistration& operator=(const WatcherRegistration&) = delete;

private:
    void askForShell(const Glib::ustring& watcher);
    void askForProcess(const Glib::ustring& watcher);
    void registerItem(const Glib::ustring& watcher, Tray tray);
    /// Asks the bus itself. Answers null if it refuses, and not at all after the destructor.
    void askBus(const char* method, const Glib::ustring& name,
                std::function<void(const Glib::VariantContainerBase* answer)> answered);

    Glib::RefPtr<Gio::DBus::Connection> bus;
    std::string itemPath;
    Prepare prepare;
    std::shared_ptr<bool> alive = std::make_shared<bool>(true);
    guint watch = 0;
};

} // namespace kelo::tray
