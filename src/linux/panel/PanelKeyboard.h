#pragma once

#include "linux/gobject/MainLoopSource.h"
#include "linux/panel/HeldKeyGrab.h"
#include "linux/panel/X11Connection.h"
#include "linux/panel/X11Keyboard.h"
#include "linux/window/DialogWatch.h"

#include <functional>

namespace kelo::panel {

/// Who has the keyboard while a panel is shown that no window manager manages: the panel, one of
/// our dialogs, or the window that the user clicks. A dialog also comes in front of the panel,
/// which would otherwise hide it. Main thread only.
class PanelKeyboard {
public:
    /// window: the panel's, realized, which lives longer than this. mayHave: whether the panel may
    /// ever have the keyboard. setAside: called while the panel is shown, with true when one of our
    /// dialogs needs its place and with false when the panel can be seen again.
    PanelKeyboard(X11Connection connection, GtkWindow* window, bool mayHave,
                  std::function<void(bool)> setAside);

    /// Whether a dialog of ours is open, for which the panel is set aside.
    bool dialogNeedsPlace() const { return dialogs.anyShown(); }
    /// The panel has appeared on the screen, or is asked for again while it is there. Puts it in
    /// front with the keyboard, unless a dialog is open.
    void panelShown();
    /// The panel is about to leave the screen. Gives the keyboard back.
    void panelLeaves();
    /// The user has clicked into the panel.
    void take();
    /// To be called with each event of the display.
    void handle(const XEvent& event);

private:
    void handleFocus(const XEvent& event);
    void watchPresses(bool wanted) const;
    /// The user has pressed a mouse button anywhere on the screen.
    void pressed(Time time);
    void lost();
    /// A dialog of this program has appeared; null: the last one has gone.
    void dialogsChanged(GtkWindow* appeared);
    void noteFocus(bool focused) const;

    X11Connection connection;
    Window panel;
    bool mayHave;
    std::function<void(bool)> setAside;
    X11Keyboard keyboard;
    HeldKeyGrab heldKey;
    bool isShown = false;
    /// Whether the panel has the keyboard according to the events that have been handled.
    bool isFocused = false;
    /// How often the keyboard may still be taken back from nobody during this show.
    int retakesLeft = 0;
    /// How often the keyboard may still be taken back from a window that got it from a dialog.
    int reclaimsLeft = 0;
    /// Whether the panel gets the keyboard when the last dialog has gone.
    bool waitsForDialog = false;
    /// The dialog that gets the keyboard as soon as it is on the screen.
    Window dialogToFocus = None;
    /// Gives the keyboard back after a press outside.
    gobject::ScheduledJob leaving;
    Time pressTime = CurrentTime;
    Window pressedWindow = None;
    // Last, because its handler uses the others.
    window::DialogWatch dialogs;
};

} // namespace kelo::panel
