#pragma once

#include <gdk/x11/gdkx.h>

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

/// While it exists, errors of requests on the toolkit's X connection are ignored. Another program
/// may close its window at any moment, and an unexpected X error would end this program.
class X11ErrorTrap {
public:
    /// display: must be an X11 display.
    explicit X11ErrorTrap(GdkDisplay* display) : display(display) {
        gdk_x11_display_error_trap_push(display);
    }
    ~X11ErrorTrap() { gdk_x11_display_error_trap_pop_ignored(display); }
    X11ErrorTrap(const X11ErrorTrap&) = delete;
    X11ErrorTrap& operator=(const X11ErrorTrap&) = delete;

private:
    GdkDisplay* display;
};

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
