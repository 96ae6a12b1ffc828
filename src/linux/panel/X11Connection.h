#pragma once

#include "linux/window/X11Toolkit.h"

#include <X11/Xlib.h>

#include <string>
#include <vector>

namespace kelo::panel {

/// A rectangle in pixels, counted from the upper left corner of the root window.
struct PixelRectangle {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    friend bool operator==(const PixelRectangle&, const PixelRectangle&) = default;
};

/// Queries to the X server on the toolkit's connection. Each waits for the server, never for
/// another program. A window that no longer exists has no properties and an empty place.
class X11Connection {
public:
    explicit X11Connection(GdkDisplay* display) : gdk(display), x(window::xlibDisplay(display)) {}

    GdkDisplay* display() const { return gdk; }
    Display* xlib() const { return x; }
    Window root() const { return DefaultRootWindow(x); }
    // Size of the whole desktop in pixels.
    int width() const { return DisplayWidth(x, DefaultScreen(x)); }
    int height() const { return DisplayHeight(x, DefaultScreen(x)); }

    /// Whether a compositor blends windows at this moment. The toolkit knows only whether one did
    /// when the program started.
    bool isComposited() const;
    /// The type of the events that report changes of isComposited(). Changes of other selections
    /// have the same type. 0 if the server sends no such events.
    int selectionEvent() const;

    /// The first number of the events that report changes of monitors; 0 if the server sends none.
    int randrEvents() const;

    /// Has the server report changes of the root window's properties on this connection, in
    /// addition to what the toolkit has asked for.
    void followRootProperties() const;

    Atom atom(const char* name) const { return window::xlibAtom(gdk, name); }
    /// The items of a 32-bit property; empty if the window has no such property of this type.
    std::vector<unsigned long> property(Window window, const char* name, Atom type) const;
    /// The window manager's active window; None without a window manager.
    Window activeWindow() const;
    /// The managed windows, except docks and the desktop itself, topmost first. Hidden windows are
    /// among them.
    std::vector<Window> ordinaryWindows() const;
    /// Whether the window exists and can receive the keyboard focus.
    bool isViewable(Window window) const;
    /// The child of the root window that contains this window, or the window itself; None if the
    /// window no longer exists.
    Window toplevelOf(Window window) const;
    /// The child of the root window that is under the pointer; None if there is none.
    Window underPointer() const;
    /// The ordinary window under the pointer, its frame included; None if there is none.
    Window ordinaryWindowUnderPointer() const;
    /// Whether a window is one of this program's that no window manager manages: a panel or a menu.
    bool isUnmanagedAndOurs(Window window) const;
    /// The window must be a child of the root window.
    PixelRectangle placeOf(Window window) const;

private:
    GdkDisplay* gdk;
    Display* x;
};

} // namespace kelo::panel
