#pragma once

#include "linux/panel/X11Connection.h"

namespace kelo::panel {

/// Takes the keyboard for a window that the window manager does not manage, and gives it back to
/// the window that had it. Main thread only.
class X11Keyboard {
public:
    X11Keyboard(X11Connection connection, Window ours) : connection(connection), ours(ours) {}

    /// Takes the keyboard and remembers which other window has it. Our window must be viewable.
    void take();
    /// Takes the keyboard without remembering who has it, because it had been ours.
    void takeAgain() const { give(ours, CurrentTime); }
    /// Gives the keyboard to another window of ours, which must be viewable.
    void passTo(Window window) const { give(window, CurrentTime); }
    /// Takes the keyboard again if it has gone to nobody: to no window, or to one outside the
    /// screen, where window managers keep a focus that no program is to have. Returns whether it
    /// was so.
    bool retake();
    /// Gives the keyboard back. Call it while our window is still on the screen, with the time of
    /// the user's action or CurrentTime, and with the window that the user has clicked. Does
    /// nothing if another window has taken the keyboard in the meantime: the user chose that one
    /// later. If the earlier window no longer exists, the active window gets the keyboard, or else
    /// the topmost one, because a window manager restores only a focus that it has set itself.
    void giveBack(Time time = CurrentTime, Window preferred = None);
    /// Whether our window or one inside it has the keyboard.
    bool hasKeyboard() const;
    /// Whether this is our window or one inside it.
    bool isOurs(Window focused) const;

private:
    void give(Window window, Time time) const;
    void giveFromUs(Window window, Time time) const;
    Window focused() const;
    bool isNobody(Window focused) const;

    X11Connection connection;
    Window ours;
    Window previous = None;
    Window previouslyActive = None;
};

} // namespace kelo::panel
