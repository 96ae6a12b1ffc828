#include "linux/session/X11LockScreen.h"

#include "linux/window/X11Handles.h"
#include "linux/window/X11Toolkit.h"

#include <X11/extensions/XInput2.h>

#include <algorithm>
#include <array>
#include <span>
#include <vector>

namespace kelo::session {

namespace {

/// In pixels.
std::vector<GdkRectangle> monitorsOf(GdkDisplay* display) {
    std::vector<GdkRectangle> all;
    GListModel* const monitors = gdk_display_get_monitors(display);
    for (guint at = 0; at < g_list_model_get_n_items(monitors); ++at) {
        const auto monitor = gobject::GObjectPointer<GdkMonitor>::adopt(
            static_cast<GdkMonitor*>(g_list_model_get_item(monitors, at)));
        const int scale = gdk_monitor_get_scale_factor(monitor.get());
        GdkRectangle place;
        gdk_monitor_get_geometry(monitor.get(), &place);
        all.push_back(
            {place.x * scale, place.y * scale, place.width * scale, place.height * scale});
    }
    return all;
}

bool contains(const XWindowAttributes& window, const GdkRectangle& monitor) {
    const int border = 2 * window.border_width;
    return window.x <= monitor.x && window.y <= monitor.y &&
           window.x + window.width + border >= monitor.x + monitor.width &&
           window.y + window.height + border >= monitor.y + monitor.height;
}

} // namespace

X11LockScreen::X11LockScreen(GdkDisplay* display)
    : display(gobject::GObjectPointer<GdkDisplay>::share(display)) {
    Display* const x = window::xlibDisplay(display);
    neverShown = XCreateWindow(x, DefaultRootWindow(x), 0, 0, 1, 1, 0, 0, InputOnly, CopyFromParent,
                               0, nullptr);
}

X11LockScreen::~X11LockScreen() {
    if (!gdk_display_is_closed(display.get()))
        XDestroyWindow(window::xlibDisplay(display.get()), neverShown);
}

// A grab for a window that is not shown always fails. The server gives "already grabbed" as the
// reason first, so this learns of other grabs and never has one itself, which other programs would
// see as a loss of the focus. The toolkit's connection and its kind of grab are used so that our
// own open menus are not taken for another program.
bool X11LockScreen::isKeyboardGrabbed() {
    GdkSeat* const seat = gdk_display_get_default_seat(display.get());
    GdkDevice* const keyboard = seat ? gdk_seat_get_keyboard(seat) : nullptr;
    if (!keyboard)
        return false;
    std::array<unsigned char, XIMaskLen(XI_LASTEVENT)> bits{};
    XIEventMask nothing{XIAllMasterDevices, static_cast<int>(bits.size()), bits.data()};
    const window::X11ErrorTrap ignored(display.get());
    return XIGrabDevice(window::xlibDisplay(display.get()), window::xinputDevice(keyboard),
                        neverShown, CurrentTime, None, XIGrabModeAsync, XIGrabModeAsync, False,
                        &nothing) == XIAlreadyGrabbed;
}

bool X11LockScreen::isMonitorCovered() {
    Display* const x = window::xlibDisplay(display.get());
    const window::X11ErrorTrap ignored(display.get());
    Window root = None;
    Window parent = None;
    Window* children = nullptr;
    unsigned int count = 0;
    if (!XQueryTree(x, DefaultRootWindow(x), &root, &parent, &children, &count) || !children)
        return false;
    const window::XMemory<Window> owned(children);
    const auto monitors = monitorsOf(display.get());
    const std::span windows(children, count);
    for (auto next = windows.rbegin(); next != windows.rend(); ++next) {
        const Window window = *next;
        XWindowAttributes attributes{};
        if (!XGetWindowAttributes(x, window, &attributes) || attributes.map_state != IsViewable ||
            attributes.c_class == InputOnly)
            continue;
        if (window::isOurWindow(display.get(), window))
            return false;
        if (std::ranges::any_of(monitors, [&](const GdkRectangle& monitor) {
                return contains(attributes, monitor);
            }))
            return true;
    }
    return false;
}

} // namespace kelo::session
