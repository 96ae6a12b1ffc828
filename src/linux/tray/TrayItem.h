#pragma once

#include "linux/tray/BusMenu.h"
#include "linux/tray/StatusNotifierItem.h"
#include "linux/tray/WatcherRegistration.h"
#include "platform/SceneGraph.h"

#include <functional>
#include <memory>
#include <string>

namespace kelo::tray {

/// A menu bar extra of the scene graph in the desktop's tray. If there is no tray, the item waits
/// for one. The user's choice runs in a later turn of the main loop, after the reply to the tray,
/// because the choice may end the program. Main thread only.
class TrayItem {
public:
    struct Handlers {
        /// The user chose the item itself instead of its menu.
        std::function<void()> activate;
        std::function<void()> openSettings;
        /// Called before the user's choice runs, with the activation token that the desktop sent
        /// for the window that the choice raises; empty if it sent none.
        std::function<void(std::string token)> chosen;
    };

    /// path: of the item on the bus. identifier: of the program, the same in every process of it.
    /// Throws Glib::Error if the item cannot be exported.
    TrayItem(const Glib::RefPtr<Gio::DBus::Connection>& connection, const std::string& path,
             const std::string& identifier, platform::MenuBarExtra extra, TrayIcon icon,
             Handlers handlers);

    /// Computes the menu again and tells hosts what changed, if anything.
    void redraw() { menu.redraw(); }
    /// Color of the icon (0xRRGGBB) in hosts that do not color it themselves.
    void setColor(std::uint32_t color) { item.setColor(color); }

private:
    void choose(const platform::MenuEntry& entry);
    void later(std::function<void()> action);

    std::shared_ptr<Handlers> handlers;
    BusMenu menu;
    StatusNotifierItem item;
    WatcherRegistration
        registration; ///< last: menu and item must exist before the watcher hears of them
};

} // namespace kelo::tray
