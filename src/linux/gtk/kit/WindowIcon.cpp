#include "linux/gtk/kit/WindowIcon.h"

#include <gdkmm/texture.h>
#include <gdkmm/toplevel.h>

namespace kelo::gtk {

namespace {

// Window managers under X11 show it where no desktop entry tells them the icon. By name, the
// toolkit would draw it from the SVG, and load a library of 6 MB for that at every start.
void setIcon(Gtk::Window& window) {
    const auto toplevel = std::dynamic_pointer_cast<Gdk::Toplevel>(window.get_surface());
    if (!toplevel)
        return;
    toplevel->set_icon_list({Gdk::Texture::create_from_resource("/app/kelo/Kelo/window-48.png"),
                             Gdk::Texture::create_from_resource("/app/kelo/Kelo/window-128.png")});
}

} // namespace

void showProgramIcon(Gtk::Window& window) {
    window.signal_realize().connect([&window] { setIcon(window); });
}

} // namespace kelo::gtk
