#pragma once

#include <string>

namespace Gtk {
class Window;
}

/// A desktop lets a program raise a window of its own only on the user's word. Where the user
/// clicked outside of our windows, in the tray, that word comes as a token. Main thread only.
namespace kelo::gtk {

/// For the window that is raised next; takes the place of one that was not used.
void keepActivationToken(std::string token);

/// Presents the window, with the token if there is one, which is then spent.
void presentWithActivationToken(Gtk::Window& window);

} // namespace kelo::gtk
