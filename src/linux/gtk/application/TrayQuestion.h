#pragma once

#include <giomm/dbusconnection.h>

#include <functional>

namespace kelo::gtk {

/// Asks the programs on a session bus whether a tray shows items. Starts none of them. Calls back
/// once, in a later turn of the main loop, and keeps the function until then. Main thread only.
void askForTray(const Glib::RefPtr<Gio::DBus::Connection>& bus,
                std::function<void(bool hasTray)> answered);

} // namespace kelo::gtk
