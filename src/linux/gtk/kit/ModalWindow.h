#pragma once

#include <gtkmm/box.h>
#include <gtkmm/window.h>

namespace kelo::gtk {

/// A dialog that the other windows of the program wait for. Dialogs stack: a new one stands over
/// the one that is up.
class ModalWindow : public Gtk::Window {
public:
    /// Over the topmost dialog if one is up, else over the parent; free-standing when the parent is
    /// null or not on the screen.
    explicit ModalWindow(Gtk::Window* parent);
    ~ModalWindow() override;

    /// The dialog that can be answered now; null when none is up.
    static ModalWindow* topmost();

protected:
    /// What derived dialogs fill, from top to bottom.
    Gtk::Box column{Gtk::Orientation::VERTICAL, 12};

    /// The user wants the dialog gone: Escape, or the window manager's close. It does not go by
    /// itself.
    virtual void dismissed() = 0;
};

} // namespace kelo::gtk
