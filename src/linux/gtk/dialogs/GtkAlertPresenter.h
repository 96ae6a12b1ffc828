#pragma once

#include "platform/Alert.h"
#include "platform/Application.h"

namespace kelo::gtk {

/// Shows alerts as dialogs over the window in use. An alert that comes while another is up stands
/// over it and is answered first. Dropping the task takes the dialog away.
class GtkAlertPresenter final : public platform::AlertPresenter {
public:
    /// The application must outlive the presenter, and the presenter its alerts.
    explicit GtkAlertPresenter(platform::Application& application);

    Task<platform::AlertOutcome> runModal(platform::Alert alert) override;

private:
    platform::Application& application;
};

} // namespace kelo::gtk
