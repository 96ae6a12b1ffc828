#pragma once

#include "linux/gtk/kit/Redrawing.h"
#include "platform/SceneGraph.h"

#include <giomm/dbusconnection.h>
#include <sigc++/connection.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kelo::tray {
class TrayItem;
}

namespace kelo::gtk {

class ColorScheme;

/// The menu bar extras of a scene graph in the desktop's tray, until this goes.
class MenuBarExtras {
public:
    struct Handlers {
        std::function<void()> openMainWindow;
        std::function<void()> openSettings;
    };

    /// The connection may be null: then there is no tray. The color scheme must outlive this.
    MenuBarExtras(const Glib::RefPtr<Gio::DBus::Connection>& connection,
                  const platform::SceneGraph& scenes, ColorScheme& colorScheme,
                  const Handlers& handlers);
    ~MenuBarExtras();
    MenuBarExtras(const MenuBarExtras&) = delete;
    MenuBarExtras& operator=(const MenuBarExtras&) = delete;

private:
    void add(const Glib::RefPtr<Gio::DBus::Connection>& connection,
             const platform::MenuBarExtra& extra, const Handlers& handlers);
    std::uint32_t iconColor() const;

    ColorScheme& colorScheme;
    std::vector<std::unique_ptr<tray::TrayItem>> items;
    std::vector<Redrawing> redrawings;
    sigc::connection following;
};

} // namespace kelo::gtk
