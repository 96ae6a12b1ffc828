#pragma once

#include "linux/panel/X11Connection.h"

namespace kelo::panel {

/// Takes the keyboard for a window that the window manager does not manage, and gives it back to
/// whoever had it. Main thread only.
class X11Keyboard {
public:
    X11Keyboard(X11Connection connection, Window ours) : connection(connection), ours(ours) {}

    /// The window must be viewable. Remembers who has the keyboard, unless that is the window.
    void take();
    /// Nothing when another window has taken it from ours in the meantime: that one was chosen
    /// later. When the earlier owner is gone, the keyboard goes to the active window, else to the
    /// uppermost one: window managers do not look after a keyboard that they did not give. To be
    /// called while the window is still on the screen.
    void giveBack();
    /// The window or one inside it.
    bool isOurs(Window focused) const;

private:
    void give(Window window) const;

    X11Connection connection;
    Window ours;
    Window previous = None;
    Window previouslyActive = None;
};

} // namespace kelo::panel
