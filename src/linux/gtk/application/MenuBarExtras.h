#pragma once

#include "linux/gtk/kit/Redrawing.h"
#include "platform/SceneGraph.h"

#include <giomm/dbusconnection.h>
#include <sigc++/trackable.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kelo::tray {
class TrayItem;
}

namespace kelo::gtk {

class ColorScheme;

/// Shows the menu bar extras of a scene graph in the desktop's tray. Main thread only.
class MenuBarExtras : public sigc::trackable {
public:
    struct Handlers {
        std::function<void()> openMainWindow;
        std::function<void()> openSettings;
    };

    /// A null connection means that there is no tray. The color scheme must outlive this object.
    MenuBarExtras(const Glib::RefPtr<Gio::DBus::Connection>& connection,
                  const platform::SceneGraph& scenes, ColorScheme& colorScheme,
                  const Handlers& handlers);
    ~MenuBarExtras();
    MenuBarExtras(const MenuBarExtras&) = delete;
    MenuBarExtras& operator=(const MenuBarExtras&) = delete;

private:
    void add(const Glib::RefPtr<Gio::DBus::Connection>& connection,
             const platform::MenuBarExtra& extra, const Handlers& handlers);
    void updateColor();
    std::uint32_t iconColor() const;

    ColorScheme& colorScheme;
    std::vector<std::unique_ptr<tray::TrayItem>> items;
    std::vector<Redrawing> redrawings;
};

} // namespace kelo::gtk
