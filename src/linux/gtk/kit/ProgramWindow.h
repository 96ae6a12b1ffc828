#pragma once

#include "linux/gtk/kit/WindowHandle.h"

#include <gtkmm/applicationwindow.h>

#include <functional>
#include <memory>

namespace kelo::gtk {

/// What the program's windows (not its dialogs) have in common: a handle for the system, and an end
/// that their owner brings about, outside of the window's own event handling.
class ProgramWindow : public Gtk::ApplicationWindow {
public:
    /// closed is run once, while the window goes off the screen; the owner destroys the window in a
    /// later turn of the main loop.
    explicit ProgramWindow(std::function<void()> closed);
    ~ProgramWindow() override;

    const std::shared_ptr<WindowHandle>& handle() const { return handle_; }

private:
    std::shared_ptr<WindowHandle> handle_ = std::make_shared<WindowHandle>(*this);
    std::function<void()> closed;
};

} // namespace kelo::gtk
