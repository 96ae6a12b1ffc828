#include "linux/panel/DesktopPanels.h"

#include "linux/panel/X11Panel.h"
#include "linux/panel/X11Screens.h"

#include <gdk/x11/gdkx.h>
#include <gtk/gtk.h>

namespace kelo::desktop {

namespace {

/// Points of the toolkit are pixels over one factor, the same for every monitor.
int scaleOf(GdkDisplay* display) {
    const auto monitor = GObjectPointer<GdkMonitor>::adopt(static_cast<GdkMonitor*>(
        g_list_model_get_item(gdk_display_get_monitors(display), 0)));
    return monitor ? gdk_monitor_get_scale_factor(monitor.get()) : 1;
}

std::optional<platform::Screen> x11Screen(GdkDisplay* display) {
    const X11Connection connection(display);
    const auto area = X11Screens(connection).mainWorkArea();
    if (!area)
        return std::nullopt;
    const double scale = scaleOf(display);
    return platform::Screen{{area->x / scale,
                             (connection.height() - area->y - area->height) / scale,
                             area->width / scale, area->height / scale}};
}

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
    if (GDK_IS_X11_DISPLAY(display))
        return x11Screen(display);
    return std::nullopt;
}

std::string panelStatus() {
    return "Voice panel: available.";
}

} // namespace kelo::desktop
