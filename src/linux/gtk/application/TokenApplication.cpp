#include "linux/gtk/application/TokenApplication.h"

#include "linux/gtk/kit/WindowPresentation.h"
#include "posix/Moments.h"

#include <giomm/dbusconnection.h>

namespace kelo::gtk {

Glib::RefPtr<TokenApplication> TokenApplication::create(const std::string& identifier) {
    return Glib::make_refptr_for_instance(new TokenApplication(identifier));
}

TokenApplication::TokenApplication(const std::string& identifier) : Gtk::Application(identifier) {}

void TokenApplication::on_startup() {
    posix::mark(posix::Moment::busConnected);
    Gtk::Application::on_startup();
    posix::mark(posix::Moment::toolkitStarted);
    if (const auto bus = get_dbus_connection()) {
        clickTokens.emplace(
            notification::ClickTokens::Handlers{&keepActivationToken, &dropActivationToken});
        clickTokens->listen(bus->gobj());
    }
}

void TokenApplication::on_shutdown() {
    clickTokens.reset();
    Gtk::Application::on_shutdown();
}

// The toolkit reads the older "desktop-startup-id" alone, up to version 4.8.
void TokenApplication::before_emit_vfunc(const Glib::VariantBase& platformData) {
    Gtk::Application::before_emit_vfunc(platformData);
    noteUserRequest();
    const char* token = nullptr;
    auto* const data = const_cast<GVariant*>(platformData.gobj());
    if (g_variant_lookup(data, "activation-token", "&s", &token))
        keepActivationToken(token);
}

} // namespace kelo::gtk
