#include "linux/gtk/main/FittingMinimum.h"

#include <algorithm>
#include <cmath>

namespace kelo::gtk {

namespace {

int leastOf(Gtk::Widget& widget, Gtk::Orientation orientation) {
    int minimum = 0;
    int unused = 0;
    widget.measure(orientation, -1, minimum, unused, unused, unused);
    return minimum;
}

int points(double length) {
    return static_cast<int>(std::lround(length));
}

/// Of a window with the content side by side with nothing.
int leastWidth(Gtk::Window& window, double content) {
    constexpr auto across = Gtk::Orientation::HORIZONTAL;
    int inside = leastOf(*window.get_child(), across);
    if (auto* const titleBar = window.get_titlebar())
        inside = std::max(inside, leastOf(*titleBar, across));
    const int least = leastOf(window, across);
    return std::max(least, least - inside + points(content));
}

/// Of a window with the content below, and perhaps above, other things.
int leastHeight(Gtk::Window& window, Gtk::Widget& widget, double content) {
    constexpr auto down = Gtk::Orientation::VERTICAL;
    return leastOf(window, down) - leastOf(widget, down) + points(content);
}

} // namespace

FittingMinimum::FittingMinimum(Gtk::Window& window, Gtk::Widget& content)
    : window(window), content(content) {
    window.signal_realize().connect(sigc::mem_fun(*this, &FittingMinimum::follow));
    window.signal_unrealize().connect(sigc::mem_fun(*this, &FittingMinimum::leave));
}

void FittingMinimum::set(platform::Size size) {
    minimum = size;
    window.queue_resize();
}

// The toolkit answers first, with what the widgets need.
void FittingMinimum::follow() {
    computation = gobject::connectSignal(
        gtk_native_get_surface(GTK_NATIVE(window.gobj())), "compute-size",
        +[](GdkToplevel*, GdkToplevelSize* size, FittingMinimum* self) { self->narrow(size); },
        this);
}

void FittingMinimum::leave() {
    computation = {};
}

void FittingMinimum::narrow(GdkToplevelSize* size) const {
    int boundsWidth = 0;
    int boundsHeight = 0;
    gdk_toplevel_size_get_bounds(size, &boundsWidth, &boundsHeight);
    gdk_toplevel_size_set_min_size(
        size, std::min(leastWidth(window, minimum.width), boundsWidth),
        std::min(leastHeight(window, content, minimum.height), boundsHeight));
}

} // namespace kelo::gtk
