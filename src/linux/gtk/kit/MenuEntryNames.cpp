#include "linux/gtk/kit/MenuEntryNames.h"

#include <gtk/gtk.h>

namespace kelo::gtk {

namespace {

/// The text beside the entry's icon and before its shortcut.
GtkWidget* labelOf(GtkWidget* entry) {
    for (auto* child = gtk_widget_get_first_child(entry); child;
         child = gtk_widget_get_next_sibling(child))
        if (GTK_IS_LABEL(child))
            return child;
    return nullptr;
}

// The class of the toolkit's menu entries is private. GTK 4.18 names them after a label that it
// hides from assistive technology, so that their names are empty. Whichever release mends that:
// what is set here stays right.
void nameEntriesBelow(GtkWidget* widget) {
    static const GQuark entryName = g_quark_from_static_string("GtkModelButton");
    if (g_type_qname(G_OBJECT_TYPE(widget)) == entryName) {
        if (auto* const label = labelOf(widget)) {
            gtk_accessible_reset_relation(GTK_ACCESSIBLE(widget),
                                          GTK_ACCESSIBLE_RELATION_LABELLED_BY);
            gtk_accessible_update_property(GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_PROPERTY_LABEL,
                                           gtk_label_get_text(GTK_LABEL(label)), -1);
        }
        return;
    }
    for (auto* child = gtk_widget_get_first_child(widget); child;
         child = gtk_widget_get_next_sibling(child))
        nameEntriesBelow(child);
}

// At each opening, because the toolkit makes new entries when a menu changes.
gboolean mapped(GSignalInvocationHint*, guint, const GValue* arguments, gpointer) {
    auto* const widget = static_cast<GtkWidget*>(g_value_get_object(arguments));
    if (GTK_IS_POPOVER_MENU(widget))
        nameEntriesBelow(widget);
    return TRUE; // goes on
}

} // namespace

void nameEntriesOfMenus() {
    static const gulong hook = g_signal_add_emission_hook(g_signal_lookup("map", GTK_TYPE_WIDGET),
                                                          0, mapped, nullptr, nullptr);
    static_cast<void>(hook);
}

} // namespace kelo::gtk
