#include "linux/panel/X11Keyboard.h"

#include <utility>

namespace kelo::panel {

void X11Keyboard::take() {
    Window focused = None;
    int revert = 0;
    XGetInputFocus(connection.xlib(), &focused, &revert);
    if (!isOurs(focused)) {
        previous = focused;
        previouslyActive = connection.activeWindow();
    }
    give(ours);
}

bool X11Keyboard::retake() {
    Window focused = None;
    int revert = 0;
    XGetInputFocus(connection.xlib(), &focused, &revert);
    if (!isNobody(focused))
        return false;
    give(ours);
    return true;
}

void X11Keyboard::giveBack() {
    Window focused = None;
    int revert = 0;
    XGetInputFocus(connection.xlib(), &focused, &revert);
    const Window before = std::exchange(previous, None);
    const Window activeBefore = std::exchange(previouslyActive, None);
    if (!isOurs(focused))
        return;
    const auto canHaveIt = [this](Window window) {
        return connection.isViewable(window) && !isOurs(window);
    };
    for (const Window candidate : {before, connection.activeWindow(), activeBefore})
        if (canHaveIt(candidate))
            return give(candidate);
    if (before == PointerRoot)
        return give(PointerRoot);
    for (const Window candidate : connection.ordinaryWindows())
        if (canHaveIt(candidate))
            return give(candidate);
    give(PointerRoot);
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

void X11Keyboard::give(Window window) const {
    const X11ErrorTrap trap(connection.display());
    // With CurrentTime, the request is newer than anything the window manager may still send, so
    // that cannot undo it. If the window has just been closed, the keyboard stays where it is.
    XSetInputFocus(connection.xlib(), window, RevertToPointerRoot, CurrentTime);
}

} // namespace kelo::panel
