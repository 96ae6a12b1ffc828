#include "linux/gtk/kit/WindowPresentation.h"

#include "linux/window/ToolkitVersion.h"
#include "linux/window/X11Toolkit.h"

#include <gdk/gdkkeysyms.h>
#include <gdk/wayland/gdkwayland.h>
#include <gdkmm/texture.h>
#include <gdkmm/toplevel.h>
#include <gtkmm/eventcontrollerkey.h>

#include <cstdint>
#include <optional>
#include <utility>

namespace kelo::gtk {

namespace {

// X11 window managers show this icon if no desktop entry names one. The pictures are drawn at build
// time, because drawing from the SVG at run time would load a library of 6 MB at every start.
void setIcon(Gtk::Window& window) {
    const auto toplevel = std::dynamic_pointer_cast<Gdk::Toplevel>(window.get_surface());
    if (!toplevel)
        return;
    toplevel->set_icon_list({Gdk::Texture::create_from_resource("/app/kelo/Kelo/window-48.png"),
                             Gdk::Texture::create_from_resource("/app/kelo/Kelo/window-128.png")});
}

// Without a token of the display, an old toolkit asks for a weaker one of its own.
void passToCompositor(const std::string& token) {
    if (window::tellsTokenOfWindow)
        return;
    GdkDisplay* const display = gdk_display_get_default();
    if (GDK_IS_WAYLAND_DISPLAY(display))
        gdk_wayland_display_set_startup_notification_id(display, token.c_str());
}

std::string& keptToken() {
    static std::string token;
    return token;
}

std::optional<unsigned>& keptRequest() {
    static std::optional<unsigned> time;
    return time;
}

/// Of two times of the X server, whose clock starts again after 49 days.
bool isLater(unsigned time, unsigned other) {
    return static_cast<std::int32_t>(time - other) > 0;
}

void useKeptRequest(Gtk::Window& window) {
    const auto time = std::exchange(keptRequest(), std::nullopt);
    if (!time)
        return;
    // What the user did in our windows since then counts more.
    const unsigned last = window::userTime(gdk_display_get_default());
    if (last != 0 && !isLater(*time, last))
        return;
    gtk_widget_realize(GTK_WIDGET(window.gobj()));
    window::setUserTime(gtk_native_get_surface(GTK_NATIVE(window.gobj())), *time);
}

} // namespace

void showProgramIcon(Gtk::Window& window) {
    window.signal_realize().connect([&window] { setIcon(window); });
}

void showWithoutFocus(Gtk::Window& window) {
    if (window.get_mapped())
        return;
    gtk_widget_realize(GTK_WIDGET(window.gobj()));
    GdkSurface* const surface = gtk_native_get_surface(GTK_NATIVE(window.gobj()));
    // A user time of 0 tells window managers not to give a new window the keyboard focus (Extended
    // Window Manager Hints, _NET_WM_USER_TIME).
    if (window::isX11(surface))
        window::setUserTime(surface, 0);
    window.set_visible(true);
}

void noteUserRequest() {
    GdkDisplay* const display = gdk_display_get_default();
    if (window::isX11(display))
        keptRequest() = window::serverTime(display);
}

void keepActivationToken(std::string token) {
    keptToken() = std::move(token);
}

void dropActivationToken(const std::string& token) {
    if (keptToken() == token)
        keptToken().clear();
}

void presentWithActivationToken(Gtk::Window& window) {
    if (const auto token = std::exchange(keptToken(), {}); !token.empty()) {
        window.set_startup_id(token);
        passToCompositor(token);
    }
    presentKeepingActivationToken(window);
}

void presentKeepingActivationToken(Gtk::Window& window) {
    useKeptRequest(window);
    window.present();
}

void whenEscapeIsPressed(Gtk::Window& window, std::function<bool()> action) {
    auto keys = Gtk::EventControllerKey::create();
    keys->signal_key_pressed().connect(
        [action = std::move(action)](guint key, guint, Gdk::ModifierType) {
            return key == GDK_KEY_Escape && action();
        },
        false);
    window.add_controller(keys);
}

} // namespace kelo::gtk
