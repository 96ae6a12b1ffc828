#pragma once

#include "base/async/RunningTask.h"
#include "linux/gtk/kit/HeightLimit.h"
#include "linux/gtk/kit/ProgramWindow.h"
#include "linux/inventory/overview/PasskeyInventory.h"

#include <gtkmm/box.h>
#include <gtkmm/headerbar.h>
#include <gtkmm/label.h>
#include <gtkmm/listbox.h>
#include <gtkmm/scrolledwindow.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelo::gtk {

class PasskeyRow;

/// Shows the passkeys of this computer to their owner, deletes them, and says what passkeys need
/// here. Looks again whenever it gets the keyboard, because passkeys are made and used elsewhere.
class PasskeysWindow final : public ProgramWindow {
public:
    PasskeysWindow(std::shared_ptr<inventory::PasskeyInventory> inventory,
                   std::function<void()> closed);

protected:
    /// Ends what is under way.
    void closing() override;

private:
    void build();
    void buildMessage();
    void watchKeys();

    void refresh();
    Task<void> read();
    Task<void> lookAround();
    void remove(const inventory::ListedPasskey& passkey);
    Task<void> runRemoval(inventory::ListedPasskey passkey);

    void showPasskeys(const std::vector<inventory::ListedPasskey>& all);
    void showFindings(std::vector<inventory::Finding> all);
    /// In place of the list.
    void showMessage(const std::string& title, const std::string& sentence);
    void tell(const std::string& sentence);

    PasskeyRow* rowAt(std::size_t index);
    PasskeyRow* focusedRow();
    void updateRows(const std::vector<inventory::ListedPasskey>& all);
    /// The keyboard goes on at this row, or the last one; at the message if there is none.
    void focusRow(std::size_t index);

    const std::shared_ptr<inventory::PasskeyInventory> inventory;
    Gtk::HeaderBar header;
    Gtk::Box column{Gtk::Orientation::VERTICAL, 12};
    Gtk::ScrolledWindow view;
    Gtk::ListBox rows;
    Gtk::Box message{Gtk::Orientation::VERTICAL, 6};
    Gtk::Label messageTitle;
    Gtk::Label messageSentence;
    Gtk::Label news;
    Gtk::ListBox findings;
    HeightLimit findingsLimit{findings};
    std::vector<inventory::Finding> shownFindings;

    bool isReading = false;
    bool readsAgain = false; ///< something may have changed since the reading began
    bool isLooking = false;
    bool isRemoving = false;
    // Last, because they use the others.
    RunningTask reading;
    RunningTask looking;
    RunningTask removal;
};

} // namespace kelo::gtk
