#include "linux/window/X11Toolkit.h"

#include <gdk/x11/gdkx.h>

#include <X11/Xatom.h>

// Nothing takes the place of these functions. The panel and the modifier keys need the X server
// itself, which a program can only reach on the toolkit's connection.
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace kelo::window {

bool isX11(GdkDisplay* display) {
    return display && GDK_IS_X11_DISPLAY(display);
}

bool isX11(GdkSurface* surface) {
    return surface && GDK_IS_X11_SURFACE(surface);
}

Display* xlibDisplay(GdkDisplay* display) {
    return gdk_x11_display_get_xdisplay(display);
}

Window xlibWindow(GdkSurface* surface) {
    return gdk_x11_surface_get_xid(surface);
}

bool isOurWindow(GdkDisplay* display, Window window) {
    return gdk_x11_surface_lookup_for_display(display, window) != nullptr;
}

Atom xlibAtom(GdkDisplay* display, const char* name) {
    return gdk_x11_get_xatom_by_name_for_display(display, name);
}

int xinputDevice(GdkDevice* device) {
    return gdk_x11_device_get_id(device);
}

// The server tells its time with events alone, and a change of a property causes one.
unsigned serverTime(GdkDisplay* display) {
    Display* const x = xlibDisplay(display);
    XSetWindowAttributes attributes{};
    attributes.event_mask = PropertyChangeMask;
    const Window window = XCreateWindow(x, DefaultRootWindow(x), 0, 0, 1, 1, 0, 0, InputOnly,
                                        CopyFromParent, CWEventMask, &attributes);
    XChangeProperty(x, window, XA_WM_NAME, XA_STRING, 8, PropModeAppend, nullptr, 0);
    XEvent event;
    XWindowEvent(x, window, PropertyChangeMask, &event);
    XDestroyWindow(x, window);
    return static_cast<unsigned>(event.xproperty.time);
}

unsigned userTime(GdkDisplay* display) {
    return gdk_x11_display_get_user_time(display);
}

void setUserTime(GdkSurface* surface, unsigned time) {
    gdk_x11_surface_set_user_time(surface, time);
}

void drawWithoutManager(GdkSurface* surface) {
    gdk_x11_surface_set_frame_sync_enabled(surface, FALSE);
}

X11ErrorTrap::X11ErrorTrap(GdkDisplay* display) : display(display) {
    gdk_x11_display_error_trap_push(display);
}

X11ErrorTrap::~X11ErrorTrap() {
    gdk_x11_display_error_trap_pop_ignored(display);
}

} // namespace kelo::window
