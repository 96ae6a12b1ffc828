#include "linux/gtk/kit/ActivationToken.h"

#include <gtkmm/window.h>

#include <utility>

namespace kelo::gtk {

namespace {

std::string& keptToken() {
    static std::string token;
    return token;
}

} // namespace

void keepActivationToken(std::string token) {
    keptToken() = std::move(token);
}

void presentWithActivationToken(Gtk::Window& window) {
    if (const auto token = std::exchange(keptToken(), {}); !token.empty())
        window.set_startup_id(token);
    window.present();
}

} // namespace kelo::gtk
