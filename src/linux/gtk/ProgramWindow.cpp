#include "linux/gtk/ProgramWindow.h"

#include "linux/glib/WindowIdentity.h"
#include "linux/gtk/WindowIcon.h"

#include <utility>

namespace kelo::desktop {

ProgramWindow::ProgramWindow(std::function<void()> closed) : closed(std::move(closed)) {
    setWindowIdentity(static_cast<Gtk::Window*>(this)->gobj(), handle_);
    add_action("close", [this] { close(); });
    showProgramIcon(*this);
    signal_close_request().connect(
        [this] {
            set_visible(false);
            if (const auto tell = std::exchange(this->closed, nullptr))
                tell();
            return true;
        },
        false);
}

ProgramWindow::~ProgramWindow() {
    handle_->forget();
}

} // namespace kelo::desktop
