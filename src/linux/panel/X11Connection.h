#pragma once

#include <gdk/x11/gdkx.h>

#include <X11/Xlib.h>

#include <string>
#include <vector>

namespace kelo::desktop {

/// Lets errors of X requests pass that are made while it lives: windows of other programs can go at
/// any moment.
class X11ErrorTrap {
public:
    explicit X11ErrorTrap(GdkDisplay* display) : display(display) {
        gdk_x11_display_error_trap_push(display);
    }
    ~X11ErrorTrap() { gdk_x11_display_error_trap_pop_ignored(display); }
    X11ErrorTrap(const X11ErrorTrap&) = delete;
    X11ErrorTrap& operator=(const X11ErrorTrap&) = delete;

private:
    GdkDisplay* display;
};

/// A rectangle in the pixels of the root window, from its upper left corner.
struct PixelRectangle {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    friend bool operator==(const PixelRectangle&, const PixelRectangle&) = default;
};

/// The toolkit's connection to the X server, and what is asked through it. Each question waits for
/// the server, never for another program. A window that is gone has no properties and no place.
class X11Connection {
public:
    explicit X11Connection(GdkDisplay* display)
        : gdk(display), x(gdk_x11_display_get_xdisplay(display)) {}

    GdkDisplay* display() const { return gdk; }
    Display* xlib() const { return x; }
    Window root() const { return DefaultRootWindow(x); }
    // Of the whole desktop, in pixels.
    int width() const { return DisplayWidth(x, DefaultScreen(x)); }
    int height() const { return DisplayHeight(x, DefaultScreen(x)); }

    /// Whether a compositor blends the windows of the display at this moment. The toolkit tells
    /// only whether one did when the program started.
    bool isComposited() const;
    /// The type of the events that tell of a change of it, among changes of other selections.
    int selectionEvent() const;

    Atom atom(const char* name) const { return gdk_x11_get_xatom_by_name_for_display(gdk, name); }
    /// The items of a 32-bit property; none when the window has no such property of that type.
    std::vector<unsigned long> property(Window window, const char* name, Atom type) const;
    /// What the window manager says is in use; None without one.
    Window activeWindow() const;
    /// Those the window manager manages, except docks and the desktop itself, from the uppermost
    /// down; also windows that are not on the screen.
    std::vector<Window> ordinaryWindows() const;
    /// Whether the window exists and can be given the keyboard.
    bool isViewable(Window window) const;
    /// The ancestor (or the window itself) right below the root; None when the window is gone.
    Window toplevelOf(Window window) const;
    /// Of a window below the root.
    PixelRectangle placeOf(Window window) const;

private:
    GdkDisplay* gdk;
    Display* x;
};

} // namespace kelo::desktop
