#pragma once

#include <gtkmm/window.h>

namespace kelo::gtk {

/// Shows a window without taking the keyboard from what the user is at. Under X11 every window
/// manager heeds it; under Wayland it is the compositor that decides, and most give a new window
/// the keyboard only to the program that has it already.
void showWithoutFocus(Gtk::Window& window);

} // namespace kelo::gtk
