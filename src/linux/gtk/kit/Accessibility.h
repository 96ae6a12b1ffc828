#pragma once

#include <gtkmm/widget.h>

#include <string>

namespace kelo::gtk {

/// What a screen reader calls the widget.
inline void setAccessibleName(Gtk::Widget& widget, const std::string& name) {
    gtk_accessible_update_property(GTK_ACCESSIBLE(widget.gobj()), GTK_ACCESSIBLE_PROPERTY_LABEL,
                                   name.c_str(), -1);
}

/// Makes a widget something else to assistive technology than its class is. Only before the widget
/// is shown for the first time: the toolkit settles the role then.
inline void setAccessibleRole(Gtk::Widget& widget, GtkAccessibleRole role) {
    g_object_set(widget.gobj(), "accessible-role", role, nullptr);
}

} // namespace kelo::gtk
