#include "linux/gtk/ProgramWindow.h"

#include "linux/glib/WindowIdentity.h"

#include <gdkmm/texture.h>
#include <gdkmm/toplevel.h>

#include <utility>

namespace kelo::desktop {

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

ProgramWindow::ProgramWindow(std::function<void()> closed) : closed(std::move(closed)) {
    setWindowIdentity(static_cast<Gtk::Window*>(this)->gobj(), handle_);
    add_action("close", [this] { close(); });
    signal_realize().connect([this] { setIcon(*this); });
    signal_close_request().connect(
        [this] {
            set_visible(false);
            if (const auto tell = std::exchange(this->closed, nullptr))
                tell();
            return true;
        },
        false);
}

ProgramWindow::~ProgramWindow() {
    handle_->forget();
}

} // namespace kelo::desktop
