#include "component/panel/Backdrop.h"

#include <X11/Xlib.h>

namespace kelo::test {

Backdrop::Backdrop() {
    XSetWindowAttributes attributes{};
    attributes.override_redirect = True;
    attributes.background_pixel = color;
    // Short of a line: a compositor lets go of a window that covers the screen entirely, and of
    // everything above it.
    identifier = XCreateWindow(own.display(), own.root(), 0, 0, unsigned(own.width()),
                               unsigned(own.height()) - 1, 0, CopyFromParent, InputOutput,
                               CopyFromParent, CWOverrideRedirect | CWBackPixel, &attributes);
    XMapRaised(own.display(), identifier);
    own.sync();
}

Backdrop::~Backdrop() {
    XDestroyWindow(own.display(), identifier);
    own.sync();
}

void Backdrop::redraw() const {
    XClearWindow(own.display(), identifier);
    own.sync();
}

} // namespace kelo::test
