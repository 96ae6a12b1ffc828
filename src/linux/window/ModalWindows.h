#pragma once

#include "linux/window/Toplevels.h"

#include <functional>
#include <memory>

namespace kelo::window {

/// Watches the modal windows of this program: its own dialogs, and those of the toolkit, such as
/// file chooser and print dialog. GTK must be initialized. Main thread only.
class ModalWindows {
public:
    /// Called with each modal window that appears, and with null when the last one has gone.
    explicit ModalWindows(std::function<void(GtkWindow* appeared)> changed);
    ~ModalWindows();
    ModalWindows(const ModalWindows&) = delete;
    ModalWindows& operator=(const ModalWindows&) = delete;

    bool anyShown() const;

private:
    struct State;

    const std::shared_ptr<State> state;
    ToplevelWatch toplevels;
};

} // namespace kelo::window
