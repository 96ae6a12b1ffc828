#pragma once

#include "linux/gtk/kit/ProgramWindow.h"

#include <gtkmm/box.h>
#include <gtkmm/headerbar.h>
#include <gtkmm/scrolledwindow.h>

#include <functional>
#include <string>
#include <vector>

namespace kelo::gtk {

struct ShortcutRow {
    std::string title;
    std::string accelerator; ///< as the toolkit writes it: "<Control>q"
};

struct ShortcutGroup {
    std::string title;
    std::vector<ShortcutRow> rows;
};

/// Lists what keys do, in groups under their titles: those of menus, and those that no menu names.
class ShortcutsWindow final : public ProgramWindow {
public:
    ShortcutsWindow(const std::vector<ShortcutGroup>& groups, std::function<void()> closed);

private:
    void add(const ShortcutGroup& group);

    Gtk::HeaderBar header;
    Gtk::ScrolledWindow view;
    Gtk::Box column{Gtk::Orientation::VERTICAL, 8};
};

} // namespace kelo::gtk
