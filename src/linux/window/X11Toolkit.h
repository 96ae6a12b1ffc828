#pragma once

#include <X11/Xlib.h>

typedef struct _GdkDevice GdkDevice;
typedef struct _GdkDisplay GdkDisplay;
typedef struct _GdkSurface GdkSurface;

namespace kelo::window {

// What the toolkit tells of itself under X11. Only here and in the source file is it asked: it
// calls all of this deprecated since version 4.18 and will leave it out one day. Main thread only.

/// False for null.
bool isX11(GdkDisplay* display);
bool isX11(GdkSurface* surface);

/// The toolkit's own connection. display: must be an X11 display.
Display* xlibDisplay(GdkDisplay* display);
/// surface: must be one of an X11 display.
Window xlibWindow(GdkSurface* surface);
/// Whether the toolkit has made this window. display: must be an X11 display.
bool isOurWindow(GdkDisplay* display, Window window);
/// The atom of this name, which is remembered. display: must be an X11 display.
Atom xlibAtom(GdkDisplay* display, const char* name);
/// The number by which the X Input extension knows the device of an X11 display.
int xinputDevice(GdkDevice* device);

/// The server's clock, asked for at once. display: must be an X11 display.
unsigned serverTime(GdkDisplay* display);
/// When the user last did something in one of our windows, by the server's clock; 0 if never.
/// display: must be an X11 display.
unsigned userTime(GdkDisplay* display);
/// The time of the user's last action in a window (_NET_WM_USER_TIME): 0 if it is to get no
/// keyboard focus when it appears. Any other time becomes userTime(), too. surface: must be one of
/// an X11 display.
void setUserTime(GdkSurface* surface, unsigned time);
/// Has a window drawn without waiting for a window manager that answers each frame. surface: must
/// be one of an X11 display.
void drawWithoutManager(GdkSurface* surface);

/// While it exists, errors of requests on the toolkit's X connection are ignored. Another program
/// may close its window at any moment, and an unexpected X error would end this program.
class X11ErrorTrap {
public:
    /// display: must be an X11 display.
    explicit X11ErrorTrap(GdkDisplay* display);
    ~X11ErrorTrap();
    X11ErrorTrap(const X11ErrorTrap&) = delete;
    X11ErrorTrap& operator=(const X11ErrorTrap&) = delete;

private:
    GdkDisplay* display;
};

} // namespace kelo::window
