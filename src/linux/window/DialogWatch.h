#pragma once

#include "linux/window/Toplevels.h"

#include <functional>
#include <memory>

namespace kelo::window {

/// Watches the dialogs that come over a window: those that belong to it, and all modal windows of
/// this program. The web engine opens some of them, such as file, colour and print dialogs. GTK
/// must be initialized. Main thread only.
class DialogWatch {
public:
    /// Calls back with each dialog that appears, and with null when the last one has gone. owner:
    /// the window that they come over, which lives longer than this.
    DialogWatch(GtkWindow* owner, std::function<void(GtkWindow* appeared)> changed);
    ~DialogWatch();
    DialogWatch(const DialogWatch&) = delete;
    DialogWatch& operator=(const DialogWatch&) = delete;

    bool anyShown() const;

private:
    struct State;

    const std::shared_ptr<State> state;
    ToplevelWatch toplevels;
};

} // namespace kelo::window
