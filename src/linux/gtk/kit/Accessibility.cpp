#include "linux/gtk/kit/Accessibility.h"

#include "linux/window/ToolkitVersion.h"

namespace kelo::gtk {

// The window says it. The toolkit drops what is said by a widget that no screen reader has looked
// at yet, such as one that has just appeared.
void announceNews(Gtk::Widget& widget, const std::string& sentence) {
    if (GtkRoot* const root = gtk_widget_get_root(widget.gobj()))
        window::announce(GTK_ACCESSIBLE(root), sentence);
}

} // namespace kelo::gtk
