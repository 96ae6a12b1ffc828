#include "linux/panel/LayerShellPanel.h"

#include "linux/panel/MonitorScreen.h"
#include "linux/window/WindowIdentity.h"

#include <gtk4-layer-shell.h>

#include <algorithm>
#include <cmath>

namespace kelo::panel {

namespace {

/// At most the voice panel's distance from the screen's edge, so that the window does not reach
/// beyond that edge.
constexpr int shadowMargin = 16;

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
    : PlainPanel(description, description.hasShadow ? shadowMargin : 0) {
    GtkWindow* const window = panelWindow().gtkWindow();
    gtk_layer_init_for_window(window);
    gtk_layer_set_namespace(window, "kelo-voice");
    // Compositors draw full-screen windows between these two layers.
    const bool overFullScreen =
        (description.collectionBehavior & platform::collection_behavior::fullScreenAuxiliary) != 0;
    gtk_layer_set_layer(window,
                        overFullScreen ? GTK_LAYER_SHELL_LAYER_OVERLAY : GTK_LAYER_SHELL_LAYER_TOP);
    gtk_layer_set_keyboard_mode(window, description.canBecomeKeyWindow
                                            ? GTK_LAYER_SHELL_KEYBOARD_MODE_ON_DEMAND
                                            : GTK_LAYER_SHELL_KEYBOARD_MODE_NONE);
    gtk_layer_set_anchor(window, GTK_LAYER_SHELL_EDGE_BOTTOM, TRUE);
    LayerShellPanel::setFrameOrigin(
        {description.contentRectangle.x, description.contentRectangle.y});
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

} // namespace kelo::panel
