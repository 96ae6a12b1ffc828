#pragma once

#include "linux/gobject/MainLoopSource.h"

#include <gtk/gtk.h>

namespace kelo::panel {

/// Gets the keyboard for a layer surface when it appears, and lets the user take it away with a
/// click into another window. Main thread only.
///
/// A surface that asks for the keyboard on demand gets it at once from some compositors. Others
/// wait for a click into it, or take the keyboard back. Those are asked to give it exclusively,
/// until they take it away nevertheless, which is how they answer a click into another window.
class LayerShellKeyboard {
public:
    /// window: set up for the layer shell, and longer there than this. mayHave: whether it may ever
    /// have the keyboard.
    LayerShellKeyboard(GtkWindow* window, bool mayHave);
    ~LayerShellKeyboard();
    LayerShellKeyboard(const LayerShellKeyboard&) = delete;
    LayerShellKeyboard& operator=(const LayerShellKeyboard&) = delete;

    /// To be called before the window is shown.
    void panelAppears();
    /// To be called after the window has been hidden.
    void panelLeft();

private:
    enum class Request { none, onDemand, exclusive };

    void ask(Request request);
    void activityChanged();

    GtkWindow* window;
    bool mayHave;
    Request request = Request::none;
    /// Runs out when a compositor that gives the keyboard by itself has had the time to do so.
    gobject::ScheduledJob patience;
    unsigned long activity;
};

} // namespace kelo::panel
