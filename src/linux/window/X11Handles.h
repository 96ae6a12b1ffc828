#pragma once

#include <X11/Xlib.h>

#include <memory>
#include <optional>

namespace kelo::window {

struct XFreeDeleter {
    void operator()(void* memory) const { XFree(memory); }
};

/// Memory that Xlib has allocated for a reply.
template <typename T>
using XMemory = std::unique_ptr<T, XFreeDeleter>;

/// Where the pointer is.
struct PointerPlace {
    /// In pixels, counted from the upper left corner of the root window.
    int x;
    int y;
    /// The window's child that contains the pointer, or None.
    Window child;
};

/// Asks the server where the pointer is in relation to a window. Empty if the pointer is on another
/// screen, or if the window no longer exists.
std::optional<PointerPlace> pointerPlace(Display* display, Window window);

} // namespace kelo::window
