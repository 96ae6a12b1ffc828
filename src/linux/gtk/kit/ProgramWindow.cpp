#include "linux/gtk/kit/ProgramWindow.h"

#include "linux/gtk/kit/WindowPresentation.h"
#include "linux/window/WindowIdentity.h"

#include <utility>

namespace kelo::gtk {

ProgramWindow::ProgramWindow(std::function<void()> closed) : closed(std::move(closed)) {
    window::setWindowIdentity(static_cast<Gtk::Window*>(this)->gobj(), handle_);
    showProgramIcon(*this);
    signal_close_request().connect(
        [this] {
            closing();
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

} // namespace kelo::gtk
