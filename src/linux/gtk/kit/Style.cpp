#include "linux/gtk/kit/Style.h"

#include <gdkmm/display.h>
#include <gtkmm/cssprovider.h>
#include <gtkmm/icontheme.h>
#include <gtkmm/stylecontext.h>

#include <utility>

// Generated from data/kelo.gresource.xml. Naming it keeps the linker from leaving the data out.
extern "C" GResource* kelo_get_resource(void);

namespace kelo::gtk {

void loadStyle() {
    // Once is enough for a process: both stay with the display.
    if (static bool loaded = false; std::exchange(loaded, true))
        return;
    g_resources_register(kelo_get_resource());
    const auto display = Gdk::Display::get_default();
    // The toolkit looks here by itself only under the application's own identifier.
    Gtk::IconTheme::get_for_display(display)->add_resource_path("/app/kelo/Kelo/icons");
    const auto provider = Gtk::CssProvider::create();
    provider->load_from_resource("/app/kelo/Kelo/style.css");
    Gtk::StyleContext::add_provider_for_display(display, provider,
                                                GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
}

} // namespace kelo::gtk
