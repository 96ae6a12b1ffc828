#include "linux/panel/LayerShellPanel.h"

#include "linux/panel/MonitorScreen.h"
#include "linux/window/WindowIdentity.h"

#include <gtk4-layer-shell.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace kelo::panel {

namespace {

/// At most the voice panel's distance from the screen's edge, so that the window does not reach
/// beyond that edge.
constexpr int shadowMargin = 16;

GtkWindow* layerWindow(GtkWindow* window) {
    gtk_layer_init_for_window(window);
    return window;
}

} // namespace

bool LayerShellPanel::isSupported() {
    return gtk_layer_is_supported();
}

std::shared_ptr<LayerShellPanel>
LayerShellPanel::make(const platform::PanelDescription& description) {
    auto panel = std::make_shared<LayerShellPanel>(description);
    window::setWindowIdentity(panel->panelWindow().gtkWindow(), panel);
    return panel;
}

LayerShellPanel::LayerShellPanel(const platform::PanelDescription& description)
    : PlainPanel(description, description.hasShadow ? shadowMargin : 0),
      keyboard(layerWindow(panelWindow().gtkWindow()), description.canBecomeKeyWindow),
      monitors(gobject::GObjectPointer<GListModel>::share(
          gdk_display_get_monitors(gtk_widget_get_display(panelWindow().widget())))) {
    GtkWindow* const window = panelWindow().gtkWindow();
    gtk_layer_set_namespace(window, "kelo-voice");
    // Compositors draw full-screen windows between these two layers.
    const bool overFullScreen =
        (description.collectionBehavior & platform::collection_behavior::fullScreenAuxiliary) != 0;
    gtk_layer_set_layer(window,
                        overFullScreen ? GTK_LAYER_SHELL_LAYER_OVERLAY : GTK_LAYER_SHELL_LAYER_TOP);
    gtk_layer_set_anchor(window, GTK_LAYER_SHELL_EDGE_BOTTOM, TRUE);
    LayerShellPanel::setFrameOrigin(
        {description.contentRectangle.x, description.contentRectangle.y});
    // Some compositors tell nobody that the surfaces on a monitor have gone with it.
    const auto changed = +[](LayerShellPanel* self) {
        self->reaction.whenIdle([self] { self->monitorsChanged(); });
    };
    g_signal_connect_swapped(monitors.get(), "items-changed", reinterpret_cast<GCallback>(changed),
                             this);
}

LayerShellPanel::~LayerShellPanel() {
    g_signal_handlers_disconnect_by_data(monitors.get(), this);
}

void LayerShellPanel::setFrameOrigin(platform::Point origin) {
    PlainPanel::setFrameOrigin(origin);
    const PanelWindow& panel = panelWindow();
    const platform::Rectangle free =
        firstMonitor(gtk_widget_get_display(panel.widget())).value_or(platform::Rectangle());
    const auto distance = [&](double fromEdge) {
        return std::max(0, wholePoints(fromEdge) - panel.margin());
    };
    const bool centred = std::abs(origin.x + panel.size().width / 2 - free.midX()) < 1;
    GtkWindow* const window = panel.gtkWindow();
    gtk_layer_set_anchor(window, GTK_LAYER_SHELL_EDGE_LEFT, !centred);
    gtk_layer_set_margin(window, GTK_LAYER_SHELL_EDGE_LEFT,
                         centred ? 0 : distance(origin.x - free.x));
    gtk_layer_set_margin(window, GTK_LAYER_SHELL_EDGE_BOTTOM, distance(origin.y - free.minY()));
}

void LayerShellPanel::setScreensHandler(std::function<void()> handler) {
    screensChanged = std::move(handler);
}

void LayerShellPanel::makeKeyAndOrderFront() {
    const bool isAway = isVisible() && !gtk_window_is_active(panelWindow().gtkWindow());
    // A compositor gives the keyboard to a window that appears, and to no other one that asks.
    if (isAway)
        PlainPanel::orderOut();
    appear();
}

void LayerShellPanel::appear() {
    if (!isVisible()) {
        monitor = gobject::GObjectPointer<GdkMonitor>::adopt(
            static_cast<GdkMonitor*>(g_list_model_get_item(monitors.get(), 0)));
        gtk_layer_set_monitor(panelWindow().gtkWindow(), monitor.get());
        keyboard.panelAppears();
    }
    PlainPanel::makeKeyAndOrderFront();
}

void LayerShellPanel::orderOut() {
    PlainPanel::orderOut();
    keyboard.panelLeft();
}

void LayerShellPanel::monitorsChanged() {
    if (!isVisible())
        return;
    if (g_list_model_get_n_items(monitors.get()) == 0)
        return panelWindow().leave();
    // First, because it places the panel for the monitor on which it is about to appear.
    if (screensChanged)
        screensChanged();
    const auto first = gobject::GObjectPointer<GdkMonitor>::adopt(
        static_cast<GdkMonitor*>(g_list_model_get_item(monitors.get(), 0)));
    if (first.get() == monitor.get())
        return;
    PlainPanel::orderOut();
    appear();
}

} // namespace kelo::panel
