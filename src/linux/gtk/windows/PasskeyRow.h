#pragma once

#include "linux/inventory/overview/PasskeyInventory.h"

#include <gtkmm/box.h>
#include <gtkmm/button.h>
#include <gtkmm/listboxrow.h>

#include <functional>

namespace kelo::gtk {

/// One passkey in the list of them: whose it is, for which service, what is known of it, and the
/// button that deletes it.
class PasskeyRow final : public Gtk::ListBoxRow {
public:
    PasskeyRow(inventory::ListedPasskey passkey, std::function<void()> askToDelete);

    const inventory::ListedPasskey& passkey() const { return shown; }

private:
    void addLine(const std::string& text, const std::vector<Glib::ustring>& cssClasses);

    const inventory::ListedPasskey shown;
    Gtk::Box line{Gtk::Orientation::HORIZONTAL, 12};
    Gtk::Box texts{Gtk::Orientation::VERTICAL, 2};
    Gtk::Button deleteButton;
};

} // namespace kelo::gtk
