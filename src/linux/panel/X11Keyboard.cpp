#include "linux/panel/X11Keyboard.h"

#include "linux/window/X11Handles.h"

#include <utility>

namespace kelo::panel {

void X11Keyboard::take() {
    const Window now = focused();
    if (!isOurs(now)) {
        previous = now;
        previouslyActive = connection.activeWindow();
    }
    give(ours, CurrentTime);
}

bool X11Keyboard::retake() {
    if (!isNobody(focused()))
        return false;
    takeAgain();
    return true;
}

void X11Keyboard::giveBack(Time time, Window preferred) {
    const Window before = std::exchange(previous, None);
    const Window activeBefore = std::exchange(previouslyActive, None);
    if (!hasKeyboard())
        return;
    const auto canHaveIt = [this](Window window) {
        return connection.isViewable(window) && !isOurs(window);
    };
    for (const Window candidate : {preferred, before, connection.activeWindow(), activeBefore})
        if (canHaveIt(candidate))
            return giveFromUs(candidate, time);
    if (before == PointerRoot)
        return giveFromUs(PointerRoot, time);
    for (const Window candidate : connection.ordinaryWindows())
        if (canHaveIt(candidate))
            return giveFromUs(candidate, time);
    giveFromUs(PointerRoot, time);
}

bool X11Keyboard::isOurs(Window focused) const {
    if (focused == None || focused == PointerRoot)
        return false;
    return focused == ours || connection.toplevelOf(focused) == ours;
}

bool X11Keyboard::isNobody(Window focused) const {
    if (focused == None || focused == PointerRoot)
        return true;
    const Window toplevel = connection.toplevelOf(focused);
    if (toplevel == None || toplevel == connection.root())
        return false;
    const PixelRectangle place = connection.placeOf(toplevel);
    return place.x + place.width <= 0 || place.y + place.height <= 0 ||
           place.x >= connection.width() || place.y >= connection.height();
}

Window X11Keyboard::focused() const {
    Window window = None;
    int revert = 0;
    XGetInputFocus(connection.xlib(), &window, &revert);
    return window;
}

bool X11Keyboard::hasKeyboard() const {
    return isOurs(focused());
}

// The server is held, because a window manager may give the keyboard to the window that was clicked
// between the question and the request, and would believe from then on that the window has it.
void X11Keyboard::giveFromUs(Window window, Time time) const {
    XGrabServer(connection.xlib());
    if (hasKeyboard())
        give(window, time);
    XUngrabServer(connection.xlib());
    XFlush(connection.xlib());
}

void X11Keyboard::give(Window window, Time time) const {
    const window::X11ErrorTrap trap(connection.display());
    // With CurrentTime, the request is newer than anything the window manager may still send, so
    // that cannot undo it. If the window has just been closed, the keyboard stays where it is.
    XSetInputFocus(connection.xlib(), window, RevertToPointerRoot, time);
}

} // namespace kelo::panel
