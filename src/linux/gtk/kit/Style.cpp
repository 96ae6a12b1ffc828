#include "linux/gtk/kit/Style.h"

#include <gdkmm/display.h>
#include <gtkmm/cssprovider.h>
#include <gtkmm/icontheme.h>
#include <gtkmm/stylecontext.h>

#include <array>
#include <utility>

// Generated from data/kelo.gresource.xml. This reference keeps the linker from dropping the data.
extern "C" GResource* kelo_get_resource(void);

namespace kelo::gtk {

void loadStyle() {
    // Style and icons stay with the display, so a second time would add them twice.
    if (static bool loaded = false; std::exchange(loaded, true))
        return;
    g_resources_register(kelo_get_resource());
    const auto display = Gdk::Display::get_default();
    // The toolkit searches this path by itself only for an application with the same identifier.
    Gtk::IconTheme::get_for_display(display)->add_resource_path("/app/kelo/Kelo/icons");
    const auto provider = Gtk::CssProvider::create();
    provider->load_from_resource("/app/kelo/Kelo/style.css");
    Gtk::StyleContext::add_provider_for_display(display, provider,
                                                GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
}

void setClass(Gtk::Widget& widget, const char* name, bool isPresent) {
    if (isPresent)
        widget.add_css_class(name);
    else
        widget.remove_css_class(name);
}

std::string iconName(std::string_view systemImage) {
    // All programs share the theme's folder, hence the prefix.
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 2> drawn{{
        {"brain", "kelo-brain-symbolic"},
        {"person.badge.key", "kelo-person-badge-key-symbolic"},
    }};
    for (const auto& [image, icon] : drawn)
        if (image == systemImage)
            return std::string(icon);
    return "image-missing";
}

} // namespace kelo::gtk
