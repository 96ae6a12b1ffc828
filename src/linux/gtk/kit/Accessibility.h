#pragma once

#include <gtkmm/widget.h>

#include <string>

namespace kelo::gtk {

/// Sets the name by which a screen reader announces the widget.
inline void setAccessibleName(Gtk::Widget& widget, const std::string& name) {
    // Since GTK 4.18 a button is labelled by the text that it shows, which would come first.
    gtk_accessible_reset_relation(GTK_ACCESSIBLE(widget.gobj()),
                                  GTK_ACCESSIBLE_RELATION_LABELLED_BY);
    gtk_accessible_update_property(GTK_ACCESSIBLE(widget.gobj()), GTK_ACCESSIBLE_PROPERTY_LABEL,
                                   name.c_str(), -1);
}

/// Gives a widget another role for assistive technology than its class has. Call it before the
/// widget is shown for the first time, because the toolkit fixes the role then. Not the role of a
/// status: GTK 4.12 and later give no name to what has it, and a screen reader that comes there
/// says nothing. Take a label or a group with a name, and announceNews().
inline void setAccessibleRole(Gtk::Widget& widget, GtkAccessibleRole role) {
    g_object_set(widget.gobj(), "accessible-role", role, nullptr);
}

/// Has a screen reader say what is new where the keyboard is not.
void announceNews(Gtk::Widget& widget, const std::string& sentence);

} // namespace kelo::gtk
