#include "linux/gtk/ProgramWindow.h"

#include <utility>

namespace kelo::desktop {

ProgramWindow::ProgramWindow(std::function<void()> closed) : closed(std::move(closed)) {
    add_action("close", [this] { close(); });
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
