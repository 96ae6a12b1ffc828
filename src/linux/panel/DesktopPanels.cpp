#include "linux/panel/DesktopPanels.h"

#include "linux/panel/X11Panel.h"

#include <gdk/x11/gdkx.h>
#include <gtk/gtk.h>

namespace kelo::desktop {

namespace {

/// Null when there is none to be had.
GdkDisplay* openDisplay() {
    return gtk_init_check() ? gdk_display_get_default() : nullptr;
}

} // namespace

std::shared_ptr<platform::Panel>
DesktopPanels::makePanel(platform::PanelDescription description) {
    GdkDisplay* const display = openDisplay();
    if (GDK_IS_X11_DISPLAY(display))
        return X11Panel::make(display, description);
    return nullptr;
}

std::optional<platform::Screen> DesktopPanels::mainScreen() const {
    GdkDisplay* const display = openDisplay();
    if (!display)
        return std::nullopt;
    GListModel* const monitors = gdk_display_get_monitors(display);
    const auto monitor = GObjectPointer<GdkMonitor>::adopt(
        static_cast<GdkMonitor*>(g_list_model_get_item(monitors, 0)));
    if (!monitor)
        return std::nullopt;
    GdkRectangle area{};
    gdk_monitor_get_geometry(monitor.get(), &area);
    return platform::Screen{{double(area.x), double(area.y), double(area.width),
                             double(area.height)}};
}

std::string panelStatus() {
    return "Voice panel: available.";
}

} // namespace kelo::desktop
