#include "linux/window/X11Handles.h"

namespace kelo::window {

std::optional<PointerPlace> pointerPlace(Display* display, Window window) {
    Window root = None;
    Window child = None;
    int rootX = 0;
    int rootY = 0;
    int windowX = 0;
    int windowY = 0;
    unsigned buttons = 0;
    if (!XQueryPointer(display, window, &root, &child, &rootX, &rootY, &windowX, &windowY,
                       &buttons))
        return std::nullopt;
    return PointerPlace{rootX, rootY, child};
}

} // namespace kelo::window
