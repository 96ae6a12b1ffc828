#pragma once

#include <gdkmm/rectangle.h>
#include <gtkmm/window.h>
#include <sigc++/connection.h>

#include <vector>

namespace kelo::gtk {

class StateFile;

/// Gives a window the size, the maximised state and, under X11, the place that its predecessor had
/// when it was seen last. Under Wayland the compositor places windows. Main thread only.
class WindowMemory {
public:
    /// Restores what is remembered; the window must not have been shown yet. Both must outlive this
    /// object. The toolkit keeps the window from becoming smaller than its content allows.
    WindowMemory(Gtk::Window& window, StateFile& file);
    ~WindowMemory();
    WindowMemory(const WindowMemory&) = delete;
    WindowMemory& operator=(const WindowMemory&) = delete;

    /// Remembers how the window is now, if it is on the screen and no dialog is open, and saves the
    /// file. Also happens each time the window loses the keyboard.
    void remember();

private:
    void restoreSize();
    void restorePlace();
    void notePlacement();

    Gtk::Window& window;
    StateFile& file;
    std::vector<sigc::connection> connections;
};

/// Where a window may stay: at its own place if enough of its upper edge is on a monitor to take
/// hold of it, otherwise inside the nearest monitor. Lengths are points of one plane.
Gdk::Rectangle reachable(Gdk::Rectangle window, const std::vector<Gdk::Rectangle>& monitors);

} // namespace kelo::gtk
