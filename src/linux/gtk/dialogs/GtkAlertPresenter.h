#pragma once

#include "base/Clock.h"
#include "platform/Alert.h"
#include "platform/Application.h"

namespace kelo::gtk {

/// Shows alerts as dialogs above the active window. A second alert opens above the first one and is
/// answered first. Destroying the task closes the dialog. Main thread only.
class GtkAlertPresenter final : public platform::AlertPresenter {
public:
    /// The application must outlive the presenter. The presenter must outlive its tasks.
    explicit GtkAlertPresenter(platform::Application& application,
                               SteadyNow now = std::chrono::steady_clock::now);

    Task<platform::AlertOutcome> runModal(platform::Alert alert) override;

private:
    platform::Application& application;
    SteadyNow now;
};

} // namespace kelo::gtk
