#pragma once

#include <gtkmm/widget.h>

#include <string>
#include <string_view>

namespace kelo::gtk {

/// Adds the program's style sheet and icons to those of the toolkit. Call it after the display was
/// opened; further calls do nothing.
void loadStyle();

/// Adds the class to the widget's style, or takes it away.
void setClass(Gtk::Widget& widget, const char* name, bool isPresent);

/// The icon theme's name for a systemImage of the scene graph. For an image without an icon it
/// returns the name of the theme's "missing image" icon, so that the gap is visible.
std::string iconName(std::string_view systemImage);

} // namespace kelo::gtk
