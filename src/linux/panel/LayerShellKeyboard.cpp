#include "linux/panel/LayerShellKeyboard.h"

#include <gtk4-layer-shell.h>

namespace kelo::panel {

namespace {

/// From the first frame to the keyboard. Compositors that give it do so with that frame.
constexpr std::chrono::milliseconds timeToGiveIt{150};
/// The version of the protocol with the request for the keyboard on demand.
constexpr unsigned onDemandSince = 4;

} // namespace

LayerShellKeyboard::LayerShellKeyboard(GtkWindow* window, bool mayHave)
    : window(window), mayHave(mayHave) {
    const auto changed = +[](LayerShellKeyboard* self) { self->activityChanged(); };
    activity = g_signal_connect_swapped(window, "notify::is-active",
                                        reinterpret_cast<GCallback>(changed), this);
    ask(mayHave ? Request::onDemand : Request::none);
}

LayerShellKeyboard::~LayerShellKeyboard() {
    g_signal_handler_disconnect(window, activity);
}

void LayerShellKeyboard::panelAppears() {
    if (!mayHave)
        return;
    ask(Request::onDemand);
    patience.after(timeToGiveIt, [this] {
        if (!gtk_window_is_active(window))
            ask(Request::exclusive);
    });
}

void LayerShellKeyboard::panelLeft() {
    patience.cancel();
    if (mayHave)
        ask(Request::onDemand);
}

// Without the keyboard on demand, the choice is between always and never.
void LayerShellKeyboard::ask(Request wanted) {
    if (wanted == Request::onDemand && gtk_layer_get_protocol_version() < onDemandSince)
        wanted = Request::exclusive;
    request = wanted;
    gtk_layer_set_keyboard_mode(window, wanted == Request::none ? GTK_LAYER_SHELL_KEYBOARD_MODE_NONE
                                        : wanted == Request::onDemand
                                            ? GTK_LAYER_SHELL_KEYBOARD_MODE_ON_DEMAND
                                            : GTK_LAYER_SHELL_KEYBOARD_MODE_EXCLUSIVE);
}

void LayerShellKeyboard::activityChanged() {
    if (gtk_window_is_active(window) || !gtk_widget_get_mapped(GTK_WIDGET(window)))
        return;
    // Nobody clicks elsewhere in the moment in which the panel appears.
    if (patience.isWaiting()) {
        patience.cancel();
        ask(Request::exclusive);
    } else if (request == Request::exclusive) {
        ask(Request::onDemand);
    }
}

} // namespace kelo::panel
