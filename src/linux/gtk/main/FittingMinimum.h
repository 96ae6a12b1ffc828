#pragma once

#include "linux/gobject/SignalHandler.h"
#include "platform/Geometry.h"

#include <gtkmm/window.h>

namespace kelo::gtk {

/// Has a window ask the desktop for a least size of its content, where the screen has room for it.
/// The content itself must be able to be smaller: a small screen, or a window manager that divides
/// the screen, gives the window less, and nothing of it may then lie outside.
class FittingMinimum : public sigc::trackable {
public:
    /// content: within the window. The window is realized later, and both may go after this.
    FittingMinimum(Gtk::Window& window, Gtk::Widget& content);
    FittingMinimum(const FittingMinimum&) = delete;
    FittingMinimum& operator=(const FittingMinimum&) = delete;

    /// Of the content, in points.
    void set(platform::Size size);

private:
    void follow();
    void leave();
    void narrow(GdkToplevelSize* size) const;

    Gtk::Window& window;
    Gtk::Widget& content;
    platform::Size minimum;
    gobject::SignalConnection computation;
};

} // namespace kelo::gtk
