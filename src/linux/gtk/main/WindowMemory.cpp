#include "linux/gtk/main/WindowMemory.h"

#include "linux/gtk/kit/ModalWindow.h"
#include "linux/gtk/kit/StateFile.h"
#include "linux/window/X11Handles.h"
#include "linux/window/X11Toolkit.h"

#include <gdkmm/display.h>
#include <gdkmm/monitor.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <optional>
#include <utility>

// After the others, because X11 defines macros with names that they use.
#include <X11/Xatom.h>

namespace kelo::gtk {

namespace {

constexpr const char* group = "main window";

std::vector<Gdk::Rectangle> monitors() {
    std::vector<Gdk::Rectangle> found;
    const auto list = Gdk::Display::get_default()->get_monitors();
    for (guint index = 0; index < list->get_n_items(); ++index) {
        Gdk::Rectangle area;
        std::dynamic_pointer_cast<Gdk::Monitor>(list->get_object(index))->get_geometry(area);
        found.push_back(area);
    }
    return found;
}

GdkSurface* surfaceUnderX11(Gtk::Window& window) {
    GdkSurface* const surface = gtk_native_get_surface(GTK_NATIVE(window.gobj()));
    return window::isX11(surface) ? surface : nullptr;
}

/// The width of a frame that the window manager has drawn: left, then top, in pixels.
std::pair<int, int> frameOf(Display* display, Window identifier, GdkDisplay* toolkit) {
    Atom type = 0;
    int format = 0;
    unsigned long count = 0;
    unsigned long more = 0;
    unsigned char* data = nullptr;
    const Atom extents = window::xlibAtom(toolkit, "_NET_FRAME_EXTENTS");
    XGetWindowProperty(display, identifier, extents, 0, 4, False, XA_CARDINAL, &type, &format,
                       &count, &more, &data);
    const window::XMemory<unsigned char> owned(data);
    if (!data || format != 32 || count != 4)
        return {0, 0};
    const auto* const widths = reinterpret_cast<const long*>(data);
    return {static_cast<int>(widths[0]), static_cast<int>(widths[2])};
}

/// Where the window manager would have to be asked to put the window for it to be where it is.
std::optional<std::pair<int, int>> placeOf(Gtk::Window& window) {
    GdkSurface* const surface = surfaceUnderX11(window);
    if (!surface)
        return std::nullopt;
    GdkDisplay* const toolkit = gdk_surface_get_display(surface);
    const window::X11ErrorTrap trap(toolkit);
    Display* const display = window::xlibDisplay(toolkit);
    const Window identifier = window::xlibWindow(surface);
    int x = 0;
    int y = 0;
    Window child = 0;
    if (!XTranslateCoordinates(display, identifier, DefaultRootWindow(display), 0, 0, &x, &y,
                               &child))
        return std::nullopt;
    const auto [left, top] = frameOf(display, identifier, toolkit);
    const int scale = gdk_surface_get_scale_factor(surface);
    return std::pair{(x - left) / scale, (y - top) / scale};
}

int distance(const Gdk::Rectangle& one, const Gdk::Rectangle& other) {
    return std::abs(one.get_x() + one.get_width() / 2 - other.get_x() - other.get_width() / 2) +
           std::abs(one.get_y() + one.get_height() / 2 - other.get_y() - other.get_height() / 2);
}

} // namespace

Gdk::Rectangle reachable(Gdk::Rectangle window, const std::vector<Gdk::Rectangle>& monitors) {
    // A window's surface begins where its shadow does.
    constexpr int widestShadow = 40;
    constexpr int leastWidth = 120;
    constexpr int leastHeight = 24;
    const Gdk::Rectangle* nearest = nullptr;
    for (const auto& monitor : monitors) {
        const int right =
            std::min(window.get_x() + window.get_width(), monitor.get_x() + monitor.get_width());
        const bool isOn = right - std::max(window.get_x(), monitor.get_x()) >= leastWidth &&
                          window.get_y() >= monitor.get_y() - widestShadow &&
                          window.get_y() + leastHeight <= monitor.get_y() + monitor.get_height();
        if (isOn)
            return window;
        if (!nearest || distance(monitor, window) < distance(*nearest, window))
            nearest = &monitor;
    }
    if (!nearest)
        return window;
    const auto inside = [](int place, int length, int begin, int room) {
        return std::max(begin, std::min(place, begin + room - length));
    };
    window.set_x(
        inside(window.get_x(), window.get_width(), nearest->get_x(), nearest->get_width()));
    window.set_y(
        inside(window.get_y(), window.get_height(), nearest->get_y(), nearest->get_height()));
    return window;
}

WindowMemory::WindowMemory(Gtk::Window& window, StateFile& file) : window(window), file(file) {
    restoreSize();
    connections.push_back(window.signal_map().connect([this] { restorePlace(); }));
    connections.push_back(window.property_is_active().signal_changed().connect([this] {
        if (!this->window.is_active())
            remember();
    }));
}

// The window still changes while it is being destroyed.
WindowMemory::~WindowMemory() {
    for (auto& connection : connections)
        connection.disconnect();
}

void WindowMemory::restoreSize() {
    const auto width = file.number(group, "width");
    const auto height = file.number(group, "height");
    if (width && height && *width > 0 && *height > 0) {
        int widest = 0;
        int tallest = 0;
        for (const auto& monitor : monitors()) {
            widest = std::max(widest, monitor.get_width());
            tallest = std::max(tallest, monitor.get_height());
        }
        window.set_default_size(std::min(*width, widest), std::min(*height, tallest));
    }
    if (file.flag(group, "maximized"))
        window.maximize();
}

// Only after the window has been mapped: what the toolkit tells the window manager before that
// leaves the place to the window manager.
void WindowMemory::restorePlace() {
    const auto x = file.number(group, "x");
    const auto y = file.number(group, "y");
    GdkSurface* const surface = surfaceUnderX11(window);
    // Sums of places must not overflow, whatever the file says.
    constexpr int farthest = std::numeric_limits<short>::max();
    if (!x || !y || !surface || std::abs(*x) > farthest || std::abs(*y) > farthest ||
        file.flag(group, "maximized"))
        return;
    int width = 0;
    int height = 0;
    window.get_default_size(width, height);
    const auto place = reachable({*x, *y, std::max(1, width), std::max(1, height)}, monitors());
    GdkDisplay* const toolkit = gdk_surface_get_display(surface);
    const window::X11ErrorTrap trap(toolkit);
    const int scale = gdk_surface_get_scale_factor(surface);
    XMoveWindow(window::xlibDisplay(toolkit), window::xlibWindow(surface), place.get_x() * scale,
                place.get_y() * scale);
}

void WindowMemory::remember() {
    if (window.get_mapped() && !ModalWindow::topmost())
        notePlacement();
    file.save();
}

void WindowMemory::notePlacement() {
    const bool fillsTheScreen = window.is_maximized() || window.is_fullscreen();
    file.setFlag(group, "maximized", window.is_maximized());
    // The toolkit keeps the size that the window has when it does not fill the screen.
    int width = 0;
    int height = 0;
    window.get_default_size(width, height);
    if (width > 0 && height > 0) {
        file.setNumber(group, "width", width);
        file.setNumber(group, "height", height);
    }
    if (const auto place = fillsTheScreen ? std::nullopt : placeOf(window)) {
        file.setNumber(group, "x", place->first);
        file.setNumber(group, "y", place->second);
    }
}

} // namespace kelo::gtk
