#include "linux/panel/DesktopPanels.h"

#include "base/Translation.h"
#include "linux/panel/MonitorScreen.h"
#include "linux/panel/PlainPanel.h"
#include "linux/panel/X11Panel.h"
#include "linux/panel/X11Screens.h"
#include "linux/window/X11Toolkit.h"

#ifdef KELO_LAYER_SHELL
#include "linux/panel/LayerShellPanel.h"
#endif

#include <gdk/wayland/gdkwayland.h>
#include <gtk/gtk.h>

namespace kelo::panel {

namespace {

#ifdef KELO_LAYER_SHELL
bool canUseLayerShell() {
    return LayerShellPanel::isSupported();
}
std::shared_ptr<platform::Panel> layerPanel(const platform::PanelDescription& description) {
    return LayerShellPanel::make(description);
}
#else
bool canUseLayerShell() {
    return false;
}
std::shared_ptr<platform::Panel> layerPanel(const platform::PanelDescription&) {
    return nullptr;
}
#endif

/// Null when no display can be opened.
GdkDisplay* openDisplay() {
    return gtk_init_check() ? gdk_display_get_default() : nullptr;
}

/// Whether the compositor has it, with or without a library to use it. The library itself warns of
/// a compositor that does not, which is no fault of anybody's.
bool hasLayerShell(GdkDisplay* display) {
    return GDK_IS_WAYLAND_DISPLAY(display) &&
           gdk_wayland_display_query_registry(display, "zwlr_layer_shell_v1");
}

/// Pixels per point. The toolkit uses the same factor for every monitor of an X11 display.
int scaleOf(GdkDisplay* display) {
    const auto monitor = gobject::GObjectPointer<GdkMonitor>::adopt(
        static_cast<GdkMonitor*>(g_list_model_get_item(gdk_display_get_monitors(display), 0)));
    return monitor ? gdk_monitor_get_scale_factor(monitor.get()) : 1;
}

std::optional<platform::Rectangle> x11WorkArea(GdkDisplay* display) {
    const X11Connection connection(display);
    const auto area = X11Screens(connection).mainWorkArea();
    if (!area)
        return std::nullopt;
    const double scale = scaleOf(display);
    return platform::Rectangle{area->x / scale,
                               (connection.height() - area->y - area->height) / scale,
                               area->width / scale, area->height / scale};
}

bool floats(const platform::PanelDescription& description) {
    return description.floatingPanel || description.level == platform::WindowLevel::floating;
}

} // namespace

std::shared_ptr<platform::Panel> DesktopPanels::makePanel(platform::PanelDescription description) {
    GdkDisplay* const display = openDisplay();
    if (!display)
        return nullptr;
    if (!floats(description))
        return PlainPanel::make(description);
    if (window::isX11(display))
        return X11Panel::make(display, description);
    if (hasLayerShell(display) && canUseLayerShell())
        return layerPanel(description);
    return PlainPanel::make(description);
}

std::optional<platform::Screen> DesktopPanels::mainScreen() const {
    GdkDisplay* const display = openDisplay();
    if (!display)
        return std::nullopt;
    const auto area = window::isX11(display) ? x11WorkArea(display) : firstMonitor(display);
    return area ? std::optional(platform::Screen{*area}) : std::nullopt;
}

std::string panelStatus() {
    GdkDisplay* const display = openDisplay();
    if (!display)
        return translated(
            "The voice panel cannot be shown, because no display can be opened; start Kelo from "
            "within a graphical session.");
    if (window::isX11(display))
        return translated("The voice panel floats over all windows and takes the keyboard (X11).");
    if (!hasLayerShell(display))
        return translated(
            "The voice panel is an ordinary window that the desktop may put behind others, because "
            "this Wayland desktop has no layer shell; keep the window on top with the desktop's "
            "own means, or log in to an X11 session.");
    if (canUseLayerShell())
        return translated(
            "The voice panel floats over all windows and takes the keyboard (Wayland, layer "
            "shell).");
    return translated(
        "The voice panel is an ordinary window that the desktop may put behind others, "
        "because this build of Kelo was made without gtk4-layer-shell; install a build with "
        "it, or keep the window on top with the desktop's own means.");
}

} // namespace kelo::panel
