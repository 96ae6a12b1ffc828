#pragma once

#include "linux/tray/BusMenu.h"
#include "linux/tray/HostRegistration.h"
#include "linux/tray/StatusNotifierItem.h"
#include "platform/SceneGraph.h"

#include <functional>
#include <memory>
#include <string>

namespace kelo::tray {

/// A menu bar extra of the scene graph in the desktop's tray, from its making until it goes. Where
/// there is no tray it waits for one. What the user chooses is run in a later turn of the main
/// loop, when the tray has its answer: it may be the program's end. Main thread only.
class TrayItem {
public:
    struct Handlers {
        /// The user asks for the program itself, not for its menu.
        std::function<void()> activate;
        std::function<void()> openSettings;
        /// Run before what the user chose, when the desktop gave along a token for the window that
        /// this is going to raise.
        std::function<void(std::string token)> useActivationToken;
    };

    /// The path is that of the item on the bus, the identifier is the program's and stays the same
    /// from start to start. Throws Glib::Error when the item cannot be exported.
    TrayItem(const Glib::RefPtr<Gio::DBus::Connection>& connection, const std::string& path,
             const std::string& identifier, platform::MenuBarExtra extra, TrayIcon icon,
             Handlers handlers);

    /// Tells hosts what has changed in the menu, if anything.
    void redraw() { menu.redraw(); }
    /// Of the icon where hosts do not color it themselves, 0xRRGGBB.
    void setColor(std::uint32_t color) { item.setColor(color); }

private:
    void choose(const platform::Menu::value_type& entry);
    void later(std::function<void()> action);

    std::shared_ptr<Handlers> handlers;
    BusMenu menu;
    StatusNotifierItem item;
    HostRegistration registration; ///< last: both must be there before a host hears of them
};

} // namespace kelo::tray
