#include "linux/panel/PanelKeyboard.h"

#include <X11/Xatom.h>
#include <X11/extensions/XInput2.h>
#include <gtk/gtk.h>

#include <array>
#include <utility>

namespace kelo::panel {

namespace {

/// How often the panel takes the keyboard back from nobody while it is shown.
constexpr int mostRetakes = 3;
/// How often the panel takes the keyboard back from a window that got it after a dialog of ours.
constexpr int mostReclaims = 2;
/// How long the window manager has to act on a press before the keyboard is given back.
constexpr std::chrono::milliseconds turnOfTheManager{120};

Window numberOf(GtkWindow* window) {
    return window::xlibWindow(gtk_native_get_surface(GTK_NATIVE(window)));
}

} // namespace

PanelKeyboard::PanelKeyboard(X11Connection connection, GtkWindow* window, bool mayHave,
                             std::function<void(bool)> setAside)
    : connection(connection),
      panel(numberOf(window)),
      mayHave(mayHave),
      setAside(std::move(setAside)),
      keyboard(connection, panel),
      heldKey(connection),
      dialogs(window, [this](GtkWindow* appeared) { dialogsChanged(appeared); }) {}

void PanelKeyboard::panelShown() {
    isShown = true;
    watchPresses(true);
    leaving.cancel();
    reclaimsLeft = 0;
    waitsForDialog = dialogs.anyShown();
    setAside(waitsForDialog);
    if (!waitsForDialog) {
        XRaiseWindow(connection.xlib(), panel);
        take();
    }
    retakesLeft = mostRetakes;
}

void PanelKeyboard::panelLeaves() {
    isShown = false;
    watchPresses(false);
    leaving.cancel();
    waitsForDialog = false;
    const bool hadKeyboard = keyboard.hasKeyboard();
    keyboard.giveBack();
    if (hadKeyboard)
        heldKey.begin();
}

void PanelKeyboard::take() {
    if (mayHave && isShown)
        keyboard.take();
}

// A window manager that is still busy with a window that has just been closed takes the keyboard
// away for good, although the panel is newer. Limited, so that the two cannot fight without end.
void PanelKeyboard::lost() {
    if (!isShown)
        return;
    if (reclaimsLeft > 0) {
        --reclaimsLeft;
        keyboard.takeAgain();
    } else if (retakesLeft > 0 && keyboard.retake()) {
        --retakesLeft;
    }
}

// Only while the panel is shown, so that nobody's clicks wake the program for nothing.
void PanelKeyboard::watchPresses(bool wanted) const {
    std::array<unsigned char, XIMaskLen(XI_LASTEVENT)> bits{};
    if (wanted)
        XISetMask(bits.data(), XI_RawButtonPress);
    XIEventMask mask{XIAllMasterDevices, static_cast<int>(bits.size()), bits.data()};
    XISelectEvents(connection.xlib(), connection.root(), &mask, 1);
}

// Some window managers do not know that the panel has the keyboard. A click into the window that
// they believe has it changes nothing for them. The others go first, because mutter gives the
// keyboard to no window that is clicked if it changes hands at the same moment.
void PanelKeyboard::pressed(Time time) {
    reclaimsLeft = 0;
    if (!isShown)
        return;
    if (connection.isUnmanagedAndOurs(connection.underPointer()))
        return leaving.cancel();
    retakesLeft = 0;
    pressTime = time;
    pressedWindow = connection.ordinaryWindowUnderPointer();
    if (!leaving.isWaiting())
        leaving.after(turnOfTheManager, [this] { keyboard.giveBack(pressTime, pressedWindow); });
}

// The panel lies above all managed windows, so a dialog would open behind it, unseen. Lowering the
// panel is not enough: mutter draws windows that it does not manage above all others in any case.
void PanelKeyboard::dialogsChanged(GtkWindow* appeared) {
    dialogToFocus = None;
    if (!isShown)
        return;
    if (appeared) {
        // A dialog that follows another comes before the window manager has seen the first one go.
        const bool isReclaiming = std::exchange(reclaimsLeft, 0) > 0;
        // The window manager may have given the keyboard to the dialog already, of which the panel
        // has yet to hear.
        waitsForDialog = waitsForDialog || isReclaiming || isFocused || keyboard.hasKeyboard();
        dialogToFocus = numberOf(appeared);
        setAside(true);
    } else {
        setAside(false);
        XRaiseWindow(connection.xlib(), panel);
        // The window manager has yet to learn that the dialog has gone, and then chooses a window.
        reclaimsLeft = waitsForDialog ? mostReclaims : 0;
        if (std::exchange(waitsForDialog, false) && mayHave)
            keyboard.takeAgain();
    }
    XFlush(connection.xlib());
}

// The toolkit relies on the window manager to mark the active window, but the panel is not managed.
// Without the mark, no caret blinks and pages run as if they were in the background.
void PanelKeyboard::noteFocus(bool focused) const {
    const std::array<Atom, 1> state{connection.atom("_NET_WM_STATE_FOCUSED")};
    XChangeProperty(connection.xlib(), panel, connection.atom("_NET_WM_STATE"), XA_ATOM, 32,
                    PropModeReplace, reinterpret_cast<const unsigned char*>(state.data()),
                    focused ? 1 : 0);
}

void PanelKeyboard::handle(const XEvent& event) {
    heldKey.handle(event);
    // The panel took the keyboard later than the last input that the window manager knows of, so
    // the server may ignore what the manager does for the dialog.
    if (event.type == MapNotify && dialogToFocus != None && event.xmap.window == dialogToFocus &&
        keyboard.hasKeyboard())
        keyboard.passTo(std::exchange(dialogToFocus, Window(None)));
    if (event.type != GenericEvent || !event.xcookie.data)
        return;
    if (event.xcookie.evtype == XI_RawButtonPress) {
        const auto& press = *static_cast<const XIRawEvent*>(event.xcookie.data);
        // Buttons 4 to 7 are the wheel.
        if (press.detail < 4 || press.detail > 7)
            pressed(press.time);
    } else if (event.xcookie.evtype == XI_FocusIn || event.xcookie.evtype == XI_FocusOut) {
        handleFocus(event);
    }
}

void PanelKeyboard::handleFocus(const XEvent& event) {
    const auto& focus = *static_cast<const XIFocusInEvent*>(event.xcookie.data);
    // An open menu grabs the keyboard without taking the focus.
    const bool ofAGrab = focus.mode == XINotifyGrab || focus.mode == XINotifyUngrab;
    if (focus.event != panel || ofAGrab || focus.detail == XINotifyPointer)
        return;
    isFocused = event.xcookie.evtype == XI_FocusIn;
    noteFocus(isFocused);
    if (!isFocused)
        lost();
}

} // namespace kelo::panel
