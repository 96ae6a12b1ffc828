#pragma once

#include <gtkmm/window.h>

namespace kelo::gtk {

/// Gives the window the program's icon, for window managers under X11 that show one. To be called
/// before the window is realized.
void showProgramIcon(Gtk::Window& window);

} // namespace kelo::gtk
