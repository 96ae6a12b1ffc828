#include "testing/screen/Pointer.h"

#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>

#include <stdexcept>

namespace kelo::screen {

Pointer::Pointer(const XConnection& connection) : connection(connection) {
    int event = 0;
    int error = 0;
    int major = 0;
    int minor = 0;
    if (!XTestQueryExtension(connection.display(), &event, &error, &major, &minor))
        throw std::runtime_error("The X server has no XTEST extension.");
}

void Pointer::moveTo(Point point) const {
    XTestFakeMotionEvent(connection.display(), -1, point.x, point.y, CurrentTime);
    // Others may ask for the pointer's place over connections of their own.
    connection.sync();
}

void Pointer::down(unsigned button) const {
    XTestFakeButtonEvent(connection.display(), button, True, CurrentTime);
    connection.flush();
}

void Pointer::up(unsigned button) const {
    XTestFakeButtonEvent(connection.display(), button, False, CurrentTime);
    connection.flush();
}

void Pointer::click(Point point, unsigned button) const {
    moveTo(point);
    down(button);
    up(button);
}

} // namespace kelo::screen
