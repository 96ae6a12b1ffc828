#pragma once

namespace Gtk {
class Application;
}

namespace kelo::gtk {

/// Registers this process as the running one, unless there is one already. That one may be about to
/// end, and is then waited for.
void registerApplication(Gtk::Application& application);

} // namespace kelo::gtk
