#pragma once

#include <gtkmm/window.h>

namespace kelo::gtk {

/// Marks where each of the window's frames begins and ends (Moments.h), if moments are followed.
/// Call it before the window is realized.
void markFrames(Gtk::Window& window);

} // namespace kelo::gtk
