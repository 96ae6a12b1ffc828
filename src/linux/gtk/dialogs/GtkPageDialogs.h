#pragma once

#include "base/Clock.h"
#include "linux/window/PageDialogs.h"

#include <memory>

namespace kelo::gtk {

class KeyboardTurn;

/// Shows what pages say and ask as dialogs above their windows. A page never comes between the user
/// and another dialog: its own waits until that has gone. It takes the keyboard only if the page's
/// window has it. Main thread only.
class GtkPageDialogs final : public window::PageDialogs {
public:
    explicit GtkPageDialogs(SteadyNow now = std::chrono::steady_clock::now);
    ~GtkPageDialogs() override;

    std::unique_ptr<window::PageDialog>
    show(const window::PageQuestion& question, GtkWindow* parent,
         std::function<void(const window::PageAnswer&)> answered) override;

private:
    std::shared_ptr<KeyboardTurn> keyboard;
};

} // namespace kelo::gtk
