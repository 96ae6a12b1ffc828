#include "linux/gtk/application/RunningInstance.h"

#include <glibmm/error.h>
#include <gtkmm/application.h>

namespace kelo::gtk {

// The program that runs may be at its end, and then breaks the conversation off. The next attempt
// no longer finds it. What else may be wrong, the toolkit reports when the application runs.
void registerApplication(Gtk::Application& application) {
    constexpr int mostAttempts = 5;
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        try {
            application.register_application();
            return;
        } catch (const Glib::Error& error) {
            if (!error.matches(G_DBUS_ERROR, G_DBUS_ERROR_NO_REPLY))
                return;
        }
    }
}

} // namespace kelo::gtk
