#include "linux/input/xkb/X11KeyboardFocus.h"

#include "linux/window/X11Handles.h"
#include "linux/window/X11Toolkit.h"

namespace kelo::input {

X11KeyboardFocus::X11KeyboardFocus(GdkDisplay* display)
    : display(gobject::GObjectPointer<GdkDisplay>::share(display)) {}

bool X11KeyboardFocus::isOurs() const {
    // Only on the toolkit's own connection does the answer include the toolkit's latest requests.
    Window focus = None;
    int revertTo = RevertToNone;
    XGetInputFocus(window::xlibDisplay(display.get()), &focus, &revertTo);
    if (focus == PointerRoot)
        return isUnderPointer();
    return focus != None && window::isOurWindow(display.get(), focus);
}

// Without a window manager, the window under the pointer has the keyboard.
bool X11KeyboardFocus::isUnderPointer() const {
    Display* const connection = window::xlibDisplay(display.get());
    Window window = DefaultRootWindow(connection);
    bool ours = false;
    const window::X11ErrorTrap trap(display.get());
    while (window != None && !ours) {
        const auto pointer = window::pointerPlace(connection, window);
        window = pointer ? pointer->child : None;
        ours = window != None && window::isOurWindow(display.get(), window);
    }
    return ours;
}

} // namespace kelo::input
