#pragma once

#include <gtkmm/box.h>
#include <gtkmm/window.h>
#include <sigc++/connection.h>

namespace kelo::gtk {

/// A modal dialog: the other windows of the program take no input while it is open. Dialogs stack:
/// a new one opens above the one that is open. What a dialog lies over has the class "kelo-dimmed".
class ModalWindow : public Gtk::Window {
public:
    /// Opens above the topmost dialog, or above the parent if no dialog is open. Has no parent if
    /// that one is null or not on the screen.
    explicit ModalWindow(Gtk::Window* parent);
    ~ModalWindow() override;

    /// The dialog that takes input now; null if none is open.
    static ModalWindow* topmost();

protected:
    /// Derived dialogs append their widgets here, from top to bottom.
    Gtk::Box column{Gtk::Orientation::VERTICAL, 12};

    /// Called when the user pressed Escape or closed the dialog through the window manager. The
    /// derived dialog must close itself.
    virtual void dismissed() = 0;

private:
    void dimParent(bool isDimmed);

    sigc::connection unmapping;
};

} // namespace kelo::gtk
