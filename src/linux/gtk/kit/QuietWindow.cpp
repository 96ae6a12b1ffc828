#include "linux/gtk/kit/QuietWindow.h"

#include <gdk/x11/gdkx.h>

namespace kelo::gtk {

void showWithoutFocus(Gtk::Window& window) {
    if (window.get_mapped())
        return;
    gtk_widget_realize(GTK_WIDGET(window.gobj()));
    GdkSurface* const surface = gtk_native_get_surface(GTK_NATIVE(window.gobj()));
    // A window without a moment of use is one that nobody waits for: window managers leave the
    // keyboard where it is (Extended Window Manager Hints, _NET_WM_USER_TIME).
    if (GDK_IS_X11_SURFACE(surface))
        gdk_x11_surface_set_user_time(surface, 0);
    window.set_visible(true);
}

} // namespace kelo::gtk
