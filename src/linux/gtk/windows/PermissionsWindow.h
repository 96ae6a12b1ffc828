#pragma once

#include "linux/gtk/kit/ProgramWindow.h"
#include "linux/gtk/kit/Redrawing.h"
#include "linux/permission/Permissions.h"

#include <gtkmm/box.h>
#include <gtkmm/headerbar.h>
#include <gtkmm/listbox.h>
#include <gtkmm/togglebutton.h>

#include <array>
#include <functional>
#include <memory>
#include <optional>

namespace kelo::gtk {

/// Shows what the user has allowed the service's pages, and lets the user change it.
class PermissionsWindow final : public ProgramWindow {
public:
    PermissionsWindow(std::shared_ptr<permission::Permissions> permissions,
                      std::function<void()> closed);

private:
    static constexpr std::array answers{permission::Answer::ask, permission::Answer::allowed,
                                        permission::Answer::denied};
    using Buttons = std::array<Gtk::ToggleButton, answers.size()>;

    void addRow(permission::Capability capability, Buttons& buttons);
    void draw();

    std::shared_ptr<permission::Permissions> permissions;
    Gtk::HeaderBar header;
    Gtk::Box column{Gtk::Orientation::VERTICAL, 12};
    Gtk::ListBox rows;
    std::array<Buttons, permission::capabilities.size()> buttonsOf;
    bool isDrawing = false;
    std::optional<Redrawing> redrawing;
};

} // namespace kelo::gtk
