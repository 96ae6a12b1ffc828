#pragma once

#include "base/Clock.h"
#include "linux/permission/PermissionAsker.h"

#include <memory>

namespace kelo::gtk {

class KeyboardTurn;

/// Asks in a dialog over the window that shows the page: Allow, or Don't Allow. Nothing that was
/// typed or clicked for something else answers it: no button has the keyboard at first, and for a
/// short time the buttons take no clicks. It takes the keyboard only from the program itself. Main
/// thread only.
class GtkPermissionAsker final : public permission::PermissionAsker {
public:
    explicit GtkPermissionAsker(SteadyNow now = std::chrono::steady_clock::now);
    ~GtkPermissionAsker() override;

    std::unique_ptr<Asked> ask(GtkWidget* page, const permission::Question& question,
                               Answered answered) override;

private:
    std::shared_ptr<KeyboardTurn> keyboard;
};

} // namespace kelo::gtk
