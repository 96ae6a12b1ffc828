#pragma once

#include "base/Clock.h"
#include "linux/permission/PermissionAsker.h"

namespace kelo::gtk {

/// Asks in a dialog over the window that shows the page: Allow, or Don't Allow. Nothing that was
/// typed or clicked for something else answers it: no button has the keyboard at first, and for a
/// short time the buttons take no clicks. Main thread only.
class GtkPermissionAsker final : public permission::PermissionAsker {
public:
    explicit GtkPermissionAsker(SteadyNow now = std::chrono::steady_clock::now);

    std::unique_ptr<Asked> ask(GtkWidget* page, const permission::Question& question,
                               Answered answered) override;

private:
    SteadyNow now;
};

} // namespace kelo::gtk
