#pragma once

#include "linux/gtk/kit/ProgramWindow.h"

#include <gtkmm/box.h>
#include <gtkmm/headerbar.h>

#include <functional>
#include <string>

namespace kelo::gtk {

/// Says what the program is, and its version.
class AboutWindow final : public ProgramWindow {
public:
    AboutWindow(const std::string& version, std::function<void()> closed);

private:
    Gtk::HeaderBar header;
    Gtk::Box column{Gtk::Orientation::VERTICAL, 6};
};

} // namespace kelo::gtk
