#include "linux/panel/X11Connection.h"

#include "linux/window/X11Handles.h"

#include <X11/Xatom.h>
#include <X11/extensions/Xrandr.h>

#include <algorithm>

namespace kelo::panel {

using window::X11ErrorTrap;
using window::XMemory;

bool X11Connection::isComposited() const {
    const std::string compositor = "_NET_WM_CM_S" + std::to_string(DefaultScreen(x));
    return XGetSelectionOwner(x, atom(compositor.c_str())) != None;
}

int X11Connection::selectionEvent() const {
    int opcode = 0;
    int firstEvent = 0;
    int firstError = 0;
    // The extension's first event is the one for selections.
    return XQueryExtension(x, "XFIXES", &opcode, &firstEvent, &firstError) ? firstEvent : 0;
}

std::vector<unsigned long> X11Connection::property(Window window, const char* name,
                                                   Atom type) const {
    constexpr long most = 4096;
    Atom actualType = None;
    int format = 0;
    unsigned long count = 0;
    unsigned long left = 0;
    unsigned char* data = nullptr;
    const X11ErrorTrap trap(gdk);
    if (XGetWindowProperty(x, window, atom(name), 0, most, False, type, &actualType, &format,
                           &count, &left, &data) != Success)
        return {};
    const XMemory<unsigned char> owned(data);
    if (actualType != type || format != 32 || !data)
        return {};
    const auto* const items = reinterpret_cast<const unsigned long*>(data);
    return {items, items + count};
}

Window X11Connection::activeWindow() const {
    const auto found = property(root(), "_NET_ACTIVE_WINDOW", XA_WINDOW);
    return found.empty() ? None : found.front();
}

std::vector<Window> X11Connection::ordinaryWindows() const {
    auto windows = property(root(), "_NET_CLIENT_LIST_STACKING", XA_WINDOW);
    const Atom dock = atom("_NET_WM_WINDOW_TYPE_DOCK");
    const Atom desktop = atom("_NET_WM_WINDOW_TYPE_DESKTOP");
    std::erase_if(windows, [&](Window window) {
        const auto types = property(window, "_NET_WM_WINDOW_TYPE", XA_ATOM);
        return std::find(types.begin(), types.end(), dock) != types.end() ||
               std::find(types.begin(), types.end(), desktop) != types.end();
    });
    std::reverse(windows.begin(), windows.end());
    return windows;
}

void X11Connection::followRootProperties() const {
    XWindowAttributes attributes{};
    if (XGetWindowAttributes(x, root(), &attributes))
        XSelectInput(x, root(), attributes.your_event_mask | PropertyChangeMask);
}

int X11Connection::randrEvents() const {
    int first = 0;
    int errors = 0;
    return XRRQueryExtension(x, &first, &errors) ? first : 0;
}

bool X11Connection::isViewable(Window window) const {
    if (window == None || window == PointerRoot)
        return false;
    XWindowAttributes attributes{};
    const X11ErrorTrap trap(gdk);
    return XGetWindowAttributes(x, window, &attributes) && attributes.map_state == IsViewable;
}

Window X11Connection::toplevelOf(Window window) const {
    const X11ErrorTrap trap(gdk);
    while (window != None) {
        Window top = None;
        Window parent = None;
        Window* children = nullptr;
        unsigned int count = 0;
        if (!XQueryTree(x, window, &top, &parent, &children, &count))
            return None;
        const XMemory<Window> owned(children);
        if (parent == top || parent == None)
            return parent == None ? None : window;
        window = parent;
    }
    return None;
}

Window X11Connection::underPointer() const {
    const auto pointer = window::pointerPlace(x, root());
    return pointer ? pointer->child : None;
}

Window X11Connection::ordinaryWindowUnderPointer() const {
    const Window toplevel = underPointer();
    for (const Window window : ordinaryWindows())
        if (toplevel != None && toplevelOf(window) == toplevel)
            return window;
    return None;
}

bool X11Connection::isUnmanagedAndOurs(Window window) const {
    if (window == None || !window::isOurWindow(gdk, window))
        return false;
    XWindowAttributes attributes{};
    const X11ErrorTrap trap(gdk);
    return XGetWindowAttributes(x, window, &attributes) && attributes.override_redirect == True;
}

PixelRectangle X11Connection::placeOf(Window window) const {
    Window top = None;
    int left = 0;
    int upper = 0;
    unsigned int width = 0;
    unsigned int height = 0;
    unsigned int border = 0;
    unsigned int depth = 0;
    const X11ErrorTrap trap(gdk);
    if (!XGetGeometry(x, window, &top, &left, &upper, &width, &height, &border, &depth))
        return {};
    return {left, upper, static_cast<int>(width), static_cast<int>(height)};
}

} // namespace kelo::panel
